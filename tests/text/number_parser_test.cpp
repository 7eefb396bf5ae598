#include <ovo/number_parser.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace np = ovo::NumberParser;

namespace {

const char* const badFormat = "NumebrParser - bad format";
const char* const outOfRange = "NumberParser - out of range";

enum class Outcome { value, badFormat, outOfRange };

template <typename T>
struct Case {
    std::string text;
    Outcome outcome;
    T value;
};

// Runs call, which must throw exactly the type `expected` with `message`.
template <typename Call>
void expectThrow(Call call, const std::type_info& expected, const char* message)
{
    try {
        call();
        ADD_FAILURE() << "no exception";
    } catch (const std::exception& e) {
        EXPECT_EQ(typeid(e), expected) << "thrown: " << typeid(e).name();
        EXPECT_STREQ(e.what(), message);
    }
}

// Checks a parse/tryParse pair on a table: the same verdict from both, the exact
// exceptions of the throwing form, and a tryParse that leaves its value alone on failure.
template <typename Parsed, typename Stored>
void checkPair(Parsed (*parse)(const std::string&), bool (*tryParse)(const std::string&, Stored&),
               const std::vector<Case<Stored>>& cases, bool floating = false)
{
    const std::type_info& badFormatType = floating ? typeid(std::runtime_error) : typeid(std::logic_error);
    const std::type_info& outOfRangeType = floating ? typeid(std::runtime_error) : typeid(std::range_error);
    for (const Case<Stored>& c : cases) {
        SCOPED_TRACE("text [" + c.text + "]");
        const Stored untouched = static_cast<Stored>(42);
        Stored stored = untouched;
        if (c.outcome == Outcome::value) {
            EXPECT_EQ(parse(c.text), static_cast<Parsed>(c.value));
            EXPECT_TRUE(tryParse(c.text, stored));
            EXPECT_EQ(stored, c.value);
        } else {
            const bool bad = c.outcome == Outcome::badFormat;
            expectThrow([&] { parse(c.text); }, bad ? badFormatType : outOfRangeType, bad ? badFormat : outOfRange);
            EXPECT_FALSE(tryParse(c.text, stored));
            EXPECT_EQ(stored, untouched);
        }
    }
}

const Outcome V = Outcome::value;
const Outcome F = Outcome::badFormat;
const Outcome R = Outcome::outOfRange;

} // namespace

TEST(NumberParser, SignedDecimal)
{
    const std::vector<Case<int>> int32 = {
        {"42", V, 42},          {" 42", V, 42},         {"+42", V, 42},          {"-42", V, -42},
        {"\t\n42", V, 42},      {"42 ", F, 0},          {"42x", F, 0},           {"", V, 0},
        {" ", F, 0},            {"-", F, 0},            {"word", F, 0},          {"0x10", F, 0},
        {"010", V, 10},         {"2147483647", V, 2147483647}, {"-2147483648", V, INT32_MIN},
        {"2147483648", R, 0},   {"-2147483649", R, 0},  {"99999999999999999999", R, 0},
        {"99999999999x", F, 0}, {std::string("1\0", 2), F, 0}, {"1.0", F, 0}};
    checkPair(np::parseInt32, np::tryParseInt32, int32);
    checkPair(np::parseInt, np::tryParseInt, int32);

    std::vector<Case<long>> asLong;
    for (const auto& c : int32)
        asLong.push_back({c.text, c.outcome, c.value});
    checkPair(np::parseLong, np::tryParseLong, asLong);

    checkPair(np::parseInt8, np::tryParseInt8,
              {{"127", V, 127}, {"-128", V, -128}, {"128", R, 0}, {"-129", R, 0}, {"1e2", F, 0}});
    const std::vector<Case<short>> int16 = {
        {"32767", V, 32767}, {"-32768", V, -32768}, {"32768", R, 0}, {"-32769", R, 0}, {"", V, 0}};
    checkPair(np::parseInt16, np::tryParseInt16, int16);
    checkPair(np::parseShort, np::tryParseShort, int16);
}

