// The registry class on the platform's registry: the library's own file store on Linux
// (in a temporary configuration directory), Wine's registry on Windows.
#include "platform/win32.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

#include <ovo/win32/registry.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using ovo::win32::registry;
using ovo_test::ChildProcess;

const unsigned long allAccess = 0xF003F;
const unsigned long readAccess = 0x20019;

bool isAllOf(const std::string& text, char c, std::size_t size)
{
    return text.size() == size && text.find_first_not_of(c) == std::string::npos;
}

class RegistryStoreTest : public ::testing::Test {
protected:
    void SetUp() override
    {
#if defined(_WIN32)
        base_ = "Software\\ovotest-" + std::to_string(GetCurrentProcessId());
#else
        setenv("XDG_CONFIG_HOME", config_.string().c_str(), 1);
        base_ = "Software\\ovotest";
#endif
    }

    void TearDown() override
    {
#if defined(_WIN32)
        RegDeleteTreeA(HKEY_CURRENT_USER, base_.c_str());
#else
        unsetenv("XDG_CONFIG_HOME");
#endif
    }

    std::string key(const std::string& name) const { return base_ + "\\" + name; }
    std::string file(const std::string& name) const { return (files_.path() / name).string(); }

    // A raw key of the platform, for writing what the class does not write.
    HKEY rawKey(const std::string& name) const
    {
        HKEY handle = nullptr;
        RegCreateKeyExA(HKEY_CURRENT_USER, key(name).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, &handle, nullptr);
        return handle;
    }

    std::string base_;
    ovo_test::TempDir config_, files_;
};

TEST_F(RegistryStoreTest, AMissingKeyFailsToOpenAndCreateMakesIt)
{
    registry store(HKEY_CURRENT_USER, base_);
    EXPECT_FALSE(store.open("Settings", readAccess));
    EXPECT_EQ(store.keyName(), key("Settings"));
    EXPECT_EQ(store.keyHandle(), nullptr);
    ASSERT_TRUE(store.createAndOpen("Settings", allAccess));
    store.setDWORDValue("Timeout", 250);
    store.close();
    ASSERT_TRUE(store.open("SETTINGS", readAccess)); // key names compare without case
    EXPECT_EQ(store.queryDWORDValue("timeout", 0), 250u);
}

TEST_F(RegistryStoreTest, ValuesReadBackByNameWithoutCase)
{
    registry store(HKEY_CURRENT_USER, base_);
    ASSERT_TRUE(store.createAndOpen("Values", allAccess));
    store.setDWORDValue("Number", 0xFFFFFFFFul);
    store.setStringValue("Text", "reader one");
    store.setStringValue("Empty", "");
    EXPECT_EQ(store.queryDWORDValue("NUMBER", 7), 0xFFFFFFFFul);
    EXPECT_EQ(store.queryStringValue("text", "default"), "reader one");
    EXPECT_EQ(store.queryStringValue("Empty", "default"), "");
    EXPECT_EQ(store.queryStringValue("Number", "default"), "default"); // a number is no text
    EXPECT_EQ(store.queryStringValue("Missing", "default"), "default");
    store.setStringValue("text", "replaced");
    EXPECT_EQ(store.queryStringValue("Text", "default"), "replaced");
    store.deleteValue("Text");
    EXPECT_EQ(store.queryStringValue("Text", "default"), "default");
    store.flush();
    EXPECT_EQ(store.queryDWORDValue("Number", 7), 0xFFFFFFFFul);
}

TEST_F(RegistryStoreTest, ValuesKeepTheirTypeAndBytes)
{
    HKEY raw = rawKey("Raw");
    ASSERT_NE(raw, nullptr);
    const BYTE binary[] = {0, 1, 0, 0xFF};
    ASSERT_EQ(RegSetValueExA(raw, "Binary", 0, REG_BINARY, binary, sizeof binary), 0);
    ASSERT_EQ(RegSetValueExA(raw, "Expand", 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>("%HOME%"), 7), 0);
    ASSERT_EQ(RegSetValueExA(raw, "EmptyText", 0, REG_SZ, reinterpret_cast<const BYTE*>(""), 0), 0);
    DWORD type = 0, size = sizeof binary;
    BYTE read[sizeof binary] = {};
    ASSERT_EQ(RegQueryValueExA(raw, "binary", nullptr, &type, read, &size), 0);
    EXPECT_EQ(type, static_cast<DWORD>(REG_BINARY));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(read), size), std::string(reinterpret_cast<const char*>(binary), 4));
    size = 1;
    EXPECT_EQ(RegQueryValueExA(raw, "Expand", nullptr, &type, read, &size), static_cast<LONG>(ERROR_MORE_DATA));
    EXPECT_EQ(size, 7u);
    RegCloseKey(raw);

    registry store(HKEY_CURRENT_USER, base_);
    ASSERT_TRUE(store.open("Raw", readAccess));
    EXPECT_EQ(store.queryStringValue("EmptyText", "default"), ""); // stored with size 0: empty, not missing
    EXPECT_EQ(store.queryStringValue("Expand", "default"), "%HOME%");
    EXPECT_EQ(store.queryStringValue("Binary", "default"), "default");
}

