#include "json.h"

#include "shown_text.h"

#include <ovo/strings.h>

namespace ovo_tool {

std::string jsonString(const std::string& text)
{
    std::string quoted = "\"";
    for (std::size_t at = 0; at < text.size();) {
        const char c = text[at];
        const std::size_t length = utf8Length(text, at);
        switch (c) {
        case '"': quoted += "\\\""; break;
        case '\\': quoted += "\\\\"; break;
        case '\n': quoted += "\\n"; break;
        case '\r': quoted += "\\r"; break;
        case '\t': quoted += "\\t"; break;
        default:
            // Other control characters as \u00XX, UTF-8 as it is, a byte that is none as the
            // replacement character: the document stays valid JSON whatever the text held.
            if (static_cast<unsigned char>(c) < 0x20)
                quoted += ovo::format("\\u%04X", static_cast<unsigned char>(c));
            else if (length == 0)
                quoted += "\\uFFFD";
            else
                quoted.append(text, at, length);
        }
        at += length == 0 ? 1 : length;
    }
    return quoted + "\"";
}

std::string jsonArray(const std::vector<std::string>& texts)
{
    std::string array = "[";
    for (const std::string& text : texts)
        array += (array.size() > 1 ? "," : "") + jsonString(text);
    return array + "]";
}

} // namespace ovo_tool
