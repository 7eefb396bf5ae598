#include <ovo/logger/file_log_channel.h>
#include <ovo/strings.h>

#include "logger/rolling_file.h"
#include "logger/two_digits.h"
#include "platform/local_time.h"

namespace ovo {
namespace logger {

namespace {

// The day's file name, as "%04d-%02d-%02d.log" or "%04d-%02d-%02d-%s.log" give it: the
// year in full and the month counted from 1. Written digit by digit for the years of four
// digits, as formatting would cost a good part of the message's system calls.
std::string fileNameOf(const std::tm& day, const std::string& suffix)
{
    const int year = day.tm_year + 1900;
    const int month = day.tm_mon + 1;
    if (year < 0 || year > 9999)
        return suffix.empty() ? ovo::format("%04d-%02d-%02d.log", year, month, day.tm_mday)
                              : ovo::format("%04d-%02d-%02d-%s.log", year, month, day.tm_mday, suffix.c_str());
    char date[10];
    twoDigits(twoDigits(date, year / 100), year % 100);
    date[4] = date[7] = '-';
    twoDigits(date + 5, month);
    twoDigits(date + 8, day.tm_mday);
    std::string name(date, sizeof date);
    if (!suffix.empty())
        name.append(1, '-').append(suffix.c_str()); // up to a NUL, as %s reads it
    return name.append(".log");
}

} // namespace

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
    const std::string fileName = fileNameOf(platform::localTime(platform::systemTicks() / 10000000), file_->suffix());
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
