#include <ovo/io/apdu.h>

#include <gtest/gtest.h>

using ovo::io::apdu;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes bytesOf(const apdu& unit) { return unit.raw() ? Bytes(unit.raw(), unit.raw() + unit.size()) : Bytes{}; }

} // namespace

TEST(Apdu, CommandFormsLayDownTheirBytes)
{
    const unsigned char data[] = {0xAA, 0xBB};
    EXPECT_EQ(bytesOf(apdu(0x00, 0xA4, 0x04, 0x00)), (Bytes{0x00, 0xA4, 0x04, 0x00}));
    EXPECT_EQ(bytesOf(apdu(0x00, 0xB0, 0x00, 0x00, 0x10)), (Bytes{0x00, 0xB0, 0x00, 0x00, 0x10}));
    EXPECT_EQ(bytesOf(apdu(0x00, 0xD6, 0x00, 0x00, 2, data)), (Bytes{0x00, 0xD6, 0x00, 0x00, 0x02, 0xAA, 0xBB}));
    EXPECT_EQ(bytesOf(apdu(0x00, 0xD6, 0x00, 0x00, 2, data, 0)),
              (Bytes{0x00, 0xD6, 0x00, 0x00, 0x02, 0xAA, 0xBB, 0x00}));
    EXPECT_EQ(bytesOf(apdu(0x80, 0x01, 0x02, 0x03, 0, nullptr)), (Bytes{0x80, 0x01, 0x02, 0x03, 0x00}));
    EXPECT_EQ(bytesOf(apdu(0x80, 0x01, 0x02, 0x03, 0, nullptr, 0x20)), (Bytes{0x80, 0x01, 0x02, 0x03, 0x00, 0x20}));
    Bytes longest{0, 0, 0, 0, 255};
    longest.insert(longest.end(), 255, 0x5A);
    EXPECT_EQ(bytesOf(apdu(0, 0, 0, 0, 255, longest.data() + 5)), longest);
    longest.push_back(0x00);
    EXPECT_EQ(bytesOf(apdu(0, 0, 0, 0, 255, longest.data() + 5, 0)), longest);
}

// Every query works on whatever bytes a unit holds, command or response.
TEST(Apdu, TheStatusIsTheLastTwoBytesAndOnly90IsSuccess)
{
    const struct {
        Bytes bytes;
        unsigned char sw1, sw2;
        bool success;
    } cases[] = {
        {{}, 0, 0, false},
        {{0x90}, 0, 0, false},
        {{0x90, 0x00}, 0x90, 0x00, true},
        {{0x90, 0xFF}, 0x90, 0xFF, true},
        {{0x91, 0x00}, 0x91, 0x00, false},
        {{0x01, 0x02, 0x03, 0x90, 0x00}, 0x90, 0x00, true},
    };
    for (const auto& c : cases) {
        const apdu unit = apdu::fromBuffer(c.bytes.data(), static_cast<unsigned int>(c.bytes.size()));
        EXPECT_EQ(std::make_tuple(bytesOf(unit), unit.sw1(), unit.sw2(), unit.isSuccess()),
                  std::make_tuple(c.bytes, c.sw1, c.sw2, c.success));
    }
    EXPECT_EQ(apdu::fromBuffer(nullptr, 0).raw(), nullptr);
}

TEST(Apdu, CopiesOwnTheirBytesAndMovesEmptyTheSource)
{
    const unsigned char bytes[] = {1, 2, 3, 0x90, 0x00};
    apdu original = apdu::fromBuffer(bytes, 5);
    apdu copy(original);
    EXPECT_NE(copy.raw(), original.raw());
    apdu moved(std::move(original));
    EXPECT_EQ(original.raw(), nullptr); // NOLINT: the moved-from unit is empty
    copy = apdu::fromBuffer(nullptr, 0);
    EXPECT_EQ(copy.raw(), nullptr) << "an empty source empties the target";
    copy = std::move(moved);
    EXPECT_EQ(moved.size(), 0u); // NOLINT
    apdu& alias = copy;
    copy = alias;
    copy = std::move(alias);
    EXPECT_EQ(bytesOf(copy), Bytes(bytes, bytes + 5));
}
