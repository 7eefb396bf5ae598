#include <ovo/logger/file_log_channel.h>
#include <ovo/strings.h>

#include "logger/rolling_file.h"
#include "platform/local_time.h"

namespace ovo {
namespace logger {

const std::string FileLogChannel::PropertyRollingHeader = "rolling_header";

FileLogChannel::FileLogChannel(const std::string& directory, const std::string& suffix)
    : file_(new RollingFile(directory, suffix))
{
}

FileLogChannel::~FileLogChannel() = default;

void FileLogChannel::write(const std::string& name, const std::string& message)
{
    if (!formatter())
        return;
    // The file name comes from its own reading of the clock, before the formatter's:
    // around midnight a line stamped on the new day can end the old day's file.
    const std::tm today = platform::localTime(platform::systemTicks() / 10000000);
    const int year = today.tm_year + 1900;
    const int month = today.tm_mon + 1;
    const std::string fileName =
        file_->suffix().empty()
            ? ovo::format("%04d-%02d-%02d.log", year, month, today.tm_mday)
            : ovo::format("%04d-%02d-%02d-%s.log", year, month, today.tm_mday, file_->suffix().c_str());
    const std::string text = formatter()->format(name, message); // no lock held
    file_->append(fileName, text);
}

void FileLogChannel::setProperty(const std::string& key, const std::string& value)
{
    if (key == PropertyRollingHeader)
        file_->setHeader(value);
}

} // namespace logger
} // namespace ovo
