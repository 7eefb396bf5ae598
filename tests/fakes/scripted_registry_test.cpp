// The registry class's side of each call, against scripted calls that log it.
#include "fakes/scripted_registry.h"

#include <ovo/strings.h>
#include <ovo/win32/registry.h>
#include <ovo/win32/security_attributes.h>

#include <gtest/gtest.h>

namespace {

using ovo::win32::HKEY;
using ovo::win32::registry;
using ovo_fake::registryScript;
using Calls = std::vector<std::string>;

const unsigned long keyRead = 0x20019;

// The caller's mask as passed, with the 64-bit view for a 32-bit process on a 64-bit system.
std::string passed(unsigned long mask) { return ovo::format("%lX", mask | (ovo::win32::IsWow64() ? 0x100 : 0)); }

class ScriptedRegistryTest : public ::testing::Test {
protected:
    void SetUp() override { ovo_fake::resetRegistryScript(); }
};

TEST_F(ScriptedRegistryTest, OpensPassTheMaskAndTheBaseABackslashAndTheName)
{
    const struct {
        const char *base, *name, *keyName;
    } cases[] = {{"Software", "Sub", "Software\\Sub"}, {"", "Sub", "Sub"}, {"A\\", "B", "A\\\\B"}, {"A", "", "A\\"}};
    for (const auto& c : cases) {
        ovo_fake::resetRegistryScript();
        registry key(HKEY_LOCAL_MACHINE, c.base);
        EXPECT_TRUE(key.open(c.name, keyRead));
        key.close();
        EXPECT_TRUE(key.createAndOpen(c.name, 0xF003F));
        EXPECT_EQ(key.keyName(), c.keyName);
        const std::string name = c.keyName;
        EXPECT_EQ(registryScript().calls,
                  (Calls{"RegOpenKeyExA(80000002, " + name + ", " + passed(keyRead) + ")", "RegCloseKey(4B01)",
                         "RegCreateKeyExA(80000002, " + name + ", " + passed(0xF003F) + ")"}));
    }
}

TEST_F(ScriptedRegistryTest, EachKeyIsClosedOnceByItsLastHolder)
{
    registry(HKEY_CURRENT_USER).close();
    EXPECT_EQ(registryScript().calls, Calls{}) << "nothing open: no call at all";
    {
        registry key(HKEY_CURRENT_USER);
        key.open("A", keyRead);
        key.attach(reinterpret_cast<HKEY>(0x77)); // the open key was the caller's to close first
        EXPECT_EQ(key.keyName(), "A");
        key.close();
        key.close();
        key.attach(reinterpret_cast<HKEY>(0x78));
    }
    EXPECT_EQ(registryScript().calls,
              (Calls{"RegOpenKeyExA(80000001, A, " + passed(keyRead) + ")", "RegCloseKey(77)", "RegCloseKey(78)"}));

    // Copies share the key, and the last holder closes it.
    for (int firstGone = 0; firstGone < 3; ++firstGone) {
        ovo_fake::resetRegistryScript();
        auto* source = new registry(HKEY_CURRENT_USER);
        source->open("A", keyRead);
        auto* copy = new registry(*source);
        auto* assigned = new registry(HKEY_CURRENT_USER);
        assigned->open("B", keyRead);
        *assigned = *copy; // gives up B, its only holder: closed now
        *assigned = *assigned;
        EXPECT_EQ(assigned->keyHandle(), source->keyHandle());
        registry* holders[3] = {source, copy, assigned};
        for (int i = 0; i < 3; ++i) {
            registry* next = holders[(i + firstGone) % 3];
            if (i == 1)
                next->close(); // a close is a destruction's share too
            delete next;
            EXPECT_EQ(registryScript().calls.size(), i < 2 ? 3u : 4u) << "closed before its last holder let go";
        }
        EXPECT_EQ(registryScript().calls, (Calls{"RegOpenKeyExA(80000001, A, " + passed(keyRead) + ")",
                                                 "RegOpenKeyExA(80000001, B, " + passed(keyRead) + ")",
                                                 "RegCloseKey(4B02)", "RegCloseKey(4B01)"}));
    }
}

TEST_F(ScriptedRegistryTest, ValuesGoWithTheirTypeAndSizeAndReadsTakeOnlyTheirTypes)
{
    registry key(HKEY_CURRENT_USER);
    key.createAndOpen("K", 0xF003F);
    registryScript().calls.clear();
    key.setStringValue("text", "");
    key.setStringValue("word", "ab");
    key.setDWORDValue("number", 0x01020304);
    EXPECT_EQ(key.queryDWORDValue("number", 9), 9u);
    EXPECT_EQ(key.queryStringValue("word", "d"), "d");
    key.deleteValue("word");
    key.flush();
    EXPECT_EQ(registryScript().calls,
              (Calls{"RegSetValueExA(4B01, text, 1, [00 ])", "RegSetValueExA(4B01, word, 1, [61 62 00 ])",
                     "RegSetValueExA(4B01, number, 4, [04 03 02 01 ])", "RegQueryValueExA(4B01, number, 4)",
                     "RegQueryValueExA(4B01, word, 256)", "RegDeleteValueA(4B01, word)", "RegFlushKey(4B01)"}));

    // Text comes only from text types, numbers from at most four bytes. (A number read as
    // text and a missing value: the parity scenario, on the platform's registry.)
    registryScript().values = {{"short", {3, "ab"}},
                               {"expand", {2, "%PATH%"}}, // without its NUL, and not expanded
                               {"empty", {1, ""}},        // written with size 0: empty, not missing
                               {"long", {1, std::string(300, 'L') + '\0'}}};
    registry reader(HKEY_CURRENT_USER);
    EXPECT_EQ(reader.queryDWORDValue("short", 9), 9u) << "no key open";
    reader.open("K", keyRead);
    const struct {
        const char* name;
        std::string text;
        unsigned long number;
    } cases[] = {{"short", "d", 0x6261}, {"expand", "%PATH%", 9}, {"empty", "", 0}, {"long", std::string(300, 'L'), 9}};
    for (const auto& c : cases) {
        EXPECT_EQ(reader.queryStringValue(c.name, "d"), c.text) << c.name;
        EXPECT_EQ(reader.queryDWORDValue(c.name, 9), c.number) << c.name;
    }
}

} // namespace
