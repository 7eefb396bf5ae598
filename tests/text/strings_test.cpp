#include <ovo/strings.h>

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <vector>

using Pieces = std::vector<std::string>;

TEST(Format, FormatsLikePrintf)
{
    EXPECT_EQ(ovo::format("%s=%d [%-*s] %08X %lu", "key", -7, 6, "ab", 0xBEEFu, 4294967295ul),
              "key=-7 [ab    ] 0000BEEF 4294967295");
    EXPECT_EQ(ovo::format("%02d:%02d:%02d.%03d", 1, 2, 3, 7), "01:02:03.007");
}

TEST(Format, EmptyOutputGivesEmptyString)
{
    EXPECT_EQ(ovo::format("%s", ""), "");
}

TEST(Format, LongTextComesBackWhole)
{
    const std::string big(100000, 'x');
    const std::string result = ovo::format("<%s>", big.c_str());
    ASSERT_EQ(result.size(), 100002u);
    EXPECT_EQ(result, "<" + big + ">");
}

TEST(Format, ZeroCharacterStaysInside)
{
    const std::string result = ovo::format("a%cb", 0);
    ASSERT_EQ(result.size(), 3u);
    EXPECT_EQ(result, std::string("a\0b", 3));
}

TEST(Compare, IsEqualityWithCase)
{
    EXPECT_TRUE(ovo::compare("abc", "abc"));
    EXPECT_FALSE(ovo::compare("abc", "ABC"));
    EXPECT_FALSE(ovo::compare("abc", "abcd"));
    EXPECT_TRUE(ovo::compare(std::string("a\0b", 3), std::string("a\0b", 3)));
    EXPECT_FALSE(ovo::compare(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(Compare, IcompareIgnoresCaseOnly)
{
    EXPECT_TRUE(ovo::icompare("ABC", "abc"));
    EXPECT_TRUE(ovo::icompare("", ""));
    EXPECT_FALSE(ovo::icompare("abc", "abcd"));
    EXPECT_FALSE(ovo::icompare("abd", "ABC"));
    EXPECT_FALSE(ovo::icompare("\xC4", "\xE4")); // bytes above 0x7F keep their case in the C locale
}

TEST(CaseConversion, ChangesLettersOnly)
{
    const std::string mixed("aZ09 \x80\xFF-q", 10);
    EXPECT_EQ(ovo::toLower(mixed), std::string("az09 \x80\xFF-q", 10));
    EXPECT_EQ(ovo::toUpper(mixed), std::string("AZ09 \x80\xFF-Q", 10));
    std::string text = "MiXeD";
    EXPECT_EQ(&ovo::toLowerInPlace(text), &text);
    EXPECT_EQ(text, "mixed");
    EXPECT_EQ(&ovo::toUpperInPlace(text), &text);
    EXPECT_EQ(text, "MIXED");
}

struct SplitCase {
    const char* text;
    const char* delimiter;
    Pieces keepingEmpty;
    Pieces skippingEmpty;
};

class SplitStringTest : public testing::TestWithParam<SplitCase> {};

TEST_P(SplitStringTest, CutsAtEveryWholeDelimiter)
{
    const SplitCase& c = GetParam();
    EXPECT_EQ(ovo::SplitString(c.text, c.delimiter, false), c.keepingEmpty);
    EXPECT_EQ(ovo::SplitString(c.text, c.delimiter, true), c.skippingEmpty);
}

INSTANTIATE_TEST_SUITE_P(
    Table, SplitStringTest,
    testing::Values(SplitCase{"a,b,,c", ",", {"a", "b", "", "c"}, {"a", "b", "c"}},
                    SplitCase{"", ",", {""}, {}},
                    SplitCase{"a,", ",", {"a", ""}, {"a"}},
                    SplitCase{",a", ",", {"", "a"}, {"a"}},
                    SplitCase{"aaa", "aa", {"", "a"}, {"a"}},
                    SplitCase{"a, b,c", ", ", {"a", "b,c"}, {"a", "b,c"}},
                    SplitCase{"line1\n\nline3\n", "\n", {"line1", "", "line3", ""}, {"line1", "line3"}},
                    SplitCase{"aXbxc", "x", {"aXb", "c"}, {"aXb", "c"}},
                    SplitCase{"none", "--", {"none"}, {"none"}}));

TEST(SplitString, EmptyDelimiterIsRejected)
{
    try {
        ovo::SplitString("abc", "", false);
        FAIL() << "no exception";
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(e.what(), "SplitString: the delimiter must not be empty");
    }
}

TEST(SplitString, ZeroBytesAreOrdinary)
{
    const std::string text("a\0b\0c", 5);
    EXPECT_EQ(ovo::SplitString(text, std::string("\0", 1), false), (Pieces{"a", "b", "c"}));
}

TEST(ByteOrder, SwapsAlways)
{
    EXPECT_EQ(ovo::ByteOrder::reorder16(0x1234), 0x3412);
    EXPECT_EQ(ovo::ByteOrder::reorder16(0x00FF), 0xFF00);
    EXPECT_EQ(ovo::ByteOrder::reorder32(0x12345678u), 0x78563412u);
    for (unsigned int value : {0u, 1u, 0x80000000u, 0xDEADBEEFu, UINT_MAX}) {
        EXPECT_EQ(ovo::ByteOrder::reorder32(ovo::ByteOrder::reorder32(value)), value);
        const auto half = static_cast<unsigned short>(value);
        EXPECT_EQ(ovo::ByteOrder::reorder16(ovo::ByteOrder::reorder16(half)), half);
    }
}