TEST_F(RegistryStoreTest, AKeyOpenedForReadingRefusesWrites)
{
    registry store(HKEY_CURRENT_USER, base_);
    ASSERT_TRUE(store.createAndOpen("ReadOnly", allAccess));
    store.setDWORDValue("Kept", 1);
    store.close();
    ASSERT_TRUE(store.open("ReadOnly", readAccess));
    store.setDWORDValue("Kept", 2);
    EXPECT_EQ(store.queryDWORDValue("Kept", 0), 1u);
}

TEST_F(RegistryStoreTest, ANameEndsAtANul)
{
    registry store(HKEY_CURRENT_USER, base_);
    ASSERT_TRUE(store.createAndOpen(std::string("Before\0After", 12), allAccess));
    store.setDWORDValue("Here", 1);
    store.close();
    ASSERT_TRUE(store.open("Before", readAccess));
    EXPECT_EQ(store.queryDWORDValue("Here", 0), 1u);
}

#if !defined(_WIN32)
// On Linux a key is a directory: no key name reaches outside the store.
TEST_F(RegistryStoreTest, KeyPathsCannotLeaveTheStore)
{
    registry store(HKEY_CURRENT_USER, base_);
    for (const char* name : {"..\\..\\..\\escape", "a/b", "..", ".", "a\\\\b", "\\a"}) {
        EXPECT_FALSE(store.createAndOpen(name, allAccess)) << name;
        store.close();
    }
    registry root(HKEY_CURRENT_USER);
    EXPECT_FALSE(root.createAndOpen("..\\escape", allAccess));
    EXPECT_FALSE(std::filesystem::exists(config_.path().parent_path() / "escape"));
    EXPECT_FALSE(std::filesystem::exists(config_.path() / "escape"));
}

TEST_F(RegistryStoreTest, TheStoreFollowsTheConfigurationDirectories)
{
    registry store(HKEY_CURRENT_USER, "Software");
    ASSERT_TRUE(store.createAndOpen("Where", allAccess));
    store.setDWORDValue("n", 1);
    EXPECT_TRUE(std::filesystem::is_directory(config_.path() / "ovosystem/registry/software/where"));
    ovo_test::TempDir machine;
    setenv("XDG_CONFIG_DIRS", (machine.string() + ":/etc/xdg").c_str(), 1);
    registry machineKey(HKEY_LOCAL_MACHINE, "Software");
    EXPECT_TRUE(machineKey.createAndOpen("Where", allAccess));
    unsetenv("XDG_CONFIG_DIRS");
    EXPECT_TRUE(std::filesystem::is_directory(machine.path() / "ovosystem/registry/software/where"));
}
#endif

// A writer in another process replaces a 4000-byte text 300 times while this process
// reads it and writes values of its own: every read is one whole text, and no write of
// either process is lost.
TEST_F(RegistryStoreTest, TwoProcessesShareAKeyWithoutTornOrLostValues)
{
    registry store(HKEY_CURRENT_USER, base_);
    ASSERT_TRUE(store.createAndOpen("Shared", allAccess));
    ChildProcess writer("registry_peer", {key("Shared"), "300", file("written")});
    ASSERT_TRUE(ovo_test::waitForFile(file("written")));
    unsigned mine = 0;
    for (int reads = 0; reads < 300; ++reads) {
        const std::string text = store.queryStringValue("text", "");
        EXPECT_TRUE(isAllOf(text, 'A', 4000) || isAllOf(text, 'B', 4000)) << text.size();
        store.setDWORDValue("mine" + std::to_string(mine), mine);
        ++mine;
    }
    EXPECT_EQ(writer.wait(), 0);
    EXPECT_EQ(store.queryDWORDValue("count", 0), 300u);
    for (unsigned n = 0; n < mine; ++n)
        EXPECT_EQ(store.queryDWORDValue("mine" + std::to_string(n), 0xFFFF), n);
}

TEST_F(RegistryStoreTest, AWriterKilledMidWayLeavesTheOldOrTheNewValue)
{
    ChildProcess writer("registry_peer", {key("Killed"), "0", file("written")});
    ASSERT_TRUE(ovo_test::waitForFile(file("written")));
    writer.kill();
    registry store(HKEY_CURRENT_USER, base_);
    ASSERT_TRUE(store.open("Killed", allAccess));
    const std::string text = store.queryStringValue("text", "");
    EXPECT_TRUE(isAllOf(text, 'A', 4000) || isAllOf(text, 'B', 4000)) << text.size();
    EXPECT_GE(store.queryDWORDValue("count", 0), 1u);
    store.setStringValue("after", "the key still takes writes");
    EXPECT_EQ(store.queryStringValue("after", ""), "the key still takes writes");
}

} // namespace
