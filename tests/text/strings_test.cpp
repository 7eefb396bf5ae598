#include <ovo/strings.h>

#include "support/failure_of.h"

#include <gtest/gtest.h>

#include <stdexcept>

using Pieces = std::vector<std::string>;

TEST(Format, FormatsLikePrintfWithoutALimit)
{
    EXPECT_EQ(ovo::format("%s=%d [%-*s] %08X %lu %c", "key", -7, 6, "ab", 0xBEEFu, 4294967295ul, 'z'),
              "key=-7 [ab    ] 0000BEEF 4294967295 z");
    EXPECT_EQ(ovo::format("%s", ""), "");
    EXPECT_EQ(ovo::format("%c", 'x'), "x"); // a one-byte result
    EXPECT_EQ(ovo::format("a%cb", 0), std::string("a\0b", 3)); // the length is the formatter's count
    const std::string big(100000, 'x');
    EXPECT_EQ(ovo::format("<%s>", big.c_str()), "<" + big + ">");
}

TEST(Case, ComparedWithAndWithoutItAndChangedInLettersOnly)
{
    const struct {
        std::string a, b;
        bool equal, equalIgnoringCase;
    } cases[] = {{"abc", "abc", true, true},     {"abc", "ABC", false, true},  {"abc", "abcd", false, false},
                 {"abd", "ABC", false, false},   {"", "", true, true},         {"\xC4", "\xE4", false, false},
                 {std::string("a\0b", 3), std::string("a\0c", 3), false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(ovo::compare(c.a, c.b), c.equal) << c.a << " " << c.b;
        EXPECT_EQ(ovo::icompare(c.a, c.b), c.equalIgnoringCase) << c.a << " " << c.b;
        EXPECT_EQ(ovo::icompare(c.b, c.a), c.equalIgnoringCase) << c.b << " " << c.a;
    }

    const std::string mixed("aZ09 \x80\xFF-q", 10);
    EXPECT_EQ(ovo::toLower(mixed), std::string("az09 \x80\xFF-q", 10));
    EXPECT_EQ(ovo::toUpper(mixed), std::string("AZ09 \x80\xFF-Q", 10));
    std::string text = "MiXeD";
    EXPECT_EQ(&ovo::toLowerInPlace(text), &text);
    EXPECT_EQ(text, "mixed");
    EXPECT_EQ(&ovo::toUpperInPlace(text), &text);
    EXPECT_EQ(text, "MIXED");
}

TEST(SplitString, CutsAtEveryWholeDelimiter)
{
    const struct {
        std::string text, delimiter;
        Pieces keepingEmpty, skippingEmpty;
    } cases[] = {{"a,b,,c", ",", {"a", "b", "", "c"}, {"a", "b", "c"}},
                 {"", ",", {""}, {}},
                 {"a,", ",", {"a", ""}, {"a"}},
                 {",a", ",", {"", "a"}, {"a"}},
                 {"aaa", "aa", {"", "a"}, {"a"}},
                 {"a, b,c", ", ", {"a", "b,c"}, {"a", "b,c"}},
                 {"aXbxc", "x", {"aXb", "c"}, {"aXb", "c"}},
                 {std::string("a\0b", 3), std::string("\0", 1), {"a", "b"}, {"a", "b"}}};
    for (const auto& c : cases) {
        EXPECT_EQ(ovo::SplitString(c.text, c.delimiter, false), c.keepingEmpty) << c.text;
        EXPECT_EQ(ovo::SplitString(c.text, c.delimiter, true), c.skippingEmpty) << c.text;
    }
    EXPECT_EQ(ovo_test::failureOf([] { ovo::SplitString("abc", "", false); }, typeid(std::invalid_argument)),
              "SplitString: the delimiter must not be empty");
}

TEST(SplitCommandLine, BlanksAndLeadingQuotesOnly)
{
    const struct {
        std::string text;
        Pieces words;
    } cases[] = {{"", {}},
                 {"a b c", {"a", "b", "c"}},
                 {"a  b", {"a", "", "b"}},
                 {" a", {"", "a"}},
                 {"a ", {"a"}},
                 {"a  ", {"a", ""}},
                 {"\"a b\" c", {"a b", "", "c"}},
                 {"\"a\"b", {"a", "b"}},
                 {"\"\"", {""}},
                 {"\"a b", {"\"a b"}},
                 {"x \"", {"x", "\""}},
                 {"a\"b c\"", {"a\"b", "c\""}},
                 {"a\tb 'c d'", {"a\tb", "'c", "d'"}},
                 {"C:\\dir\\ \"x\\\"", {"C:\\dir\\", "x\\"}},
                 {std::string("a\0b c", 5), {std::string("a\0b", 3), "c"}}};
    for (const auto& c : cases)
        EXPECT_EQ(ovo::SplitCommandLine(c.text), c.words) << "text [" << c.text << "]";
}

TEST(ByteOrder, SwapsAlways)
{
    EXPECT_EQ(ovo::ByteOrder::reorder16(0x1234), 0x3412);
    EXPECT_EQ(ovo::ByteOrder::reorder32(0x12345678u), 0x78563412u);
}
