// The registry class's side of each call, against scripted calls that record it.
#include "fakes/scripted_registry.h"

#include <ovo/win32/registry.h>
#include <ovo/win32/security_attributes.h>

#include <gtest/gtest.h>

namespace {

using ovo::win32::HKEY;
using ovo::win32::registry;
using ovo_fake::registryScript;
using Calls = std::vector<std::string>;

const unsigned long keyRead = 0x20019;

class ScriptedRegistryTest : public ::testing::Test {
protected:
    void SetUp() override { ovo_fake::resetRegistryScript(); }
};

TEST_F(ScriptedRegistryTest, TheAccessIsTheCallersMaskWithTheWideViewOnlyUnderWow64)
{
    const unsigned long expected = ovo::win32::IsWow64() ? keyRead | 0x100 : keyRead; // false on Linux and Win64
    registry key(HKEY_CURRENT_USER);
    ASSERT_TRUE(key.open("Software", keyRead));
    EXPECT_EQ(registryScript().openedAccess, expected);
    key.close();
    ASSERT_TRUE(key.createAndOpen("Software", keyRead));
    EXPECT_EQ(registryScript().openedAccess, expected);
    EXPECT_EQ(registryScript().openedRoot, "80000001");
}

TEST_F(ScriptedRegistryTest, TheKeyNameIsTheBaseABackslashAndTheName)
{
    struct Case {
        const char* base;
        const char* name;
        const char* keyName;
    } cases[] = {{"Software", "Sub", "Software\\Sub"}, {"", "Sub", "Sub"}, {"A\\", "B", "A\\\\B"}, {"A", "", "A\\"}};
    for (const Case& c : cases) {
        registry key(HKEY_LOCAL_MACHINE, c.base);
        key.open(c.name, keyRead);
        EXPECT_EQ(key.keyName(), c.keyName);
        EXPECT_EQ(registryScript().openedKey, c.keyName);
    }
}

TEST_F(ScriptedRegistryTest, AFailedOpenKeepsTheAttemptedPath)
{
    registryScript().openResult = 2;
    registry key(HKEY_CURRENT_USER, "Software");
    EXPECT_FALSE(key.open("Missing", keyRead));
    EXPECT_EQ(key.keyName(), "Software\\Missing");
    EXPECT_EQ(key.keyHandle(), nullptr);
    EXPECT_FALSE(key.createAndOpen("Missing", keyRead));
}

TEST_F(ScriptedRegistryTest, EachKeyIsClosedOnce)
{
    {
        registry nothing(HKEY_CURRENT_USER);
    }
    EXPECT_EQ(registryScript().calls, Calls{}); // nothing open: no call at all
    {
        registry key(HKEY_CURRENT_USER);
        key.open("A", keyRead);
        key.close();
        key.close();
        key.attach(reinterpret_cast<HKEY>(static_cast<std::uintptr_t>(0x77)));
    }
    ASSERT_EQ(registryScript().closedKeys.size(), 2u);
    EXPECT_EQ(registryScript().closedKeys[1], 0x77u); // the attached key, by the destructor
}

TEST_F(ScriptedRegistryTest, CopiesShareTheKeyAndTheLastOneClosesIt)
{
    for (int order = 0; order < 3; ++order) {
        ovo_fake::resetRegistryScript();
        auto* source = new registry(HKEY_CURRENT_USER);
        source->open("A", keyRead);
        const HKEY shared = source->keyHandle();
        auto* copy = new registry(*source);
        auto* assigned = new registry(HKEY_CURRENT_USER);
        assigned->open("B", keyRead);
        const HKEY own = assigned->keyHandle();
        *assigned = *copy; // gives up B, its only holder: closed now
        *assigned = *assigned;
        ASSERT_EQ(registryScript().closedKeys, std::vector<std::uintptr_t>{reinterpret_cast<std::uintptr_t>(own)});
        EXPECT_EQ(copy->keyHandle(), shared);
        registry* objects[3] = {source, copy, assigned};
        for (int i = 0; i < 3; ++i) {
            registry* next = objects[(i + order) % 3];
            if (i == 1)
                next->close(); // a close is a destruction's share too
            delete next;
            EXPECT_EQ(registryScript().closedKeys.size(), i < 2 ? 1u : 2u);
        }
        EXPECT_EQ(registryScript().closedKeys.back(), reinterpret_cast<std::uintptr_t>(shared));
    }
}

TEST_F(ScriptedRegistryTest, StringsReadOnlyFromTextValues)
{
    auto& values = registryScript().values;
    values["empty"] = {1, ""};                 // REG_SZ written with size 0
    values["dword"] = {4, std::string("\x07\0\0\0", 4)};
    values["expand"] = {2, std::string("%PATH%\0", 7)};
    values["unterminated"] = {1, "abc"};
    values["binary"] = {3, "abc"};
    registry key(HKEY_CURRENT_USER);
    key.open("K", keyRead);
    EXPECT_EQ(key.queryStringValue("empty", "default"), "");
    EXPECT_EQ(key.queryStringValue("dword", "default"), "default");
    EXPECT_EQ(key.queryStringValue("binary", "default"), "default");
    EXPECT_EQ(key.queryStringValue("missing", "default"), "default");
    EXPECT_EQ(key.queryStringValue("expand", "default"), "%PATH%"); // not expanded
    EXPECT_EQ(key.queryStringValue("unterminated", "default"), "abc");
    EXPECT_EQ(key.queryDWORDValue("dword", 9), 7u);
    EXPECT_EQ(registryScript().querySizes.back(), 4u);
    EXPECT_EQ(key.queryDWORDValue("expand", 9), 9u); // longer than 4 bytes: the default
    EXPECT_EQ(key.queryDWORDValue("unterminated", 9), 0x636261u); // any type of at most 4 bytes
}

TEST_F(ScriptedRegistryTest, WritesGiveTheTypeAndSize)
{
    registry key(HKEY_CURRENT_USER);
    key.createAndOpen("K", 0xF003F);
    key.setStringValue("text", "");
    key.setStringValue("word", "ab");
    key.setDWORDValue("number", 0x01020304);
    auto& values = registryScript().values;
    EXPECT_EQ(values["text"].type, 1u);
    EXPECT_EQ(values["text"].bytes, std::string(1, '\0'));
    EXPECT_EQ(values["word"].bytes, std::string("ab\0", 3));
    EXPECT_EQ(values["number"].type, 4u);
    EXPECT_EQ(values["number"].bytes, std::string("\x04\x03\x02\x01", 4));
    key.deleteValue("word");
    EXPECT_EQ(values.count("word"), 0u);
    key.flush();
    EXPECT_EQ(registryScript().calls.back(), "RegFlushKey");
}

TEST_F(ScriptedRegistryTest, WithoutAKeyReadsGiveTheDefaultAndWritesDoNothing)
{
    const registry key(HKEY_CURRENT_USER);
    EXPECT_EQ(key.queryDWORDValue("n", 5), 5u);
    EXPECT_EQ(key.queryStringValue("s", "d"), "d");
    key.setDWORDValue("n", 1);
    EXPECT_TRUE(registryScript().values.empty());
}

} // namespace
