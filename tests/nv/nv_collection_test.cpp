#include <ovo/nv_collection.h>
#include <ovo/strings.h>

#include "support/failure_of.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <vector>

using ovo_test::failureOf;
using Pairs = std::vector<std::pair<std::string, std::string>>;

namespace {

Pairs entriesOf(const ovo::nvCollection& c) { return Pairs(c.begin(), c.end()); }

Pairs loaded(const std::string& text, const std::string& pairSeparator = ";", const std::string& nvSeparator = "=")
{
    return entriesOf(ovo::nvCollection(text, pairSeparator, nvSeparator));
}

const char* const notFound = "key 'baud' not found in nvCollection";
const char* const badFormat = "NumebrParser - bad format";
const char* const outOfRange = "NumberParser - out of range";

} // namespace

TEST(NvCollection, OneEntryPerNameInByteOrder)
{
    ovo::nvCollection c;
    EXPECT_EQ(c.begin(), c.end());
    for (const char* name : {"b", "a", "A", "", "a"})
        c.setString(name, std::string("v") + name);
    EXPECT_EQ(entriesOf(c), (Pairs{{"", "v"}, {"A", "vA"}, {"a", "va"}, {"b", "vb"}}));
    EXPECT_EQ(c.size(), 4u);
    EXPECT_TRUE(c.has("A"));
    EXPECT_FALSE(c.has("B"));
}

TEST(NvCollection, TypedWritesStoreTheirTextAndReadBack)
{
    ovo::nvCollection c;
    c.setBool("t", true);
    c.setBool("f", false);
    c.setInt("int", INT_MIN);
    c.setLong("long", INT_MAX);
    c.setShort("short", -1);
    c.setUInt("uint", UINT_MAX);
    c.setULong("ulong", 4294967295ul);
    c.setUShort("ushort", 65535);
    EXPECT_EQ(entriesOf(c), (Pairs{{"f", "no"}, {"int", "-2147483648"}, {"long", "2147483647"}, {"short", "-1"},
                                   {"t", "yes"}, {"uint", "4294967295"}, {"ulong", "4294967295"}, {"ushort", "65535"}}));
    EXPECT_EQ(ovo::format("%d %ld %d %u %u", c.getBool("f", true), c.getLong("long"), c.getShort("short"),
                          c.getUInt("uint"), c.getUShort("ushort")),
              "0 2147483647 -1 4294967295 65535");
}

TEST(NvCollection, ReadsFailWithoutDefaultAndFallBackWithOne)
{
    const ovo::nvCollection c("flag=yes;wide=70000;big=2147483648;huge=4294967296;empty=;on=on;Baud=1", ";", "=");
    EXPECT_EQ(failureOf([&] { c.getInt("baud"); }, typeid(std::runtime_error)), notFound);
    EXPECT_EQ(failureOf([&] { c.getInt("flag"); }, typeid(std::logic_error)), badFormat);
    EXPECT_EQ(failureOf([&] { c.getShort("wide"); }, typeid(std::range_error)), outOfRange);
    EXPECT_EQ(failureOf([&] { c.getString("baud"); }, typeid(std::runtime_error)), notFound);
    EXPECT_EQ(failureOf([&] { c.getLong("big"); }, typeid(std::range_error)), outOfRange);
    EXPECT_EQ(c.getULong("big"), 2147483648ul);
    EXPECT_EQ(c.getInt("wide"), 70000);

    EXPECT_EQ(ovo::format("%d %d %d %u %ld %lu %u", c.getInt("baud", 7), c.getInt("flag", 11), c.getShort("wide", 5),
                          c.getUShort("wide", 6), c.getLong("big", 3L), c.getULong("huge", 9ul), c.getUInt("huge", 8u)),
              "7 11 5 6 3 9 8");
    EXPECT_TRUE(c.getBool("on"));
    EXPECT_TRUE(c.getBool("missing", true));
    EXPECT_EQ(c.getString("missing", "default"), "default");
    // The empty text is the number 0, with or without a default, and a value of its own.
    EXPECT_EQ(c.getInt("empty"), 0);
    EXPECT_EQ(c.getUInt("empty", 9), 0u);
    EXPECT_FALSE(c.getBool("empty", true));
    EXPECT_EQ(c.getString("empty", "default"), "");
    EXPECT_FALSE(c.has("baud")) << "a read never inserts";
}

