// The text of the exception that a call throws, "" when none, for tests of exact messages.
// Given a type, the exception must be exactly of it: any other reads as "thrown: <its type>".
#ifndef OVO_TESTS_SUPPORT_FAILURE_OF_H
#define OVO_TESTS_SUPPORT_FAILURE_OF_H

#include <exception>
#include <string>
#include <typeinfo>

namespace ovo_test {

template <typename Call> std::string failureOf(Call call, const std::type_info& type = typeid(std::exception))
{
    try {
        call();
    } catch (const std::exception& e) {
        return type == typeid(std::exception) || typeid(e) == type ? e.what()
                                                                   : std::string("thrown: ") + typeid(e).name();
    }
    return "";
}

} // namespace ovo_test

#endif
