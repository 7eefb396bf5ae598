#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>

namespace ovo_bench {

namespace {

// Shows the runs as the console reporter does and keeps the median time of each.
class MedianCollector : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            const bool single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
            if (median || single)
                nanoseconds[run.run_name.str()] =
                    run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
        }
    }

    std::map<std::string, double> nanoseconds;
};

bool given(int argc, char** argv, const char* flag)
{
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], flag, std::strlen(flag)) == 0)
            return true;
    return false;
}

} // namespace

int runAndCompare(int argc, char** argv, const std::vector<Comparison>& comparisons)
{
    std::vector<char*> args(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=5";
    char aggregatesOnly[] = "--benchmark_report_aggregates_only=true";
    if (!given(argc, argv, "--benchmark_repetitions"))
        args.push_back(repetitions);
    if (!given(argc, argv, "--benchmark_report_aggregates_only"))
        args.push_back(aggregatesOnly);
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data()))
        return 2;

    MedianCollector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::Shutdown();

    std::printf("\n%-44s %12s %12s %8s  %s\n", "ours vs reference (medians)", "ours ns", "ref ns", "ratio",
                "target");
    for (const Comparison& c : comparisons) {
        const auto ours = collector.nanoseconds.find(c.ours);
        if (ours == collector.nanoseconds.end())
            continue; // filtered out of this run
        if (c.reference.empty()) {
            const char* verdict = c.limit <= 0 ? "" : ours->second <= c.limit ? "met" : "MISSED";
            std::printf("%-44s %12.2f %12s %8s  < %.1f ns %s\n", c.ours.c_str(), ours->second, "-", "-", c.limit,
                        verdict);
            continue;
        }
        const auto reference = collector.nanoseconds.find(c.reference);
        if (reference == collector.nanoseconds.end() || reference->second <= 0)
            continue; // filtered out, or skipped with an error
        const double ratio = ours->second / reference->second;
        const std::string against = c.ours + " / " + c.reference;
        if (c.limit > 0)
            std::printf("%-44s %12.2f %12.2f %8.2f  <= %.2f %s\n", against.c_str(), ours->second,
                        reference->second, ratio, c.limit, ratio <= c.limit ? "met" : "MISSED");
        else
            std::printf("%-44s %12.2f %12.2f %8.2f\n", against.c_str(), ours->second, reference->second, ratio);
    }
    return 0;
}

} // namespace ovo_bench
