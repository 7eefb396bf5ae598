// Runs a call that must throw exactly the type `expected` with the text `message`.
#ifndef OVO_TESTS_SUPPORT_EXPECT_FAILURE_H
#define OVO_TESTS_SUPPORT_EXPECT_FAILURE_H

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

namespace ovo_test {

template <typename Call>
void expectFailure(Call call, const std::type_info& expected, const std::string& message)
{
    try {
        call();
        ADD_FAILURE() << "no exception, expected: " << message;
    } catch (const std::exception& e) {
        EXPECT_EQ(typeid(e), expected) << "thrown: " << typeid(e).name();
        EXPECT_EQ(e.what(), message);
    }
}

} // namespace ovo_test

#endif
