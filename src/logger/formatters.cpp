#include <ovo/logger/formatters.h>

#include "logger/two_digits.h"
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

// Local time of day now, from one clock reading.
TimeOfDay now()
{
    const std::int64_t ticks = platform::systemTicks();
    const std::tm local = platform::localTime(ticks / 10000000);
    return {local.tm_hour, local.tm_min, local.tm_sec, static_cast<int>(ticks / 10000 % 1000)};
}

// "HH:MM:SS.mmm [" as "%02d:%02d:%02d.%03d [" gives it.
char* writeStamp(char* out, const TimeOfDay& time)
{
    out = twoDigits(out, time.hour);
    *out++ = ':';
    out = twoDigits(out, time.minute);
    *out++ = ':';
    out = twoDigits(out, time.second);
    *out++ = '.';
    *out++ = static_cast<char>('0' + time.millisecond / 100);
    out = twoDigits(out, time.millisecond % 100);
    *out++ = ' ';
    *out++ = '[';
    return out;
}

// Line feeds from `from` on; a memchr hop per line, since messages have few.
std::size_t countLineFeeds(const std::string& text, std::size_t from)
{
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    for (const char* p = text.data() + from; p < end; ++count) {
        p = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
        if (p == nullptr)
            break;
        ++p;
    }
    return count;
}

char* copy(char* out, const char* text, std::size_t length)
{
    std::memcpy(out, text, length);
    return out + length;
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

// The first line is what "%02d:%02d:%02d.%03d [%-*s] %s\n" gives with the field width 16:
// the name and the first piece end at a zero byte, as %s reads them. The message is cut
// at every line feed, empty pieces kept, and each further piece stands on a line of its
// own behind 32 blanks, copied whole. The text is made at its final size, filled with
// blanks, so that the padding and the indentation need no writing.
std::string SimpleFormatter::format(const std::string& name, const std::string& message)
{
    const TimeOfDay time = now();
    const std::size_t nameLength = std::strlen(name.c_str());
    const std::size_t firstEnd = std::min(message.find('\n'), message.size());
    const std::size_t firstLength = strnlen(message.data(), firstEnd);
    const std::size_t lineFeeds = countLineFeeds(message, firstEnd);
    const std::size_t leadIn = 14 + std::max(nameLength, nameField) + 2; // stamp, " [", name, "] "

    std::string text(leadIn + firstLength + 1 + lineFeeds * continuationIndent + (message.size() - firstEnd), ' ');
    char* out = writeStamp(&text[0], time);
    copy(out, name.c_str(), nameLength);
    out = &text[leadIn - 2];
    *out++ = ']';
    out = copy(out + 1, message.data(), firstLength);
    *out++ = '\n';
    for (std::size_t start = firstEnd + 1; start <= message.size() && lineFeeds != 0; ) {
        const std::size_t end = std::min(message.find('\n', start), message.size());
        out = copy(out + continuationIndent, message.data() + start, end - start);
        *out++ = '\n';
        start = end + 1;
    }
    return text;
}

} // namespace logger
} // namespace ovo
