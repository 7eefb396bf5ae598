// The cost of a message that the level filters out, and of a hex trace that a channel
// discards, against the peer a user would pick instead and against the bare work.
#include <ovo/logger/logger.h>
#include <ovo/number_formatter.h>

#include "discarding.h"
#include "ratio_report.h"

#include <benchmark/benchmark.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

using ovo_bench::DiscardingChannel;

ovo::logger::ILogger& benchLogger()
{
    static ovo::logger::ILogger& logger = ovo::logger::add("bench", std::make_shared<DiscardingChannel>());
    return logger;
}

std::shared_ptr<spdlog::logger> spdLogger()
{
    static auto logger = std::make_shared<spdlog::logger>("bench", std::make_shared<spdlog::sinks::null_sink_st>());
    logger->set_level(spdlog::level::info);
    return logger;
}

const std::string message = "card inserted into the reader";
const unsigned char bytes[32] = {0x3B, 0x8F, 0x80, 0x01, 0x80, 0x4F, 0x0C, 0xA0, 0x00, 0x00, 0x03,
                                 0x06, 0x03, 0x00, 0x03, 0x00, 0x00, 0x00, 0x00, 0x68, 0x90, 0x00};

void filteredTrace(benchmark::State& state)
{
    ovo::logger::ILogger& logger = benchLogger();
    logger.setLevel(0);
    for (auto _ : state)
        logger.trace(message);
}
BENCHMARK(filteredTrace);

// The floor of any filtered call through an interface: one virtual call that does nothing.
void virtualCallFloor(benchmark::State& state)
{
    DiscardingChannel channel;
    ovo::logger::ILogChannel* volatile sink = &channel;
    for (auto _ : state)
        sink->setProperty(message, message);
}
BENCHMARK(virtualCallFloor);

void spdlog_filteredTrace(benchmark::State& state)
{
    auto logger = spdLogger();
    for (auto _ : state)
        logger->trace(message);
}
BENCHMARK(spdlog_filteredTrace);

void infoHex32(benchmark::State& state)
{
    ovo::logger::ILogger& logger = benchLogger();
    logger.setLevel(0);
    for (auto _ : state)
        logger.infoHex(message, bytes, sizeof bytes);
}
BENCHMARK(infoHex32);

// The bare work: the same text built by hand and handed to the same channel.
void handBuiltHex32(benchmark::State& state)
{
    static const char digits[] = "0123456789ABCDEF";
    DiscardingChannel channel;
    ovo::logger::ILogChannel& sink = channel;
    for (auto _ : state) {
        std::string text(message.c_str());
        text += ": ";
        const std::size_t start = text.size();
        text.resize(start + 3 * sizeof bytes, ' ');
        for (std::size_t i = 0; i < sizeof bytes; ++i) {
            text[start + 3 * i] = digits[bytes[i] >> 4];
            text[start + 3 * i + 1] = digits[bytes[i] & 0x0F];
        }
        sink.write("bench", text);
    }
}
BENCHMARK(handBuiltHex32);

} // namespace

int main(int argc, char** argv)
{
    // A filtered message costs about a virtual call: no absolute bound in nanoseconds,
    // which measures the machine more than the logger.
    return ovo_bench::runAndCompare(argc, argv,
                                    {{"filteredTrace", "virtualCallFloor", 0},
                                     {"filteredTrace", "spdlog_filteredTrace", 0},
                                     {"infoHex32", "handBuiltHex32", 0}});
}