TEST(NumberParser, LongHas32BitsOnEveryPlatform)
{
    EXPECT_EQ(np::parseLong("2147483647"), 2147483647L);
    expectThrow([] { np::parseLong("2147483648"); }, typeid(std::range_error), outOfRange);
    expectThrow([] { np::parseLong("-4294967296"); }, typeid(std::range_error), outOfRange);
    unsigned long value = 7;
    EXPECT_FALSE(np::tryParseULong("4294967296", value));
    EXPECT_EQ(value, 7u);
    EXPECT_TRUE(np::tryParseULong("-1", value));
    EXPECT_EQ(value, 4294967295ul);
    EXPECT_EQ(np::parseULong("4294967295"), -1L);
    EXPECT_EQ(np::parseULong("2147483648"), static_cast<long>(INT32_MIN));
    EXPECT_EQ(np::parseHex("FFFFFFFF"), 4294967295ul);
    expectThrow([] { np::parseHex("100000000"); }, typeid(std::range_error), outOfRange);
}

TEST(NumberParser, UnsignedDecimal)
{
    checkPair(np::parseUInt8, np::tryParseUInt8,
              {{"255", V, 255}, {"256", R, 0}, {"-1", R, 0}, {"0", V, 0}, {"+7", V, 7}, {"7 ", F, 0}});
    const std::vector<Case<unsigned short>> uint16 = {
        {"65535", V, 65535}, {"65536", R, 0}, {"-1", R, 0}, {"", V, 0}};
    checkPair(np::parseUInt16, np::tryParseUInt16, uint16);
    checkPair(np::parseUShort, np::tryParseUShort, uint16);

    const std::vector<Case<unsigned int>> uint32 = {
        {"4294967295", V, 4294967295u}, {"4294967296", R, 0},        {"-1", V, 4294967295u},
        {"-4294967295", V, 1u},         {"-4294967296", R, 0},       {"18446744073709551616", R, 0},
        {"-18446744073709551615", R, 0}, {" +12", V, 12u},           {"12abc", F, 0}};
    checkPair(np::parseUInt32, np::tryParseUInt32, uint32);
    checkPair(np::parseUInt, np::tryParseUInt, uint32);
    std::vector<Case<unsigned long>> asULong;
    for (const auto& c : uint32)
        asULong.push_back({c.text, c.outcome, c.value});
    // parseULong gives the same 32 bits as a signed long.
    checkPair(+[](const std::string& text) -> unsigned long { return static_cast<std::uint32_t>(np::parseULong(text)); },
              np::tryParseULong, asULong);
}

TEST(NumberParser, SignedResultsOfUnsignedNamesKeepTheBits)
{
    EXPECT_EQ(np::parseUShort("65535"), -1);
    EXPECT_EQ(np::parseUInt("4294967295"), -1);
    EXPECT_EQ(np::parseUInt("-1"), -1);
    EXPECT_EQ(np::parseUInt("2147483648"), INT32_MIN);
}

TEST(NumberParser, SixtyFourBits)
{
    const std::vector<Case<long long>> int64 = {
        {"9223372036854775807", V, INT64_MAX}, {"-9223372036854775808", V, INT64_MIN},
        {"9223372036854775808", R, 0},         {"12abc", F, 0}, {"", V, 0}};
    checkPair(np::parseInt64, np::tryParseInt64, int64);
    const std::vector<Case<unsigned long long>> uint64 = {
        {"18446744073709551615", V, UINT64_MAX}, {"18446744073709551616", R, 0}, {"-1", V, UINT64_MAX}};
    checkPair(np::parseUInt64, np::tryParseUInt64, uint64);
    EXPECT_EQ(np::parseLongLong("-5"), -5);
    EXPECT_EQ(np::parseULongLong("18446744073709551615"), UINT64_MAX);
    expectThrow([] { np::parseLongLong("1 "); }, typeid(std::logic_error), badFormat);
    expectThrow([] { np::parseULongLong("18446744073709551616"); }, typeid(std::range_error), outOfRange);
}

