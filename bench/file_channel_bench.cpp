// One message through the daily file channel, against the bare system calls that the
// same append needs, and against spdlog's daily file sink (which keeps the file open and
// buffers: this channel must not, nothing may be buffered when write returns).
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>

#include "ratio_report.h"

#include <benchmark/benchmark.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/daily_file_sink.h>
#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>

namespace {

const std::string message = "card inserted into reader 0";

std::filesystem::path benchDirectory()
{
    static const std::filesystem::path dir = [] {
        auto path = std::filesystem::temp_directory_path() / ("ovo-bench-" + std::to_string(::getpid()));
        std::filesystem::create_directories(path);
        return path;
    }();
    return dir;
}

void fileLogChannelWrite(benchmark::State& state)
{
    ovo::logger::FileLogChannel channel(benchDirectory().string(), "channel");
    channel.setFormatter(std::make_shared<ovo::logger::SimpleFormatter>());
    for (auto _ : state)
        channel.write("reader", message);
}
BENCHMARK(fileLogChannelWrite);

// The floor in C: open for append (creating), lock against other writers, size, write,
// close, with a line formatted once beforehand.
void systemCallFloor(benchmark::State& state)
{
    const std::string path = (benchDirectory() / "floor.log").string();
    const std::string line = "12:00:00.000 [reader          ] " + message + "\n";
    for (auto _ : state) {
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
        ::flock(fd, LOCK_EX | LOCK_NB);
        ::lseek(fd, 0, SEEK_END);
        struct stat status;
        ::fstat(fd, &status);
        benchmark::DoNotOptimize(::write(fd, line.data(), line.size()));
        ::close(fd);
    }
}
BENCHMARK(systemCallFloor);

void spdlogDailyFileSink(benchmark::State& state)
{
    auto sink = std::make_shared<spdlog::sinks::daily_file_sink_mt>((benchDirectory() / "spdlog.log").string(), 0, 0);
    spdlog::logger logger("reader", sink);
    logger.set_formatter(std::make_unique<spdlog::pattern_formatter>("%H:%M:%S.%e [%-16n] %v",
                                                                     spdlog::pattern_time_type::local, "\n"));
    for (auto _ : state)
        logger.info(message);
    logger.flush();
}
BENCHMARK(spdlogDailyFileSink);

} // namespace

int main(int argc, char** argv)
{
    const int status = ovo_bench::runAndCompare(argc, argv,
                                                {{"fileLogChannelWrite", "systemCallFloor", 1.2},
                                                 {"fileLogChannelWrite", "spdlogDailyFileSink", 0}});
    std::filesystem::remove_all(benchDirectory());
    return status;
}
