// The library's own cost of an exchange, on scripted PC/SC calls that answer at once (a
// real virtual card takes ~44 ms and hides it): pcsc::exchange of a 5-byte command against
// the bare call it makes, the same transmit called directly; and the cost of tracing.
#include <ovo/io/pcsc.h>
#include <ovo/logger/logger.h>

#include "discarding.h"
#include "fakes/scripted_pcsc.h"
#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using ovo_bench::DiscardingChannel;

const ovo::io::apdu command(0x00, 0xB0, 0x00, 0x00, 0x10);

void exchangeQuiet(benchmark::State& state)
{
    ovo_fake::resetPcscScript();
    ovo::io::pcsc reader("Reader A 00 00");
    reader.connect();
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.exchange(command));
}
BENCHMARK(exchangeQuiet);

void exchangeTraced(benchmark::State& state)
{
    ovo_fake::resetPcscScript();
    ovo::logger::ILogger& logger = ovo::logger::add("bench.traced", std::make_shared<DiscardingChannel>());
    logger.setLevel(1);
    ovo::io::pcsc reader("Reader A 00 00", logger);
    reader.connect();
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.exchange(command));
}
BENCHMARK(exchangeTraced);

// The bare sequence for the same work: a cleared receive buffer of 261 bytes, the
// transmit, and the response's bytes in a vector of their own.
void bareTransmit(benchmark::State& state)
{
    ovo_fake::resetPcscScript();
    for (auto _ : state) {
        unsigned char response[261] = {};
        std::uint32_t length = sizeof response;
        ovo_fake::bareTransmit(0x0CA4D, 2, command.raw(), command.size(), response, length);
        benchmark::DoNotOptimize(std::vector<unsigned char>(response, response + length));
    }
}
BENCHMARK(bareTransmit);

} // namespace

int main(int argc, char** argv)
{
    // The scripted transmit costs some 40 ns, so a ratio would magnify the noise: the bound
    // is the library's own time per exchange.
    return ovo_bench::runAndCompare(argc, argv,
                                    {{"exchangeQuiet", "bareTransmit", 10, ovo_bench::Limit::nanosecondsOver},
                                     {"exchangeTraced", "exchangeQuiet", 0}});
}
