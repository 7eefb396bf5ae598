#include <ovo/strings.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Words = std::vector<std::string>;

struct CommandLineCase {
    std::string text;
    Words words;
};

class SplitCommandLineTest : public testing::TestWithParam<CommandLineCase> {};

TEST_P(SplitCommandLineTest, GivesTheWords)
{
    EXPECT_EQ(ovo::SplitCommandLine(GetParam().text), GetParam().words) << "text: [" << GetParam().text << "]";
}

INSTANTIATE_TEST_SUITE_P(
    Table, SplitCommandLineTest,
    testing::Values(CommandLineCase{"", {}},
                    CommandLineCase{"a b c", {"a", "b", "c"}},
                    CommandLineCase{"a  b", {"a", "", "b"}},
                    CommandLineCase{" a", {"", "a"}},
                    CommandLineCase{"a ", {"a"}},
                    CommandLineCase{"a  ", {"a", ""}},
                    CommandLineCase{"\"a b\" c", {"a b", "", "c"}},
                    CommandLineCase{"\"a b\"", {"a b"}},
                    CommandLineCase{"\"a\"b", {"a", "b"}},
                    CommandLineCase{"\"\"", {""}},
                    CommandLineCase{"\"a b", {"\"a b"}},
                    CommandLineCase{"x \"", {"x", "\""}},
                    CommandLineCase{"a\"b c\"", {"a\"b", "c\""}},
                    CommandLineCase{"a\tb", {"a\tb"}},
                    CommandLineCase{"C:\\dir\\ \"x\\\"", {"C:\\dir\\", "x\\"}},
                    CommandLineCase{std::string("a\0b c", 5), {std::string("a\0b", 3), "c"}}));
