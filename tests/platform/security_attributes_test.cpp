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

// Allowing entries, not inherited: type, flags, size, the mask (little-endian), then the
// identifier: revision 1, its count of parts, the authority 0.0.0.0.0.N, the parts.
const Bytes worldEntry = {0, 0, 20, 0, 0x1F, 0, 2, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
const Bytes adminsEntry = {0, 0, 24, 0, 1, 0, 0x1F, 0, 1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0};

TEST(SecurityAttributesTest, TheRecordHoldsADescriptorWithOneEntryForTheGroup)
{
    const struct {
        int kind;
        std::uint32_t mask;
        Bytes entry;
    } cases[] = {
        {SecurityAttributes::SA_World, 0x2001F, worldEntry},
        {SecurityAttributes::SA_Admin, 0x1F0001, adminsEntry},
        {7, 0x1F0001, adminsEntry}, // any kind but 0: the administrators
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
    for (int firstGone = 0; firstGone < 3; ++firstGone) {
        SecurityAttributes* holders[3] = {new SecurityAttributes(SecurityAttributes::SA_World, 0x2001F),
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
