// Runs the registered benchmarks and ends with the ratios of our code to its references,
// measured in the same run. Only ratios hold on a noisy machine; medians of repeated
// runs make them steadier (the default is 5 repetitions). With --comparisons_json=FILE
// each comparison, judged against its target, is also appended to FILE as a JSON line.
#ifndef OVO_BENCH_RATIO_REPORT_H
#define OVO_BENCH_RATIO_REPORT_H

#include <string>
#include <vector>

namespace ovo_bench {

// What the limit of a comparison bounds: the ratio of the medians, or the nanoseconds that
// ours takes over the reference (for work so cheap that a ratio magnifies the noise).
enum class Limit { ratio, nanosecondsOver };

struct Comparison {
    std::string ours;      // benchmark name of our operation
    std::string reference; // benchmark name of the reference
    double limit;          // the target: the highest ratio, or the most ns over the reference; 0 for none
    Limit kind = Limit::ratio;
};

int runAndCompare(int argc, char** argv, const std::vector<Comparison>& comparisons);

} // namespace ovo_bench

#endif
