#include <ovo/nv_collection.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using Pairs = std::vector<std::pair<std::string, std::string>>;

namespace {

Pairs loaded(const std::string& text, const std::string& pairSeparator = ";", const std::string& nvSeparator = "=")
{
    const ovo::nvCollection c(text, pairSeparator, nvSeparator);
    return Pairs(c.begin(), c.end());
}

struct LoadCase {
    std::string text;
    Pairs entries;
};

class LoadTable : public testing::TestWithParam<LoadCase> {};

} // namespace

TEST_P(LoadTable, GivesTheEntries)
{
    EXPECT_EQ(loaded(GetParam().text), GetParam().entries) << "text [" << GetParam().text << "]";
}

INSTANTIATE_TEST_SUITE_P(SemicolonAndEquals, LoadTable,
                         testing::Values(LoadCase{"", {}},
                                         LoadCase{"a=1", {{"a", "1"}}},
                                         LoadCase{"a=1;b=2", {{"a", "1"}, {"b", "2"}}},
                                         LoadCase{"b=2;a=1", {{"a", "1"}, {"b", "2"}}},
                                         LoadCase{"a=1;", {{"a", "1"}}},
                                         LoadCase{";a=1", {{"a", "1"}}},
                                         LoadCase{"a=1;;b=2", {{"a", "1"}, {"b", "2"}}},
                                         LoadCase{"a=1;a=2", {{"a", "2"}}},
                                         LoadCase{"a=b=c", {{"a", "b=c"}}},
                                         LoadCase{"a=", {{"a", ""}}},
                                         LoadCase{"=v", {{"", "v"}}},
                                         LoadCase{"=", {{"", ""}}},
                                         LoadCase{"a", {}},
                                         LoadCase{"a;b=2", {{"a", ""}, {"b", "2"}}},
                                         LoadCase{"b=2;a", {{"b", "2"}}},
                                         LoadCase{"x;y", {{"x", ""}}},
                                         LoadCase{"x;y;", {{"x", ""}, {"y", ""}}},
                                         LoadCase{" a = 1 ", {{" a ", " 1 "}}},
                                         LoadCase{"a\n=1\r", {{"a\n", "1\r"}}}));

TEST(NvText, LoadAddsToWhatIsThere)
{
    ovo::nvCollection c("a=1;c=3", ";", "=");
    c.load("a=2;b=5", ";", "=");
    EXPECT_EQ(Pairs(c.begin(), c.end()), (Pairs{{"a", "2"}, {"b", "5"}, {"c", "3"}}));
}

TEST(NvText, SeparatorsOfSeveralBytes)
{
    EXPECT_EQ(loaded("a: 1, b: 2", ", ", ": "), (Pairs{{"a", "1"}, {"b", "2"}}));
    ovo::nvCollection c;
    c.setString("a", "1");
    c.setString("b", "2");
    EXPECT_EQ(c.toString(", ", ": "), "a: 1, b: 2");
}

TEST(NvText, UnusualSeparators)
{
    EXPECT_EQ(loaded("a;b;c", ";", ";"), Pairs{}) << "equal separators add nothing";
    EXPECT_EQ(loaded("ab;cd", ";", ""), (Pairs{{"", "cd"}})) << "empty name-value separator";
    // An empty pair separator: the whole text is one piece, at most one pair.
    EXPECT_EQ(loaded("a=1;b=2", "", "="), (Pairs{{"a", "1;b=2"}}));
    EXPECT_EQ(loaded("no separator", "", "="), Pairs{});
}

TEST(NvText, NameValueSeparatorReachingPastThePieceGivesAnEmptyValue)
{
    // "=;" starts inside the piece "a=" and ends in the next one: the value stays empty
    // instead of running into the rest of the text.
    EXPECT_EQ(loaded("a=;bcdef", ";", "=;"), (Pairs{{"a", ""}}));
    EXPECT_EQ(loaded("k==;v", ";", "=="), (Pairs{{"k", ""}}));
    EXPECT_EQ(loaded("name:=;=x;", ";", "=;="), (Pairs{{"=x", ""}, {"name:", ""}}));
}

TEST(NvText, ToStringRendersSortedPairs)
{
    EXPECT_EQ(ovo::nvCollection().toString(";", "="), "");
    ovo::nvCollection one;
    one.setString("only", "");
    EXPECT_EQ(one.toString(";", "="), "only=");
    EXPECT_EQ(loaded(one.toString(";", "=")), (Pairs{{"only", ""}}));

    ovo::nvCollection c;
    c.setString("z", "last");
    c.setString("a", std::string("cut\0here", 8));
    c.setString(std::string("n\0x", 3), "v");
    EXPECT_EQ(c.toString(";", "="), "a=cut;n=v;z=last");
}

TEST(NvText, RoundTrip)
{
    ovo::nvCollection c;
    c.setString("device", "COM1");
    c.setString("baud", "9600");
    c.setString("empty", "");
    c.setString("spaced", " x y ");
    c.setString("withEquals", "a=b");
    const ovo::nvCollection back(c.toString(";", "="), ";", "=");
    EXPECT_EQ(Pairs(back.begin(), back.end()), Pairs(c.begin(), c.end()));
}