TEST(NumberParser, LongLongNamesStoreWhatTheConversionGave)
{
    long long signedValue = 1;
    EXPECT_FALSE(np::tryParseLongLong("12abc", signedValue));
    EXPECT_EQ(signedValue, 12);
    EXPECT_FALSE(np::tryParseLongLong("9223372036854775808", signedValue));
    EXPECT_EQ(signedValue, INT64_MAX);
    unsigned long long unsignedValue = 1;
    EXPECT_FALSE(np::tryParseULongLong("34 ", unsignedValue));
    EXPECT_EQ(unsignedValue, 34u);
    EXPECT_TRUE(np::tryParseLongLong("-3", signedValue));
    EXPECT_EQ(signedValue, -3);

    int narrow = 1;
    EXPECT_FALSE(np::tryParseInt("42x", narrow));
    EXPECT_EQ(narrow, 1);
}

TEST(NumberParser, OctalAndHexadecimal)
{
    checkPair(np::parseHex, np::tryParseHex,
              {{"ff", V, 255}, {"FF", V, 255}, {"0xff", V, 255}, {"0XFF", V, 255}, {"-1", V, 4294967295ul},
               {"fg", F, 0}, {"0x", F, 0}, {"", V, 0}});
    checkPair(np::parseOct, np::tryParseOct,
              {{"777", V, 511}, {"0777", V, 511}, {"8", F, 0}, {"40000000000", R, 0}, {"37777777777", V, 4294967295ul}});
}

TEST(NumberParser, Floats)
{
    checkPair(np::parseDouble, np::tryParseDouble,
              {{"1.5", V, 1.5}, {" -2.5e3", V, -2500.0}, {"1.5x", F, 0}, {"1e999", R, 0}, {"", V, 0.0}}, true);
    checkPair(np::parseFloat, np::tryParseFloat, {{"0.25", V, 0.25f}, {"1e39", R, 0}, {"1,5", F, 0}}, true);
    checkPair(np::parseLongDouble, np::tryParseLongDouble, {{"0.5", V, 0.5L}, {"half", F, 0}}, true);
    double value = 3;
    EXPECT_FALSE(np::tryParseDouble("1e-400", value)); // underflow is a range report too
    EXPECT_EQ(value, 3);
}

TEST(NumberParser, StaleErrnoPlaysNoPart)
{
    errno = ERANGE;
    EXPECT_EQ(np::parseInt32("5"), 5);
    errno = ERANGE;
    EXPECT_EQ(np::parseUInt32("6"), 6u);
    errno = ERANGE;
    EXPECT_DOUBLE_EQ(np::parseDouble("7.5"), 7.5);
    expectThrow([] { np::parseInt32("2147483648"); }, typeid(std::range_error), outOfRange);
    EXPECT_EQ(np::parseInt32("2147483647"), 2147483647);
}

TEST(NumberParser, Booleans)
{
    for (const char* text : {"TRUE", "Yes", "oN", "1", "2", "-1", " 3"}) {
        EXPECT_TRUE(np::parseBool(text)) << text;
        bool value = false;
        EXPECT_TRUE(np::tryParseBool(text, value)) << text;
        EXPECT_TRUE(value) << text;
    }
    for (const char* text : {"FALSE", "No", "OFF", "0", ""}) {
        EXPECT_FALSE(np::parseBool(text)) << text;
        bool value = true;
        EXPECT_TRUE(np::tryParseBool(text, value)) << text;
        EXPECT_FALSE(value) << text;
    }
    for (const char* text : {"maybe", " true", "true ", "99999999999", "y"}) {
        expectThrow([&] { np::parseBool(text); }, typeid(std::logic_error), badFormat);
        bool value = true;
        EXPECT_FALSE(np::tryParseBool(text, value)) << text;
        EXPECT_TRUE(value) << text;
    }
}
