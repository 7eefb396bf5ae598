#include <ovo/strings.h>

#include <cstdarg>
#include <cstdio>
#include <stdexcept>

namespace ovo {

// Two passes over the same arguments: measure, then write into a buffer of exactly
// that size. No fixed buffer, no length limit, no retry loop.
std::string format(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    va_list writeArgs;
    va_copy(writeArgs, args);
    const int measured = std::vsnprintf(nullptr, 0, fmt, args);
    va_end(args);

    std::string result;
    if (measured > 0) {
        result.resize(static_cast<std::size_t>(measured) + 1, '\0');
        const int written = std::vsnprintf(&result[0], result.size(), fmt, writeArgs);
        if (written < 0) {
            va_end(writeArgs);
            throw std::length_error("string too long");
        }
        result.resize(static_cast<std::size_t>(written));
    }
    va_end(writeArgs);
    return result;
}

} // namespace ovo
