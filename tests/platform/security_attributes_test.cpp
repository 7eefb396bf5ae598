#include <ovo/win32/security_attributes.h>

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using ovo::win32::SECURITY_ATTRIBUTES;
using ovo::win32::SecurityAttributes;
using Bytes = std::vector<std::uint8_t>;

// The descriptor as the platform lays it out (absolute form): a header, then pointers.
struct DescriptorView {
    std::uint8_t revision, sbz1;
    std::uint16_t control;
    const void *owner, *group, *sacl;
    const std::uint8_t* dacl;
};

const DescriptorView& descriptorOf(SecurityAttributes& attributes)
{
    return *static_cast<const DescriptorView*>(static_cast<SECURITY_ATTRIBUTES*>(attributes)->lpSecurityDescriptor);
}

// The access list's one entry, byte for byte: type, flags, size, mask, the identifier.
Bytes onlyEntryOf(SecurityAttributes& attributes)
{
    const std::uint8_t* acl = descriptorOf(attributes).dacl;
    EXPECT_EQ(acl[0], 2) << "list revision";
    EXPECT_EQ(acl[4] | acl[5] << 8, 1) << "entries";
    const std::uint8_t* entry = acl + 8;
    return Bytes(entry, entry + (entry[2] | entry[3] << 8));
}

// An allowing entry, not inherited, for an identifier of revision 1 under the authority
// 0.0.0.0.0.authority.
Bytes allowingEntry(std::uint32_t mask, std::uint8_t authority, const std::vector<std::uint32_t>& subAuthorities)
{
    const auto count = static_cast<std::uint8_t>(subAuthorities.size());
    Bytes entry{0, 0, static_cast<std::uint8_t>(16 + 4 * count), 0};
    auto append = [&entry](std::uint32_t word) {
        for (int shift = 0; shift < 32; shift += 8)
            entry.push_back(static_cast<std::uint8_t>(word >> shift));
    };
    append(mask);
    entry.insert(entry.end(), {1, count, 0, 0, 0, 0, 0, authority});
    for (std::uint32_t part : subAuthorities)
        append(part);
    return entry;
}

TEST(SecurityAttributesTest, TheRecordHoldsADescriptorWithOneEntryForTheGroup)
{
    const struct {
        int kind;
        std::uint32_t mask;
        Bytes entry;
    } cases[] = {
        {SecurityAttributes::SA_World, 0x2001F, allowingEntry(0x2001F, 1, {0})},
        {SecurityAttributes::SA_Admin, 0x1F0001, allowingEntry(0x1F0001, 5, {32, 544})},
        {7, 0x1, allowingEntry(0x1, 5, {32, 544})}, // any kind but 0: the administrators
    };
    for (const auto& c : cases) {
        SecurityAttributes attributes(static_cast<SecurityAttributes::SA_Predefined>(c.kind), c.mask);
        const SECURITY_ATTRIBUTES* record = attributes;
        EXPECT_EQ(record->nLength, sizeof(SECURITY_ATTRIBUTES)); // 12 on 32-bit Windows
        EXPECT_EQ(record->bInheritHandle, 0);
        const DescriptorView& descriptor = descriptorOf(attributes);
        EXPECT_EQ(descriptor.revision, 1);
        EXPECT_EQ(descriptor.control, 0x0004) << "a list, present and not defaulted, and nothing else";
        EXPECT_TRUE(!descriptor.owner && !descriptor.group && !descriptor.sacl) << "no owner, group or audit list";
        ASSERT_NE(descriptor.dacl, nullptr);
        EXPECT_EQ(onlyEntryOf(attributes), c.entry) << c.kind << " " << c.mask;
        const auto *object = reinterpret_cast<const char*>(&attributes), *at = reinterpret_cast<const char*>(record);
        EXPECT_TRUE(at >= object && at < object + sizeof attributes) << "the record lives in the object";
    }
}

// Assigned copies name one set; it is released once, by the last holder, in any order
// (the sanitizer build finds a double or a missing release).
TEST(SecurityAttributesTest, AssignedCopiesReleaseTheirSetOnce)
{
    const Bytes worldEntry = allowingEntry(0x100000, 1, {0});
    for (int firstGone = 0; firstGone < 3; ++firstGone) {
        SecurityAttributes* holders[3] = {new SecurityAttributes(SecurityAttributes::SA_World, 0x100000),
                                          new SecurityAttributes(SecurityAttributes::SA_Admin, 0x1),
                                          new SecurityAttributes(SecurityAttributes::SA_Admin, 0x2)};
        *holders[1] = *holders[0];
        *holders[2] = *holders[1];
        *holders[2] = *holders[2];
        *holders[1] = *holders[0]; // the same set again
        delete holders[firstGone];
        for (int i = 0; i < 3; ++i)
            if (i != firstGone) {
                EXPECT_EQ(onlyEntryOf(*holders[i]), worldEntry); // still there for the others
                delete holders[i];
            }
    }
}

#if !defined(_WIN32) || defined(_WIN64)
TEST(IsWow64Test, ANativeProcessIsNotUnderWow64) { EXPECT_FALSE(ovo::win32::IsWow64()); }
#endif

} // namespace
