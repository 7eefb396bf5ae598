#include <ovo/logger/formatters.h>

#include "platform/local_time.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ovo {
namespace logger {

namespace {

const std::size_t nameField = 16;
const std::size_t continuationIndent = 32;

struct TimeOfDay {
    int hour;
    int minute;
    int second;
    int millisecond;
};

// Local time of day now. The conversion is cached per thread for the current second,
// so that a message costs one clock reading; a time-zone change shows from the next
// second on, and no lock is held beyond the conversion itself.
TimeOfDay now()
{
    struct CachedSecond {
        std::int64_t second = -1;
        std::tm local{};
    };
    thread_local CachedSecond cache;

    const std::int64_t ticks = platform::systemTicks();
    const std::int64_t second = ticks / 10000000;
    if (second != cache.second) {
        cache.local = platform::localTime(second);
        cache.second = second;
    }
    return {cache.local.tm_hour, cache.local.tm_min, cache.local.tm_sec, static_cast<int>(ticks / 10000 % 1000)};
}

char* twoDigits(char* out, int value)
{
    out[0] = static_cast<char>('0' + value / 10 % 10);
    out[1] = static_cast<char>('0' + value % 10);
    return out + 2;
}

// The first line as "%02d:%02d:%02d.%03d [%-*s] %s\n" gives it, without printf: the
// name and the first piece end at a zero byte, as %s reads them.
void appendFirstLine(std::string& text, const TimeOfDay& time, const std::string& name, const char* piece,
                     std::size_t pieceLength)
{
    char stamp[14];
    char* out = twoDigits(stamp, time.hour);
    *out++ = ':';
    out = twoDigits(out, time.minute);
    *out++ = ':';
    out = twoDigits(out, time.second);
    *out++ = '.';
    *out++ = static_cast<char>('0' + time.millisecond / 100);
    out = twoDigits(out, time.millisecond % 100);
    *out++ = ' ';
    *out++ = '[';
    text.append(stamp, static_cast<std::size_t>(out - stamp));

    const std::size_t nameLength = std::strlen(name.c_str());
    text.append(name.c_str(), nameLength);
    if (nameLength < nameField)
        text.append(nameField - nameLength, ' ');
    text.append("] ", 2);
    text.append(piece, strnlen(piece, pieceLength));
    text.push_back('\n');
}

} // namespace

ConsoleFormatter::ConsoleFormatter() = default;
ConsoleFormatter::ConsoleFormatter(const ConsoleFormatter&) = default;
ConsoleFormatter::ConsoleFormatter(ConsoleFormatter&&) noexcept = default;
ConsoleFormatter& ConsoleFormatter::operator=(const ConsoleFormatter&) = default;
ConsoleFormatter& ConsoleFormatter::operator=(ConsoleFormatter&&) noexcept = default;
ConsoleFormatter::~ConsoleFormatter() = default;

std::string ConsoleFormatter::format(const std::string&, const std::string& message)
{
    std::string text;
    text.reserve(message.size() + 1);
    return text.append(message).append(1, '\n');
}

SimpleFormatter::SimpleFormatter() = default;
SimpleFormatter::SimpleFormatter(const SimpleFormatter&) = default;
SimpleFormatter::SimpleFormatter(SimpleFormatter&&) noexcept = default;
SimpleFormatter& SimpleFormatter::operator=(const SimpleFormatter&) = default;
SimpleFormatter& SimpleFormatter::operator=(SimpleFormatter&&) noexcept = default;
SimpleFormatter::~SimpleFormatter() = default;

// The message is cut at every line feed, empty pieces kept: the first piece stands on
// the stamped line, each further one on a line of its own behind 32 blanks.
std::string SimpleFormatter::format(const std::string& name, const std::string& message)
{
    const TimeOfDay time = now();
    std::size_t end = message.find('\n');
    std::string text;
    text.reserve(continuationIndent + std::max(name.size(), nameField) + message.size() + 2);
    appendFirstLine(text, time, name, message.data(), end == std::string::npos ? message.size() : end);
    while (end != std::string::npos) {
        const std::size_t start = end + 1;
        end = message.find('\n', start);
        const std::size_t length = (end == std::string::npos ? message.size() : end) - start;
        text.append(continuationIndent, ' ').append(message, start, length).push_back('\n');
    }
    return text;
}

} // namespace logger
} // namespace ovo
