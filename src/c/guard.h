// What every function of the C interface wraps its body in: no exception leaves it, and a
// failure leaves its text for the calling thread.
#ifndef OVO_SRC_C_GUARD_H
#define OVO_SRC_C_GUARD_H

#include <ovo/c/base.h>

#include <stdexcept>
#include <string>

namespace ovo_c {

// A null handle or pointer where the caller must give one: its text names the function.
class MissingArgument : public std::invalid_argument {
public:
    explicit MissingArgument(const char* what) : std::invalid_argument(std::string(what) + " is null") {}
};

// Keeps the text of the exception being handled as the thread's last failure and answers
// its status. Only to be called from a catch block.
ovo_status failureInFlight(const char* function) noexcept;

// body() answers a status; whatever it throws becomes a failure of function.
template <typename Body> ovo_status guarded(const char* function, Body&& body) noexcept
{
    try {
        return body();
    } catch (...) {
        return failureInFlight(function);
    }
}

// What the caller must give, by reference.
template <typename T> T& required(T* pointer, const char* what)
{
    if (pointer == nullptr)
        throw MissingArgument(what);
    return *pointer;
}

// A caller's byte buffer: null only when it holds nothing.
inline void requireBytes(const void* data, unsigned int size, const char* what)
{
    if (data == nullptr && size != 0)
        throw MissingArgument(what);
}

} // namespace ovo_c

#endif
