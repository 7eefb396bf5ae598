#include <ovo/number_formatter.h>
#include <ovo/number_parser.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace nf = ovo::NumberFormatter;
using Bytes = std::vector<unsigned char>;

namespace {

std::string bcd(const Bytes& bytes) { return nf::bcd2string(bytes.data(), static_cast<unsigned int>(bytes.size())); }
std::string dump(const Bytes& bytes, int perLine)
{
    return nf::formatBuffer(bytes.data(), static_cast<unsigned int>(bytes.size()), perLine);
}

} // namespace

TEST(HexForms, FourForms)
{
    const unsigned char bytes[] = {0x12, 0xAB};
    EXPECT_EQ(nf::buffer2stringL(bytes, 2), "12ab");
    EXPECT_EQ(nf::buffer2stringL2(bytes, 2), "12 ab ");
    EXPECT_EQ(nf::buffer2stringU(bytes, 2), "12AB");
    EXPECT_EQ(nf::buffer2stringU2(bytes, 2), "12 AB ");
    for (auto form : {nf::buffer2stringL, nf::buffer2stringL2, nf::buffer2stringU, nf::buffer2stringU2})
        EXPECT_EQ(form(nullptr, 0), "");
}

TEST(HexForms, EveryByteValue)
{
    Bytes all(256);
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<unsigned char>(i);
    const std::string upper = nf::buffer2stringU2(all.data(), 256);
    ASSERT_EQ(upper.size(), 768u);
    EXPECT_EQ(upper.substr(0, 9), "00 01 02 ");
    EXPECT_EQ(upper.substr(0x9F * 3, 6), "9F A0 ");
    EXPECT_EQ(upper.substr(765), "FF ");
    EXPECT_EQ(nf::string2buffer(nf::buffer2stringL(all.data(), 256)), all);
    EXPECT_EQ(nf::string2buffer(nf::buffer2stringU(all.data(), 256)), all);
}

TEST(Bcd, DigitsAndClosingZero)
{
    EXPECT_EQ(bcd({}), std::string(1, '\0'));
    EXPECT_EQ(bcd({0x12, 0x34}), std::string("1234\0", 5));
    EXPECT_EQ(bcd({0xAF}), std::string(":?\0", 3));
}

TEST(FormatBool, WordsThatParseBack)
{
    EXPECT_EQ(nf::formatBool(true), "yes");
    EXPECT_EQ(nf::formatBool(false), "no");
    EXPECT_TRUE(ovo::NumberParser::parseBool(nf::formatBool(true)));
    EXPECT_FALSE(ovo::NumberParser::parseBool(nf::formatBool(false)));
}

TEST(FormatBuffer, ShortLastLineKeepsItsWidth)
{
    // The two-line example: a full line of four, then one byte padded to the width.
    EXPECT_EQ(dump({0x41, 0x42, 0x00, 0x7F, 0x20}, 4), "41 42 00 7F | AB..\n"
                                                      "20          |     ");
}

TEST(FormatBuffer, LineCounts)
{
    const Bytes sixteen(16, 0x30);
    const std::string one = dump(sixteen, 16);
    EXPECT_EQ(one.size(), 66u);
    EXPECT_EQ(one.find('\n'), std::string::npos);
    EXPECT_EQ(one.substr(45), "30 | 0000000000000000");

    const std::string two = dump(Bytes(32, 0x30), 16);
    EXPECT_EQ(two.size(), 133u);
    EXPECT_EQ(two[66], '\n');
    EXPECT_EQ(two.find('\n', 67), std::string::npos);

    Bytes seventeen(17, 0x31);
    const std::string padded = dump(seventeen, 16);
    ASSERT_EQ(padded.size(), 133u);
    EXPECT_EQ(padded.substr(67), "31" + std::string(46, ' ') + "| 1" + std::string(15, ' '));
}

TEST(FormatBuffer, TextColumnShowsPrintableBytesOnly)
{
    const std::string line = dump({0x00, 0x7F, 0x80, 0x20, 0x7E, 0xFF}, 6);
    EXPECT_EQ(line, "00 7F 80 20 7E FF | ... ~.");
}

TEST(FormatBuffer, WidthOfOneByte)
{
    EXPECT_EQ(dump({0x61, 0x62}, 1), "61 | a\n62 | b");
}

TEST(FormatBuffer, EmptyBufferAndBadWidthFailClearly)
{
    try {
        nf::formatBuffer(nullptr, 0, 16);
        FAIL() << "no exception";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "invalid string position");
    }
    const unsigned char byte = 1;
    for (int width : {0, -1, -16}) {
        try {
            nf::formatBuffer(&byte, 1, width);
            FAIL() << "no exception for " << width;
        } catch (const std::invalid_argument& e) {
            EXPECT_EQ(std::string(e.what()),
                      "formatBuffer: bytesPerLine must be 1 or more, not " + std::to_string(width));
        }
    }
}

TEST(String2Buffer, ReadsHexDigitsOnly)
{
    EXPECT_EQ(nf::string2buffer(""), Bytes{});
    EXPECT_EQ(nf::string2buffer("ABC"), (Bytes{0x0A, 0xBC}));
    EXPECT_EQ(nf::string2buffer("aB"), Bytes{0xAB});
    EXPECT_EQ(nf::string2buffer("f"), Bytes{0x0F});
    EXPECT_EQ(nf::string2buffer("00ff7F80"), (Bytes{0x00, 0xFF, 0x7F, 0x80}));
}

TEST(String2Buffer, FirstInvalidCharacterIsNamed)
{
    const struct {
        std::string text;
        std::string message;
    } cases[] = {{"0x12", "invalid hex char 'x'"},
                 {"12 34", "invalid hex char ' '"},
                 {"g", "invalid hex char 'g'"},
                 {"zq", "invalid hex char 'z'"},  // first of a pair is read first
                 {"1zq", "invalid hex char 'z'"}, // odd text: the lone first digit, then pairs
                 {"-1", "invalid hex char '-'"},
                 {std::string("1\0", 2), std::string("invalid hex char '\0'", 20)}};
    for (const auto& c : cases) {
        try {
            nf::string2buffer(c.text);
            ADD_FAILURE() << "no exception for " << c.text;
        } catch (const std::runtime_error& e) {
            EXPECT_EQ(typeid(e), typeid(std::runtime_error));
            EXPECT_EQ(std::string(e.what()), c.message.substr(0, c.message.find('\0')));
        }
    }
}
