// SerialIO transfers over a pseudo-terminal pair, tracing off, against bare write/read
// on the same pair. A time ratio of at most 1.11 is at least 0.9 of the bare throughput.
#include <ovo/io/serial_io.h>

#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

namespace {

const unsigned int chunk = 4096;

struct Pair {
    Pair()
    {
        char name[256] = {};
        ::openpty(&master, &slave, name, nullptr, nullptr);
        termios raw;
        ::tcgetattr(slave, &raw);
        ::cfmakeraw(&raw);
        ::tcsetattr(slave, TCSANOW, &raw);
        ovo::io::SerialConfig config;
        config.setDeviceName(name);
        config.setCommTimeouts({0, 0, 0, 0, 0}); // every transfer waits until it is met
        config.setBuffersSize({chunk, chunk});
        port = std::make_unique<ovo::io::SerialIO>(config);
    }
    ~Pair()
    {
        port.reset();
        ::close(master);
        ::close(slave);
    }

    void readAll(int fd, unsigned char* buffer, std::size_t size) const
    {
        for (std::size_t done = 0; done < size;) {
            const ssize_t count = ::read(fd, buffer + done, size - done);
            if (count <= 0)
                return;
            done += static_cast<std::size_t>(count);
        }
    }

    int master = -1;
    int slave = -1;
    std::unique_ptr<ovo::io::SerialIO> port;
};

void serialIOSend4KiB(benchmark::State& state)
{
    Pair pair;
    std::vector<unsigned char> out(chunk, 0x55), in(chunk);
    for (auto _ : state) {
        pair.port->send(out.data(), chunk);
        pair.readAll(pair.master, in.data(), chunk);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * chunk);
}
BENCHMARK(serialIOSend4KiB);

void bareWrite4KiB(benchmark::State& state)
{
    Pair pair;
    std::vector<unsigned char> out(chunk, 0x55), in(chunk);
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(pair.slave, out.data(), chunk));
        pair.readAll(pair.master, in.data(), chunk);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * chunk);
}
BENCHMARK(bareWrite4KiB);

void serialIORecv4KiB(benchmark::State& state)
{
    Pair pair;
    std::vector<unsigned char> out(chunk, 0x55), in(chunk);
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(pair.master, out.data(), chunk));
        pair.port->recv(in.data(), chunk);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * chunk);
}
BENCHMARK(serialIORecv4KiB);

void bareRead4KiB(benchmark::State& state)
{
    Pair pair;
    std::vector<unsigned char> out(chunk, 0x55), in(chunk);
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(pair.master, out.data(), chunk));
        pair.readAll(pair.slave, in.data(), chunk);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * chunk);
}
BENCHMARK(bareRead4KiB);

void serialIOPingPong(benchmark::State& state)
{
    Pair pair;
    unsigned char byte = 0x42;
    for (auto _ : state) {
        pair.port->send(&byte, 1);
        pair.readAll(pair.master, &byte, 1);
        benchmark::DoNotOptimize(::write(pair.master, &byte, 1));
        pair.port->recv(&byte, 1);
    }
}
BENCHMARK(serialIOPingPong);

void barePingPong(benchmark::State& state)
{
    Pair pair;
    unsigned char byte = 0x42;
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(pair.slave, &byte, 1));
        pair.readAll(pair.master, &byte, 1);
        benchmark::DoNotOptimize(::write(pair.master, &byte, 1));
        pair.readAll(pair.slave, &byte, 1);
    }
}
BENCHMARK(barePingPong);

} // namespace

int main(int argc, char** argv)
{
    return ovo_bench::runAndCompare(argc, argv,
                                    {{"serialIOSend4KiB", "bareWrite4KiB", 1.11},
                                     {"serialIORecv4KiB", "bareRead4KiB", 1.11},
                                     {"serialIOPingPong", "barePingPong", 1.11}});
}
