// Sinks that take everything and keep nothing, so that a benchmark measures the work
// before the output.
#ifndef OVO_BENCH_DISCARDING_H
#define OVO_BENCH_DISCARDING_H

#include <ovo/logger/channel.h>

#include <benchmark/benchmark.h>

#include <streambuf>
#include <string>

namespace ovo_bench {

class DiscardingChannel : public ovo::logger::AbstractLogChannel {
public:
    void write(const std::string&, const std::string& message) override { benchmark::DoNotOptimize(message.data()); }
};

class DiscardingBuffer : public std::streambuf {
protected:
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

} // namespace ovo_bench

#endif
