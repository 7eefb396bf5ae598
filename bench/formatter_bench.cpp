// The stamped formatter and a console line, against spdlog doing the same work.
#include <ovo/logger/channels.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>

#include "discarding.h"
#include "ratio_report.h"

#include <benchmark/benchmark.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>

#include <iostream>
#include <memory>
#include <streambuf>
#include <string>

namespace {

using ovo_bench::DiscardingBuffer;

const std::string oneLine = "card inserted into reader 0";
const std::string threeLines = "exchange failed\n6A 82 file not found\nretrying with the short identifier";
const char* const pattern = "%H:%M:%S.%e [%-16n] %v";

void simpleFormatter(benchmark::State& state, const std::string& message)
{
    ovo::logger::SimpleFormatter formatter;
    for (auto _ : state)
        benchmark::DoNotOptimize(formatter.format("reader", message));
}
BENCHMARK_CAPTURE(simpleFormatter, oneLine, oneLine);
BENCHMARK_CAPTURE(simpleFormatter, threeLines, threeLines);

void spdlogFormatter(benchmark::State& state, const std::string& message)
{
    spdlog::pattern_formatter formatter(pattern, spdlog::pattern_time_type::local, "\n");
    spdlog::memory_buf_t buffer;
    for (auto _ : state) {
        const spdlog::details::log_msg msg("reader", spdlog::level::info, message);
        buffer.clear();
        formatter.format(msg, buffer);
        benchmark::DoNotOptimize(buffer.data());
    }
}
BENCHMARK_CAPTURE(spdlogFormatter, oneLine, oneLine);
BENCHMARK_CAPTURE(spdlogFormatter, threeLines, threeLines);

void consoleInfo(benchmark::State& state)
{
    DiscardingBuffer discard;
    std::streambuf* const saved = std::clog.rdbuf(&discard);
    auto channel = std::make_shared<ovo::logger::ConsoleLogChannel>();
    channel->setFormatter(std::make_shared<ovo::logger::SimpleFormatter>());
    static ovo::logger::ILogger& logger = ovo::logger::add("reader", channel);
    for (auto _ : state)
        logger.info(oneLine);
    std::clog.rdbuf(saved);
}
BENCHMARK(consoleInfo);

void spdlogOstreamInfo(benchmark::State& state)
{
    DiscardingBuffer discard;
    std::ostream out(&discard);
    auto sink = std::make_shared<spdlog::sinks::ostream_sink_mt>(out);
    spdlog::logger logger("reader", sink);
    logger.set_formatter(std::make_unique<spdlog::pattern_formatter>(pattern, spdlog::pattern_time_type::local, "\n"));
    for (auto _ : state)
        logger.info(oneLine);
}
BENCHMARK(spdlogOstreamInfo);

} // namespace

int main(int argc, char** argv)
{
    return ovo_bench::runAndCompare(argc, argv,
                                    {{"simpleFormatter/oneLine", "spdlogFormatter/oneLine", 1.0},
                                     {"simpleFormatter/threeLines", "spdlogFormatter/threeLines", 1.0},
                                     {"consoleInfo", "spdlogOstreamInfo", 1.0}});
}
