#include "json.h"

#include <ovo/strings.h>

namespace ovo_tool {

std::string jsonString(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        switch (c) {
        case '"': quoted += "\\\""; break;
        case '\\': quoted += "\\\\"; break;
        case '\n': quoted += "\\n"; break;
        case '\r': quoted += "\\r"; break;
        case '\t': quoted += "\\t"; break;
        default:
            // Other control characters as \u00XX; bytes from 0x80 on pass as they are (UTF-8).
            if (static_cast<unsigned char>(c) < 0x20)
                quoted += ovo::format("\\u%04X", static_cast<unsigned char>(c));
            else
                quoted += c;
        }
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
