#include "platform/posix/file_name.h"

#include <cstdio>

namespace ovo {
namespace posix {

std::string escapedFileName(const std::string& text)
{
    std::string escaped;
    for (unsigned char c : text) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-') {
            escaped += static_cast<char>(c);
        } else {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02X", c);
            escaped += escape;
        }
    }
    return escaped;
}

std::string unescapedFileName(const std::string& fileName)
{
    std::string text;
    for (std::size_t i = 0; i < fileName.size(); ++i) {
        unsigned byte;
        if (fileName[i] == '%' && i + 2 < fileName.size() && std::sscanf(fileName.c_str() + i + 1, "%2X", &byte) == 1) {
            text += static_cast<char>(byte);
            i += 2;
        } else {
            text += fileName[i];
        }
    }
    return text;
}

} // namespace posix
} // namespace ovo
