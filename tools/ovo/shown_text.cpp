#include "shown_text.h"

#include <ovo/strings.h>

namespace ovo_tool {

std::size_t utf8Length(const std::string& text, std::size_t at)
{
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned first = byte(at);
    if (first < 0x80)
        return 1;
    // The lead byte gives the length and the range of the second byte, which excludes the
    // overlong forms, the surrogates and what lies beyond U+10FFFF.
    std::size_t length = 0;
    unsigned low = 0x80, high = 0xBF;
    if (first >= 0xC2 && first <= 0xDF)
        length = 2;
    else if (first >= 0xE0 && first <= 0xEF)
        length = 3, low = first == 0xE0 ? 0xA0 : low, high = first == 0xED ? 0x9F : high;
    else if (first >= 0xF0 && first <= 0xF4)
        length = 4, low = first == 0xF0 ? 0x90 : low, high = first == 0xF4 ? 0x8F : high;
    else
        return 0;
    if (byte(at + 1) < low || byte(at + 1) > high)
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if ((byte(at + i) & 0xC0) != 0x80)
            return 0;
    return length;
}

std::string printable(const std::string& text)
{
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8Length(text, at);
        const unsigned char first = static_cast<unsigned char>(text[at]);
        const bool control = first < 0x20 || first == 0x7F ||
                             (first == 0xC2 && length == 2 && static_cast<unsigned char>(text[at + 1]) < 0xA0);
        if (length != 0 && !control) {
            shown.append(text, at, length);
            at += length;
            continue;
        }
        for (const std::size_t end = at + (length == 0 ? 1 : length); at < end; ++at)
            shown += ovo::format("\\x%02X", static_cast<unsigned char>(text[at]));
    }
    return shown;
}

std::size_t columns(const std::string& printableText)
{
    std::size_t count = 0;
    for (const char c : printableText)
        count += (static_cast<unsigned char>(c) & 0xC0) != 0x80; // continuation bytes take none
    return count;
}

} // namespace ovo_tool
