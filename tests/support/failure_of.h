// The text of the std::runtime_error that a call throws, for tests of exact messages.
#ifndef OVO_TESTS_SUPPORT_FAILURE_OF_H
#define OVO_TESTS_SUPPORT_FAILURE_OF_H

#include <stdexcept>
#include <string>

namespace ovo_test {

// "" when the call throws nothing.
template <typename Call> std::string failureOf(Call call)
{
    try {
        call();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

} // namespace ovo_test

#endif
