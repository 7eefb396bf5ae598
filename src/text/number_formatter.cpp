#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include <algorithm>
#include <cctype>
#include <limits>
#include <stdexcept>

namespace ovo {
namespace NumberFormatter {

namespace {

const char upperDigits[] = "0123456789ABCDEF";
const char lowerDigits[] = "0123456789abcdef";

// Two digits a byte, high nibble first, each followed by Width - 2 blanks.
template <std::size_t Width>
std::string hex(const void* data, unsigned int size, const char* digits)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::string text(std::size_t{size} * Width, ' ');
    char* out = &text[0];
    for (unsigned int i = 0; i < size; ++i, out += Width) {
        out[0] = digits[bytes[i] >> 4];
        out[1] = digits[bytes[i] & 0x0F];
    }
    return text;
}

unsigned char nibble(char c)
{
    if (c >= '0' && c <= '9')
        return static_cast<unsigned char>(c - '0');
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned char>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned char>(c - 'a' + 10);
    throw std::runtime_error(ovo::format("invalid hex char '%c'", c));
}

} // namespace

std::string buffer2stringL(const void* data, unsigned int size) { return hex<2>(data, size, lowerDigits); }
std::string buffer2stringL2(const void* data, unsigned int size) { return hex<3>(data, size, lowerDigits); }
std::string buffer2stringU(const void* data, unsigned int size) { return hex<2>(data, size, upperDigits); }
std::string buffer2stringU2(const void* data, unsigned int size) { return hex<3>(data, size, upperDigits); }

std::string bcd2string(const void* data, unsigned int size)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::string text(std::size_t{size} * 2 + 1, '\0');
    for (unsigned int i = 0; i < size; ++i) {
        text[2 * i] = static_cast<char>('0' + (bytes[i] >> 4));
        text[2 * i + 1] = static_cast<char>('0' + (bytes[i] & 0x0F));
    }
    return text;
}

std::string formatBool(bool value) { return value ? "yes" : "no"; }

std::string formatBuffer(const void* data, unsigned int size, int bytesPerLine)
{
    // The width is a divisor and a count of columns: below 1 no line can be cut.
    if (bytesPerLine < 1)
        throw std::invalid_argument(ovo::format("formatBuffer: bytesPerLine must be 1 or more, not %d", bytesPerLine));
    // No line to cut: removing the last line feed of nothing fails.
    if (size == 0)
        throw std::out_of_range("invalid string position");

    const auto* bytes = static_cast<const unsigned char*>(data);
    const std::size_t perLine = static_cast<std::size_t>(bytesPerLine);
    const std::size_t lineCount = size / perLine + (size % perLine != 0 ? 1 : 0);
    const std::size_t lineWidth = 4 * perLine + 3; // hex columns, "| ", text column, line feed
    if (lineWidth > std::numeric_limits<std::size_t>::max() / 4 / lineCount)
        throw std::length_error("formatBuffer: the dump does not fit in memory");

    std::string text(lineWidth * lineCount, ' ');
    for (std::size_t line = 0; line < lineCount; ++line) {
        char* row = &text[line * lineWidth];
        const unsigned char* in = bytes + line * perLine;
        const std::size_t count = std::min<std::size_t>(perLine, size - line * perLine);
        for (std::size_t i = 0; i < count; ++i) {
            row[3 * i] = upperDigits[in[i] >> 4];
            row[3 * i + 1] = upperDigits[in[i] & 0x0F];
            row[3 * perLine + 2 + i] = std::isprint(in[i]) ? static_cast<char>(in[i]) : '.';
        }
        row[3 * perLine] = '|';
        row[lineWidth - 1] = '\n';
    }
    text.pop_back();
    return text;
}

std::vector<unsigned char> string2buffer(const std::string& text)
{
    const std::size_t length = text.size();
    std::vector<unsigned char> bytes(length / 2 + length % 2);
    std::size_t in = 0;
    std::size_t out = 0;
    if (length % 2 != 0)
        bytes[out++] = nibble(text[in++]);
    for (; in < length; in += 2) {
        const unsigned char high = nibble(text[in]);
        bytes[out++] = static_cast<unsigned char>(high << 4 | nibble(text[in + 1]));
    }
    return bytes;
}

} // namespace NumberFormatter
} // namespace ovo
