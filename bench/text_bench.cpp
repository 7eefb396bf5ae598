// Number parsing and hex formatting against the plainest code that does the same work.
#include <ovo/number_formatter.h>
#include <ovo/number_parser.h>

#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const std::vector<std::string> typicalTexts = {"0",     "42",         "-17",         "65535",
                                               "9600",  "2147483647", "-2147483648", "+7"};

// strtol with the same end and range checks as parseInt32.
int strtolChecked(const std::string& text)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(begin, &end, 10);
    if (end != begin + text.size())
        throw std::logic_error("bad format");
    if (errno == ERANGE || value < INT_MIN || value > INT_MAX)
        throw std::range_error("out of range");
    return static_cast<int>(value);
}

void parseInt32(benchmark::State& state)
{
    for (auto _ : state)
        for (const std::string& text : typicalTexts)
            benchmark::DoNotOptimize(ovo::NumberParser::parseInt32(text));
}
BENCHMARK(parseInt32);

void strtol_checked(benchmark::State& state)
{
    for (auto _ : state)
        for (const std::string& text : typicalTexts)
            benchmark::DoNotOptimize(strtolChecked(text));
}
BENCHMARK(strtol_checked);

std::vector<unsigned char> payload(std::size_t size)
{
    std::vector<unsigned char> bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<unsigned char>(i * 131 + 7);
    return bytes;
}

const std::vector<unsigned char> block = payload(64 * 1024);

void buffer2stringU2_64KiB(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(
            ovo::NumberFormatter::buffer2stringU2(block.data(), static_cast<unsigned int>(block.size())));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * block.size()));
}
BENCHMARK(buffer2stringU2_64KiB);

// A plain table lookup into a string made at its final size.
void tableLoop_64KiB(benchmark::State& state)
{
    static const char digits[] = "0123456789ABCDEF";
    for (auto _ : state) {
        std::string text(block.size() * 3, ' ');
        for (std::size_t i = 0; i < block.size(); ++i) {
            text[3 * i] = digits[block[i] >> 4];
            text[3 * i + 1] = digits[block[i] & 0x0F];
        }
        benchmark::DoNotOptimize(text);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * block.size()));
}
BENCHMARK(tableLoop_64KiB);

void formatBuffer_64KiB(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(
            ovo::NumberFormatter::formatBuffer(block.data(), static_cast<unsigned int>(block.size()), 16));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * block.size()));
}
BENCHMARK(formatBuffer_64KiB);

// The dump as one would write it line by line, appending to a growing string.
void appendingDump_64KiB(benchmark::State& state)
{
    static const char digits[] = "0123456789ABCDEF";
    for (auto _ : state) {
        std::string text;
        for (std::size_t line = 0; line < block.size(); line += 16) {
            std::string hex;
            std::string chars;
            for (std::size_t i = line; i < line + 16; ++i) {
                hex += digits[block[i] >> 4];
                hex += digits[block[i] & 0x0F];
                hex += ' ';
                chars += block[i] >= 0x20 && block[i] < 0x7F ? static_cast<char>(block[i]) : '.';
            }
            if (line != 0)
                text += '\n';
            text += hex + "| " + chars;
        }
        benchmark::DoNotOptimize(text);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * block.size()));
}
BENCHMARK(appendingDump_64KiB);

} // namespace

int main(int argc, char** argv)
{
    return ovo_bench::runAndCompare(argc, argv,
                                    {{"parseInt32", "strtol_checked", 1.3},
                                     {"buffer2stringU2_64KiB", "tableLoop_64KiB", 1.5},
                                     {"formatBuffer_64KiB", "appendingDump_64KiB", 0}});
}
