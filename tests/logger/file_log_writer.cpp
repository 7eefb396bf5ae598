// A writer process for the file channel tests:
//   file_log_writer DIRECTORY SUFFIX ID COUNT plain|split
// logs COUNT messages "writer ID message N" through a FileLogChannel (with the header
// "# header\n"), either alone or as a member of a split channel that also holds a
// console channel (whose output is discarded).
#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>

#include <iostream>
#include <memory>
#include <streambuf>
#include <string>

namespace {

class DiscardingBuffer : public std::streambuf {
protected:
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 6) {
        std::cerr << "usage: file_log_writer DIRECTORY SUFFIX ID COUNT plain|split\n";
        return 2;
    }
    const std::string id = argv[3];
    const int count = std::stoi(argv[4]);
    const bool split = std::string(argv[5]) == "split";

    auto file = std::make_shared<ovo::logger::FileLogChannel>(argv[1], argv[2]);
    file->setFormatter(std::make_shared<ovo::logger::SimpleFormatter>());
    file->setProperty(ovo::logger::FileLogChannel::PropertyRollingHeader, "# header\n");
    std::shared_ptr<ovo::logger::ILogChannel> channel = file;

    DiscardingBuffer discard;
    std::streambuf* const console = std::clog.rdbuf(&discard);
    if (split) {
        auto console = std::make_shared<ovo::logger::ConsoleLogChannel>();
        console->setFormatter(std::make_shared<ovo::logger::ConsoleFormatter>());
        auto fanOut = std::make_shared<ovo::logger::SplitLogChannel>();
        fanOut->add(console);
        fanOut->add(file);
        channel = fanOut;
    }
    ovo::logger::ILogger& logger = ovo::logger::add("writer" + id, channel);
    for (int i = 0; i < count; ++i)
        logger.info("writer " + id + " message " + std::to_string(i) + " " + std::string(40, 'x'));
    std::clog.rdbuf(console);
    return 0;
}
