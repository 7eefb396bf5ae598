#include <ovo/nv_collection.h>

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

using Pairs = std::vector<std::pair<std::string, std::string>>;

namespace {

Pairs entriesOf(const ovo::nvCollection& c) { return Pairs(c.begin(), c.end()); }

template <typename Call>
void expectFailure(Call call, const std::type_info& type, const std::string& message)
{
    try {
        call();
        ADD_FAILURE() << "no exception";
    } catch (const std::exception& e) {
        EXPECT_EQ(typeid(e), type);
        EXPECT_EQ(e.what(), message);
    }
}

} // namespace

TEST(NvCollection, IteratesInNameOrderAndKeepsOneEntryPerName)
{
    ovo::nvCollection c;
    EXPECT_EQ(c.begin(), c.end());
    c.setString("b", "2");
    c.setString("a", "1");
    c.setString("A", "upper");
    c.setString("", "empty name");
    EXPECT_EQ(entriesOf(c), (Pairs{{"", "empty name"}, {"A", "upper"}, {"a", "1"}, {"b", "2"}}));
    c.setString("a", "one");
    EXPECT_EQ(c.size(), 4u);
    EXPECT_EQ(entriesOf(c)[2], (std::pair<std::string, std::string>{"a", "one"}));
}

TEST(NvCollection, NamesMatchExactly)
{
    ovo::nvCollection c;
    c.setString("Baud", "9600");
    EXPECT_TRUE(c.has("Baud"));
    EXPECT_FALSE(c.has("baud"));
    expectFailure([&] { c.getString("baud"); }, typeid(std::runtime_error), "key 'baud' not found in nvCollection");
    expectFailure([&] { c.getInt("baud"); }, typeid(std::runtime_error), "key 'baud' not found in nvCollection");
    EXPECT_EQ(c.getInt("baud", 7), 7);
    EXPECT_FALSE(c.has("baud")) << "a read never inserts";
}

TEST(NvCollection, TypedWritesStoreTheirText)
{
    ovo::nvCollection c;
    c.setBool("t", true);
    c.setBool("f", false);
    c.setInt("int", INT_MIN);
    c.setLong("long", -5);
    c.setShort("short", -1);
    c.setUInt("uint", UINT_MAX);
    c.setULong("ulong", 4294967295ul);
    c.setUShort("ushort", 65535);
    EXPECT_EQ(entriesOf(c), (Pairs{{"f", "no"},
                                   {"int", "-2147483648"},
                                   {"long", "-5"},
                                   {"short", "-1"},
                                   {"t", "yes"},
                                   {"uint", "4294967295"},
                                   {"ulong", "4294967295"},
                                   {"ushort", "65535"}}));
    EXPECT_TRUE(c.getBool("t"));
    EXPECT_FALSE(c.getBool("f"));
    EXPECT_EQ(c.getInt("int"), INT_MIN);
    EXPECT_EQ(c.getLong("long"), -5);
    EXPECT_EQ(c.getShort("short"), -1);
    EXPECT_EQ(c.getUInt("uint"), UINT_MAX);
    EXPECT_EQ(c.getULong("ulong"), 4294967295ul);
    EXPECT_EQ(c.getUShort("ushort"), 65535);
}

TEST(NvCollection, LongsCarryThirtyTwoBitsEverywhere)
{
    ovo::nvCollection c;
    c.setLong("l", static_cast<long>(INT_MAX));
    EXPECT_EQ(c.getString("l"), "2147483647");
    c.setString("big", "2147483648");
    expectFailure([&] { c.getLong("big"); }, typeid(std::range_error), "NumberParser - out of range");
    EXPECT_EQ(c.getLong("big", 3L), 3L);
    c.setString("huge", "4294967296");
    EXPECT_EQ(c.getULong("huge", 9ul), 9ul);
    EXPECT_EQ(c.getULong("big"), 2147483648ul);
}

TEST(NvCollection, TypedReadsFailOrFallBack)
{
    ovo::nvCollection c;
    c.setBool("flag", true);
    c.setString("wide", "70000");
    c.setString("empty", "");
    c.setString("on", "on");

    expectFailure([&] { c.getInt("flag"); }, typeid(std::logic_error), "NumebrParser - bad format");
    EXPECT_EQ(c.getInt("flag", 11), 11);
    expectFailure([&] { c.getShort("wide"); }, typeid(std::range_error), "NumberParser - out of range");
    EXPECT_EQ(c.getShort("wide", 5), 5);
    EXPECT_EQ(c.getInt("wide"), 70000);
    EXPECT_EQ(c.getUShort("wide", 6), 6);
    EXPECT_TRUE(c.getBool("on"));
    EXPECT_FALSE(c.getBool("missing", false));
    EXPECT_TRUE(c.getBool("missing", true));

    // The empty text is the number 0, with or without a default.
    EXPECT_EQ(c.getInt("empty"), 0);
    EXPECT_EQ(c.getInt("empty", 9), 0);
    EXPECT_EQ(c.getUInt("empty", 9), 0u);
    EXPECT_FALSE(c.getBool("empty", true));
    EXPECT_EQ(c.getString("empty", "default"), "");
    EXPECT_EQ(c.getString("missing", "default"), "default");
    EXPECT_EQ(c.getString("flag"), "yes");
}

TEST(NvCollection, CopiesAreDeepAndMovesEmptyTheSource)
{
    ovo::nvCollection original;
    original.setString("a", "1");
    ovo::nvCollection copy(original);
    copy.setString("a", "2");
    original.setString("b", "3");
    EXPECT_EQ(entriesOf(original), (Pairs{{"a", "1"}, {"b", "3"}}));
    EXPECT_EQ(entriesOf(copy), (Pairs{{"a", "2"}}));

    ovo::nvCollection moved(std::move(original));
    EXPECT_EQ(original.size(), 0u); // NOLINT: a moved-from collection is valid and empty
    original.setString("again", "x");
    EXPECT_EQ(original.size(), 1u);
    EXPECT_EQ(moved.size(), 2u);

    ovo::nvCollection target;
    target.setString("old", "gone");
    target = copy;
    EXPECT_EQ(entriesOf(target), (Pairs{{"a", "2"}}));
    target = std::move(moved);
    EXPECT_EQ(entriesOf(target), (Pairs{{"a", "1"}, {"b", "3"}}));
    EXPECT_EQ(moved.size(), 0u); // NOLINT

    ovo::nvCollection& alias = target;
    target = alias;
    target = std::move(alias);
    EXPECT_EQ(entriesOf(target), (Pairs{{"a", "1"}, {"b", "3"}}));
}
