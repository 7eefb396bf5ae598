#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <unistd.h>

namespace ovo_bench {

namespace {

// Shows the medians of the runs (the single run when there are no repetitions) and keeps
// the time of each: the ratios are of medians, so they are the figures worth reading.
class MedianCollector : public benchmark::ConsoleReporter {
public:
    explicit MedianCollector(bool colour) : ConsoleReporter(colour ? OO_Defaults : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override
    {
        std::vector<Run> shown;
        for (const Run& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            const bool single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
            if (!median && !single && !run.error_occurred)
                continue;
            shown.push_back(run);
            if (run.error_occurred)
                failed.insert(run.run_name.str());
            else
                nanoseconds[run.run_name.str()] =
                    run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
        }
        if (!shown.empty())
            ConsoleReporter::ReportRuns(shown);
    }

    bool ran(const std::string& name) const { return nanoseconds.count(name) || failed.count(name); }

    std::map<std::string, double> nanoseconds;
    std::set<std::string> failed;
};

bool given(const std::vector<char*>& args, const char* flag)
{
    for (std::size_t i = 1; i < args.size(); ++i)
        if (std::strncmp(args[i], flag, std::strlen(flag)) == 0)
            return true;
    return false;
}

// Takes "--comparisons_json=FILE" out of the arguments, which Google Benchmark would refuse.
std::optional<std::string> takeJsonFile(std::vector<char*>& args)
{
    static const char flag[] = "--comparisons_json=";
    std::optional<std::string> file;
    for (auto arg = args.begin() + 1; arg != args.end();) {
        if (std::strncmp(*arg, flag, sizeof flag - 1) == 0) {
            file = *arg + sizeof flag - 1;
            arg = args.erase(arg);
        } else {
            ++arg;
        }
    }
    return file;
}

// One comparison as measured: a median is NaN when its benchmark failed.
struct Outcome {
    double ours = NAN;
    double reference = NAN;
    double ratio = NAN;
    const char* verdict = "-";
};

double medianOf(const MedianCollector& collector, const std::string& name)
{
    const auto found = collector.nanoseconds.find(name);
    return found == collector.nanoseconds.end() ? NAN : found->second;
}

// A target that was not measured is not met (NaN compares false).
Outcome judge(const MedianCollector& collector, const Comparison& c)
{
    Outcome o;
    o.ours = medianOf(collector, c.ours);
    o.reference = medianOf(collector, c.reference);
    o.ratio = o.ours / o.reference;
    const double judged = c.kind == Limit::ratio ? o.ratio : o.ours - o.reference;
    if (c.limit > 0)
        o.verdict = judged <= c.limit ? "met" : "missed";
    return o;
}

std::string targetText(const Comparison& c)
{
    char text[32] = "";
    if (c.limit > 0 && c.kind == Limit::ratio)
        std::snprintf(text, sizeof text, "<= %.2f", c.limit);
    else if (c.limit > 0)
        std::snprintf(text, sizeof text, "<= +%.1f ns", c.limit);
    return text;
}

void printTableLine(const Comparison& c, const Outcome& o)
{
    const std::string against = c.ours + " / " + c.reference;
    std::printf("%-44s %12.2f %12.2f %8.2f", against.c_str(), o.ours, o.reference, o.ratio);
    if (c.limit > 0)
        std::printf("  %s %s", targetText(c).c_str(), o.verdict);
    std::printf("\n");
}

// Our names hold no quote or backslash; a figure that is missing is null.
std::string jsonNumber(double value)
{
    if (std::isnan(value))
        return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

void writeJsonLine(std::FILE* file, const std::string& program, const Comparison& c, const Outcome& o)
{
    std::fprintf(file,
                 "{\"program\": \"%s\", \"ours\": \"%s\", \"reference\": \"%s\", \"ours_ns\": %s, "
                 "\"reference_ns\": %s, \"ratio\": %s, \"target\": \"%s\", \"verdict\": \"%s\"}\n",
                 program.c_str(), c.ours.c_str(), c.reference.c_str(), jsonNumber(o.ours).c_str(),
                 jsonNumber(o.reference).c_str(), jsonNumber(o.ratio).c_str(), targetText(c).c_str(), o.verdict);
}

std::string programName(const char* path)
{
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

} // namespace

int runAndCompare(int argc, char** argv, const std::vector<Comparison>& comparisons)
{
    std::vector<char*> args(argv, argv + argc);
    const std::optional<std::string> jsonFile = takeJsonFile(args);
    char repetitions[] = "--benchmark_repetitions=5";
    char aggregatesOnly[] = "--benchmark_report_aggregates_only=true";
    if (!given(args, "--benchmark_repetitions"))
        args.push_back(repetitions);
    if (!given(args, "--benchmark_report_aggregates_only"))
        args.push_back(aggregatesOnly);
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data()))
        return 2;

    // Appended to, so that the programs of one run can share the file.
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> json(nullptr, std::fclose);
    if (jsonFile) {
        json.reset(std::fopen(jsonFile->c_str(), "a"));
        if (!json) {
            std::fprintf(stderr, "cannot write the comparisons to '%s': %s\n", jsonFile->c_str(), std::strerror(errno));
            return 2;
        }
    }

    // As the library's own reporter: colour on a terminal, unless it is turned off.
    MedianCollector collector(isatty(STDOUT_FILENO) && !given(args, "--benchmark_color=false"));
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::Shutdown();

    std::printf("\n%-44s %12s %12s %8s  %s\n", "ours vs reference (medians)", "ours ns", "ref ns", "ratio", "target");
    const std::string program = programName(argv[0]);
    for (const Comparison& c : comparisons) {
        // A comparison that a filter left out of this run is no result, nor one without a
        // target whose benchmark was skipped; with a target it counts as missed.
        const Outcome outcome = judge(collector, c);
        const bool measured = !std::isnan(outcome.ratio);
        if (!collector.ran(c.ours) || !collector.ran(c.reference) || (!measured && c.limit <= 0))
            continue;
        printTableLine(c, outcome);
        if (json)
            writeJsonLine(json.get(), program, c, outcome);
    }
    return 0;
}

} // namespace ovo_bench
