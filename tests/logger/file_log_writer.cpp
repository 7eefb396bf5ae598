// file_log_writer DIRECTORY SUFFIX ID COUNT plain|split: logs COUNT messages "ID N ..." through a FileLogChannel
// with the header "# header\n", alone or as the member of a split channel.
#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>

int main(int argc, char** argv)
{
    if (argc != 6)
        return 2;
    auto file = std::make_shared<ovo::logger::FileLogChannel>(argv[1], argv[2]);
    file->setFormatter(std::make_shared<ovo::logger::SimpleFormatter>());
    file->setProperty(ovo::logger::FileLogChannel::PropertyRollingHeader, "# header\n");
    std::shared_ptr<ovo::logger::ILogChannel> channel = file;
    if (std::string(argv[5]) == "split") {
        auto fanOut = std::make_shared<ovo::logger::SplitLogChannel>();
        fanOut->add(file);
        channel = fanOut;
    }
    ovo::logger::ILogger& logger = ovo::logger::add("writer", channel);
    for (int i = 0, count = std::stoi(argv[4]); i < count; ++i)
        logger.info(std::string(argv[3]) + " " + std::to_string(i) + " " + std::string(60, '.'));
    return 0;
}