TEST(NvCollection, CopiesAreDeepAndMovesEmptyTheSource)
{
    ovo::nvCollection original("a=1", ";", "=");
    ovo::nvCollection copy(original);
    copy.setString("a", "2");
    ovo::nvCollection target("old=gone", ";", "=");
    target = copy;
    target.setString("b", "3");
    EXPECT_EQ(entriesOf(original), (Pairs{{"a", "1"}}));
    EXPECT_EQ(entriesOf(copy), (Pairs{{"a", "2"}}));

    ovo::nvCollection moved(std::move(target));
    EXPECT_EQ(target.size(), 0u); // NOLINT: a moved-from collection is valid and empty
    target = std::move(moved);
    EXPECT_EQ(moved.size(), 0u); // NOLINT
    ovo::nvCollection& alias = target;
    target = alias;
    target = std::move(alias);
    EXPECT_EQ(entriesOf(target), (Pairs{{"a", "2"}, {"b", "3"}}));
}

TEST(NvText, LoadCutsPairsThenNameAndValueWhateverTheSeparators)
{
    const struct {
        std::string text;
        Pairs entries;
    } cases[] = {{"", {}},
                 {"b=2;a=1", {{"a", "1"}, {"b", "2"}}},
                 {";a=1;;b=2;", {{"a", "1"}, {"b", "2"}}},
                 {"a=1;a=2", {{"a", "2"}}},
                 {"a=b=c", {{"a", "b=c"}}},
                 {"a=", {{"a", ""}}},
                 {"=v", {{"", "v"}}},
                 {"a", {}},
                 {"a;b=2", {{"a", ""}, {"b", "2"}}},
                 {"x;y", {{"x", ""}}},
                 {"x;y;", {{"x", ""}, {"y", ""}}},
                 {" a\n= 1\r", {{" a\n", " 1\r"}}}};
    for (const auto& c : cases)
        EXPECT_EQ(loaded(c.text), c.entries) << "text [" << c.text << "]";

    ovo::nvCollection c("a=1;c=3", ";", "=");
    c.load("a=2;b=5", ";", "=");
    EXPECT_EQ(entriesOf(c), (Pairs{{"a", "2"}, {"b", "5"}, {"c", "3"}}));

    // Separators of other lengths, equal or empty.
    EXPECT_EQ(loaded("a: 1, b: 2", ", ", ": "), (Pairs{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(loaded("a;b;c", ";", ";"), Pairs{}) << "equal separators add nothing";
    EXPECT_EQ(loaded("ab;cd", ";", ""), (Pairs{{"", "cd"}})) << "empty name-value separator";
    // An empty pair separator: the whole text is one piece, at most one pair.
    EXPECT_EQ(loaded("a=1;b=2", "", "="), (Pairs{{"a", "1;b=2"}}));
    // A name-value separator that starts inside a piece and reaches past it leaves an
    // empty value instead of running into the rest of the text.
    EXPECT_EQ(loaded("a=;bcdef", ";", "=;"), (Pairs{{"a", ""}}));
    EXPECT_EQ(loaded("name:=;=x;", ";", "=;="), (Pairs{{"=x", ""}, {"name:", ""}}));
}

TEST(NvText, ToStringRendersSortedPairsThatLoadBack)
{
    EXPECT_EQ(ovo::nvCollection().toString(";", "="), "");
    EXPECT_EQ(ovo::nvCollection("only=", ";", "=").toString(";", "="), "only=");

    ovo::nvCollection c("z=last;device=COM1;spaced= x y ;withEquals=a=b;empty=", ";", "=");
    EXPECT_EQ(c.toString(", ", ": "), "device: COM1, empty: , spaced:  x y , withEquals: a=b, z: last");
    EXPECT_EQ(loaded(c.toString(";", "=")), entriesOf(c));

    c.setString("a", std::string("cut\0here", 8));
    c.setString(std::string("n\0x", 3), "v");
    EXPECT_EQ(c.toString("|", "="), "a=cut|device=COM1|empty=|n=v|spaced= x y |withEquals=a=b|z=last");
}
