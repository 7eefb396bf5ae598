#include <ovo/number_formatter.h>

#include "support/failure_of.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nf = ovo::NumberFormatter;
using Bytes = std::vector<unsigned char>;

TEST(NumberFormatter, HexFormsOfEveryByteReadBackAndOnlyHexDigitsAreRead)
{
    const unsigned char pair[] = {0x12, 0xAB};
    EXPECT_EQ(nf::buffer2stringL(pair, 2), "12ab");
    EXPECT_EQ(nf::buffer2stringL2(pair, 2), "12 ab ");
    EXPECT_EQ(nf::buffer2stringU(pair, 2), "12AB");
    EXPECT_EQ(nf::buffer2stringU2(pair, 2), "12 AB ");
    for (auto form : {nf::buffer2stringL, nf::buffer2stringL2, nf::buffer2stringU, nf::buffer2stringU2})
        EXPECT_EQ(form(nullptr, 0), "");

    Bytes all(256);
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<unsigned char>(i);
    const std::string upper = nf::buffer2stringU2(all.data(), 256);
    EXPECT_EQ(upper.substr(0x9F * 3, 6), "9F A0 ");
    EXPECT_EQ(upper.substr(765), "FF ");
    EXPECT_EQ(nf::string2buffer(nf::buffer2stringL(all.data(), 256)), all);
    EXPECT_EQ(nf::string2buffer(nf::buffer2stringU(all.data(), 256)), all);
}

TEST(NumberFormatter, BcdAndBool)
{
    const Bytes digits = {0x12, 0x34}, high = {0xAF};
    EXPECT_EQ(nf::bcd2string(nullptr, 0), std::string(1, '\0'));
    EXPECT_EQ(nf::bcd2string(digits.data(), 2), std::string("1234\0", 5));
    EXPECT_EQ(nf::bcd2string(high.data(), 1), std::string(":?\0", 3));
    EXPECT_EQ(nf::formatBool(true), "yes");
    EXPECT_EQ(nf::formatBool(false), "no");
}

TEST(NumberFormatter, DumpLinesHaveOneWidthAndNeedBytesAndAWidth)
{
    const struct {
        Bytes bytes;
        int perLine;
        std::string text;
    } cases[] = {
        {{0x41, 0x42, 0x00, 0x7F, 0x20}, 4, "41 42 00 7F | AB..\n20          |     "},
        {{0x00, 0x7F, 0x80, 0x20, 0x7E, 0xFF}, 6, "00 7F 80 20 7E FF | ... ~."},
        {{0x61, 0x62}, 1, "61 | a\n62 | b"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(nf::formatBuffer(c.bytes.data(), static_cast<unsigned int>(c.bytes.size()), c.perLine), c.text);
    EXPECT_EQ(ovo_test::failureOf([] { nf::formatBuffer(nullptr, 0, 16); }, typeid(std::out_of_range)),
              "invalid string position");
    const unsigned char byte = 1;
    for (int width : {0, -1})
        EXPECT_EQ(ovo_test::failureOf([&] { nf::formatBuffer(&byte, 1, width); }, typeid(std::invalid_argument)),
                  "formatBuffer: bytesPerLine must be 1 or more, not " + std::to_string(width));
    EXPECT_EQ(nf::string2buffer(""), Bytes{});
    EXPECT_EQ(nf::string2buffer("ABC"), (Bytes{0x0A, 0xBC}));
    EXPECT_EQ(nf::string2buffer("aB"), Bytes{0xAB});
    // The first invalid character in the order of reading; the first of a pair comes first.
    const std::pair<std::string, char> invalid[] = {{"0x12", 'x'}, {"12 34", ' '}, {"zq", 'z'},
                                                    {"1zq", 'z'},  {"-1", '-'},    {"Fg", 'g'}};
    for (const auto& c : invalid)
        EXPECT_EQ(ovo_test::failureOf([&] { nf::string2buffer(c.first); }, typeid(std::runtime_error)),
                  std::string("invalid hex char '") + c.second + "'");
}
