// Setting and querying one registry value on the file store, in a key that holds other
// values beside it, against the floor of the same work on a bare file: write a file of
// the value's size and rename it into place; open, read and close it. A set or query
// should cost the value it touches, whatever else the key holds.
#include <ovo/win32/registry.h>

#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

const unsigned long allAccess = 0xF003F;
const long neighbourSize = 64 * 1024;
const std::vector<long> otherCounts = {0, 100};
const std::vector<long> valueSizes = {100, 64 * 1024, 1024 * 1024};
const double queryTarget = 1.5; // a reader takes no lock: it opens the old file or the new one

std::filesystem::path benchDirectory()
{
    static const std::filesystem::path dir = [] {
        auto path = std::filesystem::temp_directory_path() / ("ovo-bench-registry-" + std::to_string(::getpid()));
        std::filesystem::create_directories(path);
        ::setenv("XDG_CONFIG_HOME", path.c_str(), 1);
        return path;
    }();
    return dir;
}

// A key of its own for each case, with `others` values of 64 KiB beside the measured one.
ovo::win32::registry keyWithNeighbours(long others, long size)
{
    benchDirectory();
    ovo::win32::registry key(HKEY_CURRENT_USER, "Software\\ovobench");
    key.createAndOpen("key" + std::to_string(others) + "-" + std::to_string(size), allAccess);
    const std::string neighbour(neighbourSize, 'n');
    for (long n = 0; n < others; ++n)
        key.setStringValue("neighbour" + std::to_string(n), neighbour);
    key.setStringValue("measured", std::string(static_cast<std::size_t>(size), 'm'));
    return key;
}

void registrySet(benchmark::State& state)
{
    ovo::win32::registry key = keyWithNeighbours(state.range(0), state.range(1));
    const std::string value(static_cast<std::size_t>(state.range(1)), 'v');
    for (auto _ : state)
        key.setStringValue("Measured", value);
    key.close();
}

void registryQuery(benchmark::State& state)
{
    ovo::win32::registry key = keyWithNeighbours(state.range(0), state.range(1));
    for (auto _ : state)
        benchmark::DoNotOptimize(key.queryStringValue("Measured", ""));
    key.close();
}

void floorSet(benchmark::State& state)
{
    const std::string path = (benchDirectory() / "floor").string(), next = path + ".next";
    const std::string value(static_cast<std::size_t>(state.range(0)) + 1, 'v'); // with its NUL, as stored
    for (auto _ : state) {
        const int fd = ::open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        benchmark::DoNotOptimize(::write(fd, value.data(), value.size()));
        ::close(fd);
        std::rename(next.c_str(), path.c_str());
    }
}

void floorQuery(benchmark::State& state)
{
    const std::string path = (benchDirectory() / "floor").string();
    const std::size_t size = static_cast<std::size_t>(state.range(0)) + 1;
    {
        const std::string value(size, 'v');
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        benchmark::DoNotOptimize(::write(fd, value.data(), value.size()));
        ::close(fd);
    }
    for (auto _ : state) {
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        struct stat status;
        ::fstat(fd, &status);
        std::string value(static_cast<std::size_t>(status.st_size), '\0');
        benchmark::DoNotOptimize(::read(fd, &value[0], value.size()));
        ::close(fd);
    }
}

void sizes(benchmark::internal::Benchmark* b)
{
    for (long size : valueSizes)
        b->Arg(size);
}

void keysAndSizes(benchmark::internal::Benchmark* b)
{
    for (long others : otherCounts)
        for (long size : valueSizes)
            b->Args({others, size});
}

BENCHMARK(registrySet)->Apply(keysAndSizes);
BENCHMARK(floorSet)->Apply(sizes);
BENCHMARK(registryQuery)->Apply(keysAndSizes);
BENCHMARK(floorQuery)->Apply(sizes);

} // namespace

int main(int argc, char** argv)
{
    std::vector<ovo_bench::Comparison> comparisons;
    for (const char* operation : {"Set", "Query"})
        for (long others : otherCounts)
            for (long size : valueSizes)
                comparisons.push_back(
                    {std::string("registry") + operation + "/" + std::to_string(others) + "/" + std::to_string(size),
                     std::string("floor") + operation + "/" + std::to_string(size),
                     std::string(operation) == "Query" ? queryTarget : 0});
    const int status = ovo_bench::runAndCompare(argc, argv, comparisons);
    std::filesystem::remove_all(benchDirectory());
    return status;
}
