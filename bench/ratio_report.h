// Runs the registered benchmarks and ends with the ratios of our code to its references,
// measured in the same run. Only ratios hold on a noisy machine; medians of repeated
// runs make them steadier (the default is 5 repetitions). With --comparisons_json=FILE
// each comparison, judged against its target, is also appended to FILE as a JSON line.
#ifndef OVO_BENCH_RATIO_REPORT_H
#define OVO_BENCH_RATIO_REPORT_H

#include <string>
#include <vector>

namespace ovo_bench {

struct Comparison {
    std::string ours;      // benchmark name of our operation
    std::string reference; // benchmark name of the reference, or empty for an absolute target
    double limit;          // the target: the highest ratio, or the highest time in ns; 0 for none
};

int runAndCompare(int argc, char** argv, const std::vector<Comparison>& comparisons);

} // namespace ovo_bench

#endif
