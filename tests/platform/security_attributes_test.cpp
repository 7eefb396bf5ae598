#include <ovo/win32/security_attributes.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using ovo::win32::SECURITY_ATTRIBUTES;
using ovo::win32::SecurityAttributes;

// The records as Windows lays them out (an absolute descriptor), read byte by byte.
struct DescriptorView {
    std::uint8_t revision;
    std::uint8_t sbz1;
    std::uint16_t control;
    void* owner;
    void* group;
    void* sacl;
    void* dacl;
};

struct Entry {
    std::uint8_t aceType;
    std::uint32_t mask;
    std::vector<std::uint8_t> authority;
    std::vector<std::uint32_t> subAuthorities;
};

// The descriptor's one entry, as found in its access list.
Entry onlyEntry(SECURITY_ATTRIBUTES* record, std::uint16_t& aceCount)
{
    const auto* descriptor = static_cast<const DescriptorView*>(record->lpSecurityDescriptor);
    const auto* acl = static_cast<const std::uint8_t*>(descriptor->dacl);
    std::memcpy(&aceCount, acl + 4, 2);
    const std::uint8_t* ace = acl + 8;
    Entry entry;
    entry.aceType = ace[0];
    std::memcpy(&entry.mask, ace + 4, 4);
    const std::uint8_t* sid = ace + 8;
    entry.authority.assign(sid + 2, sid + 8);
    for (std::uint8_t i = 0; i < sid[1]; ++i) {
        std::uint32_t sub;
        std::memcpy(&sub, sid + 8 + 4 * i, 4);
        entry.subAuthorities.push_back(sub);
    }
    return entry;
}

struct Kind {
    SecurityAttributes::SA_Predefined kind;
    unsigned long mask;
    std::vector<std::uint8_t> authority;
    std::vector<std::uint32_t> subAuthorities;
};

TEST(SecurityAttributesTest, TheRecordHoldsOneEntryForTheGroup)
{
    const Kind kinds[] = {
        {SecurityAttributes::SA_World, 0x100000, {0, 0, 0, 0, 0, 1}, {0}},
        {SecurityAttributes::SA_World, 0x2001F, {0, 0, 0, 0, 0, 1}, {0}},
        {SecurityAttributes::SA_Admin, 0x1F0001, {0, 0, 0, 0, 0, 5}, {32, 544}},
        {static_cast<SecurityAttributes::SA_Predefined>(7), 0x1, {0, 0, 0, 0, 0, 5}, {32, 544}}, // not 0: administrators
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.mask);
        SecurityAttributes attributes(kind.kind, kind.mask);
        SECURITY_ATTRIBUTES* record = attributes;
        EXPECT_EQ(record->nLength, sizeof(SECURITY_ATTRIBUTES)); // 12 on 32-bit Windows
        EXPECT_EQ(record->bInheritHandle, 0);
        ASSERT_NE(record->lpSecurityDescriptor, nullptr);
        const auto* descriptor = static_cast<const DescriptorView*>(record->lpSecurityDescriptor);
        EXPECT_EQ(descriptor->revision, 1);
        EXPECT_NE(descriptor->control & 0x0004, 0); // an access list is present
        EXPECT_EQ(descriptor->owner, nullptr);
        EXPECT_EQ(descriptor->group, nullptr);
        ASSERT_NE(descriptor->dacl, nullptr);
        std::uint16_t aceCount = 0;
        const Entry entry = onlyEntry(record, aceCount);
        EXPECT_EQ(aceCount, 1);
        EXPECT_EQ(entry.aceType, 0); // allowing
        EXPECT_EQ(entry.mask, kind.mask);
        EXPECT_EQ(entry.authority, kind.authority);
        EXPECT_EQ(entry.subAuthorities, kind.subAuthorities);
    }
}

TEST(SecurityAttributesTest, TheRecordLivesInTheObject)
{
    SecurityAttributes attributes(SecurityAttributes::SA_World, 0x100000);
    SECURITY_ATTRIBUTES* record = attributes;
    const auto* object = reinterpret_cast<const char*>(&attributes);
    EXPECT_GE(reinterpret_cast<const char*>(record), object);
    EXPECT_LT(reinterpret_cast<const char*>(record), object + sizeof attributes);
}

// Copies name one set of records; each is released once whatever the order (the
// sanitizer build finds a double or a missing release).
TEST(SecurityAttributesTest, AssignedCopiesReleaseEachRecordOnce)
{
    for (int order = 0; order < 2; ++order) {
        auto* source = new SecurityAttributes(SecurityAttributes::SA_World, 0x100000);
        auto* target = new SecurityAttributes(SecurityAttributes::SA_Admin, 0x1);
        auto* third = new SecurityAttributes(SecurityAttributes::SA_Admin, 0x2);
        *target = *source;
        *third = *target;
        *third = *third;
        *target = *source; // the same set again
        EXPECT_EQ(static_cast<SECURITY_ATTRIBUTES*>(*target)->lpSecurityDescriptor,
                  static_cast<SECURITY_ATTRIBUTES*>(*source)->lpSecurityDescriptor);
        std::uint16_t aceCount = 0;
        if (order == 0) {
            delete source;
            EXPECT_EQ(onlyEntry(*target, aceCount).mask, 0x100000u); // still there for the others
            delete target;
            EXPECT_EQ(onlyEntry(*third, aceCount).mask, 0x100000u);
            delete third;
        } else {
            delete third;
            delete target;
            EXPECT_EQ(onlyEntry(*source, aceCount).mask, 0x100000u);
            delete source;
        }
    }
}

TEST(IsWow64Test, A64BitOrNativeProcessIsNotUnderWow64)
{
    // A 32-bit build running on 64-bit Windows is the one case that answers true.
#if defined(_WIN32) && !defined(_WIN64)
    BOOL wow64 = FALSE;
    IsWow64Process(GetCurrentProcess(), &wow64);
    EXPECT_EQ(ovo::win32::IsWow64(), wow64 == TRUE);
#else
    EXPECT_FALSE(ovo::win32::IsWow64());
#endif
}

} // namespace
