// The serial text form and typed reads of a collection, against a std::map with strtol.
#include <ovo/io/serial_config.h>
#include <ovo/nv_collection.h>

#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <map>
#include <string>

namespace {

const std::string fullConfig = "baud=115200;data=8;device=ttyUSB0;flow=hardware;parity=none;stop=1";

void serialConfigRoundTrip(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(ovo::io::SerialConfig::fromString(fullConfig).toString());
}
BENCHMARK(serialConfigRoundTrip);

// The same work by hand: pairs into a std::map, strtol for the numbers, and the
// text built again in key order.
void mapRoundTrip(benchmark::State& state)
{
    for (auto _ : state) {
        std::map<std::string, std::string> pairs;
        std::size_t start = 0;
        for (;;) {
            const std::size_t end = fullConfig.find(';', start);
            const std::size_t equals = fullConfig.find('=', start);
            if (equals < end)
                pairs[fullConfig.substr(start, equals - start)] =
                    fullConfig.substr(equals + 1, end == std::string::npos ? end : end - equals - 1);
            if (end == std::string::npos)
                break;
            start = end + 1;
        }
        const long baud = std::strtol(pairs["baud"].c_str(), nullptr, 10);
        const long data = std::strtol(pairs["data"].c_str(), nullptr, 10);
        std::string text = "baud=" + std::to_string(baud) + ";data=" + std::to_string(data) +
                           ";device=" + pairs["device"] + ";flow=" + pairs["flow"] + ";parity=" + pairs["parity"] +
                           ";stop=" + pairs["stop"];
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(mapRoundTrip);

std::string nameOf(int i) { return "setting." + std::to_string(i); }

void nvCollectionGetInt(benchmark::State& state)
{
    ovo::nvCollection collection;
    for (int i = 0; i < 100; ++i)
        collection.setInt(nameOf(i), i * 1000 - 7);
    const std::string name = nameOf(57);
    for (auto _ : state)
        benchmark::DoNotOptimize(collection.getInt(name));
}
BENCHMARK(nvCollectionGetInt);

void mapFindStrtol(benchmark::State& state)
{
    std::map<std::string, std::string> map;
    for (int i = 0; i < 100; ++i)
        map[nameOf(i)] = std::to_string(i * 1000 - 7);
    const std::string name = nameOf(57);
    for (auto _ : state) {
        const auto found = map.find(name);
        benchmark::DoNotOptimize(std::strtol(found->second.c_str(), nullptr, 10));
    }
}
BENCHMARK(mapFindStrtol);

} // namespace

int main(int argc, char** argv)
{
    return ovo_bench::runAndCompare(argc, argv,
                                    {{"serialConfigRoundTrip", "mapRoundTrip", 0},
                                     {"nvCollectionGetInt", "mapFindStrtol", 0}});
}
