#include <ovo/number_parser.h>

#include "support/failure_of.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <stdexcept>

namespace np = ovo::NumberParser;
using ovo_test::failureOf;

namespace {

const char* const badFormat = "NumebrParser - bad format";
const char* const outOfRange = "NumberParser - out of range";

// One parse/tryParse pair on one text. `expected` is the value's decimal text, "F" for a
// bad format or "R" for out of range. A failing tryParse leaves its value alone unless
// `storesOnFailure`; the float family throws runtime_error for both failures.
template <typename Parsed, typename T>
void check(Parsed (*parse)(const std::string&), bool (*tryParse)(const std::string&, T&), const std::string& text,
           const std::string& expected, bool storesOnFailure = false, bool floating = false)
{
    T stored = 42;
    errno = ERANGE; // left over from earlier calls: it must play no part
    const bool ok = tryParse(text, stored);
    if (expected == "F" || expected == "R") {
        const bool bad = expected == "F";
        const std::type_info& type =
            floating ? typeid(std::runtime_error) : bad ? typeid(std::logic_error) : typeid(std::range_error);
        EXPECT_EQ(failureOf([&] { parse(text); }, type), bad ? badFormat : outOfRange);
        EXPECT_FALSE(ok);
        EXPECT_EQ(stored, storesOnFailure ? stored : T(42));
    } else {
        EXPECT_TRUE(ok);
        EXPECT_EQ(static_cast<T>(parse(text)), stored); // unsigned bits of signed results
        if (floating)
            EXPECT_EQ(stored, static_cast<T>(std::stold(expected)));
        else
            EXPECT_EQ(std::to_string(stored), expected);
    }
}

using Column = std::function<void(const std::string& text, const std::string& expected)>;

#define PAIR(name, ...) check(np::parse##name, np::tryParse##name, t, e, ##__VA_ARGS__)

// Every name of one width, or of one base.
const Column columns[] = {
    [](auto& t, auto& e) { PAIR(Int8); },
    [](auto& t, auto& e) { PAIR(Int16), PAIR(Short); },
    [](auto& t, auto& e) { PAIR(Int32), PAIR(Int), PAIR(Long); },
    [](auto& t, auto& e) { PAIR(Int64), PAIR(LongLong, true); },
    [](auto& t, auto& e) { PAIR(UInt8); },
    [](auto& t, auto& e) { PAIR(UInt16), PAIR(UShort); },
    [](auto& t, auto& e) {
        PAIR(UInt32), PAIR(UInt);
        check(+[](const std::string& s) -> unsigned long { return static_cast<std::uint32_t>(np::parseULong(s)); },
              np::tryParseULong, t, e);
    },
    [](auto& t, auto& e) { PAIR(UInt64), PAIR(ULongLong, true); },
    [](auto& t, auto& e) { PAIR(Hex); },
    [](auto& t, auto& e) { PAIR(Oct); },
};

struct Row {
    std::string text;
    const char* expected[10]; // int8 int16 int32 int64 uint8 uint16 uint32 uint64 hex oct
};

const Row rows[] = {
    {"", {"0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}},
    {" \t+42", {"42", "42", "42", "42", "42", "42", "42", "42", "66", "34"}},
    {"010", {"10", "10", "10", "10", "10", "10", "10", "10", "16", "8"}},
    {" -42", {"-42", "-42", "-42", "-42", "R", "R", "4294967254", "18446744073709551574", "4294967230", "4294967262"}},
    {"42 ", {"F", "F", "F", "F", "F", "F", "F", "F", "F", "F"}},
    {"1:", {"F", "F", "F", "F", "F", "F", "F", "F", "F", "F"}},
    {" ", {"F", "F", "F", "F", "F", "F", "F", "F", "F", "F"}},
    {std::string("1\0", 2), {"F", "F", "F", "F", "F", "F", "F", "F", "F", "F"}},
    {"0x10", {"F", "F", "F", "F", "F", "F", "F", "F", "16", "F"}},
    {"0XfF", {"F", "F", "F", "F", "F", "F", "F", "F", "255", "F"}},
    {"0x", {"F", "F", "F", "F", "F", "F", "F", "F", "F", "F"}},
    {"8", {"8", "8", "8", "8", "8", "8", "8", "8", "8", "F"}},
    {"128", {"R", "128", "128", "128", "128", "128", "128", "128", "296", "F"}},
    {"256", {"R", "256", "256", "256", "R", "256", "256", "256", "598", "174"}},
    {"32768", {"R", "R", "32768", "32768", "R", "32768", "32768", "32768", "206696", "F"}},
    {"65536", {"R", "R", "65536", "65536", "R", "R", "65536", "65536", "415030", "27486"}},
    {"2147483647", {"R", "R", "2147483647", "2147483647", "R", "R", "2147483647", "2147483647", "R", "F"}},
    {"2147483648", {"R", "R", "R", "2147483648", "R", "R", "2147483648", "2147483648", "R", "F"}},
    {"-2147483648", {"R", "R", "-2147483648", "-2147483648", "R", "R", "2147483648", "18446744071562067968", "R", "F"}},
    {"-2147483649", {"R", "R", "R", "-2147483649", "R", "R", "2147483647", "18446744071562067967", "R", "F"}},
    {"4294967295", {"R", "R", "R", "4294967295", "R", "R", "4294967295", "4294967295", "R", "F"}},
    {"4294967296", {"R", "R", "R", "4294967296", "R", "R", "R", "4294967296", "R", "F"}},
    {"-4294967295", {"R", "R", "R", "-4294967295", "1", "1", "1", "18446744069414584321", "R", "F"}},
    {"-4294967296", {"R", "R", "R", "-4294967296", "R", "R", "R", "18446744069414584320", "R", "F"}},
    {"37777777777", {"R", "R", "R", "37777777777", "R", "R", "R", "37777777777", "R", "4294967295"}},
    {"40000000000", {"R", "R", "R", "40000000000", "R", "R", "R", "40000000000", "R", "R"}},
    {"FFFFFFFF", {"F", "F", "F", "F", "F", "F", "F", "F", "4294967295", "F"}},
    {"9223372036854775807", {"R", "R", "R", "9223372036854775807", "R", "R", "R", "9223372036854775807", "R", "F"}},
    {"9223372036854775808", {"R", "R", "R", "R", "R", "R", "R", "9223372036854775808", "R", "F"}},
    {"-9223372036854775808", {"R", "R", "R", "-9223372036854775808", "R", "R", "R", "9223372036854775808", "R", "F"}},
    {"18446744073709551615", {"R", "R", "R", "R", "R", "R", "R", "18446744073709551615", "R", "F"}},
    {"18446744073709551658", {"R", "R", "R", "R", "R", "R", "R", "R", "R", "F"}}, // 2^64 + 42
};

} // namespace

TEST(NumberParser, EveryIntegerNameOnEveryText)
{
    for (const Row& row : rows)
        for (std::size_t column = 0; column < std::size(columns); ++column) {
            SCOPED_TRACE("text [" + row.text + "] column " + std::to_string(column));
            columns[column](row.text, row.expected[column]);
        }
    EXPECT_EQ(np::parseULong("4294967295"), -1L) << "a 32-bit long, whatever the platform's width";
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
}

TEST(NumberParser, Floats)
{
    const struct {
        std::string text, asDouble, asFloat, asLongDouble;
    } cases[] = {{"1.5", "1.5", "1.5", "1.5"},         {" -2.5e3", "-2500", "-2500", "-2500"},
                 {"", "0", "0", "0"},                  {"1.5x", "F", "F", "F"},
                 {"1,5", "F", "F", "F"},               {"0x1p200", "0x1p200", "R", "0x1p200"},
                 {"1e999", "R", "R", "1e999"},         {"1e-400", "R", "R", "1e-400"}};
    for (const auto& c : cases) {
        SCOPED_TRACE("text [" + c.text + "]");
        check(np::parseDouble, np::tryParseDouble, c.text, c.asDouble, false, true);
        check(np::parseFloat, np::tryParseFloat, c.text, c.asFloat, false, true);
        check(np::parseLongDouble, np::tryParseLongDouble, c.text, c.asLongDouble, false, true);
    }
}

TEST(NumberParser, Booleans)
{
    const struct {
        const char* text;
        const char* expected; // "1", "0" or "F"
    } cases[] = {{"TRUE", "1"},  {"Yes", "1"}, {"oN", "1"},  {"1", "1"},   {"2", "1"},     {"-1", "1"},     {" 3", "1"},
                 {"FALSE", "0"}, {"No", "0"},  {"OFF", "0"}, {"0", "0"},   {"", "0"},      {"maybe", "F"}, {" true", "F"},
                 {"true ", "F"}, {"y", "F"},   {"99999999999", "F"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        check(+[](const std::string& t) { return static_cast<int>(np::parseBool(t)); },
              +[](const std::string& t, bool& v) { return np::tryParseBool(t, v); }, c.text, c.expected);
    }
}
