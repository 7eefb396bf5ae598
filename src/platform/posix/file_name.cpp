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

} // namespace posix
} // namespace ovo
