// The registry class on the platform's registry: the library's file store on Linux, Wine's registry on Windows.
#include "platform/win32.h"
#include "support/temp_dir.h"

#include <ovo/win32/registry.h>

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include "support/planted_links.h"

#include <sys/stat.h>
#endif

namespace {

using ovo::win32::registry;

const unsigned long allAccess = 0xF003F;
const unsigned long readAccess = 0x20019;

class RegistryStoreTest : public ::testing::Test {
protected:
    void SetUp() override
    {
#if !defined(_WIN32)
        setenv("XDG_CONFIG_HOME", config.string().c_str(), 1);
#endif
        ASSERT_TRUE(store.createAndOpen("Key", allAccess));
    }
    void TearDown() override
    {
        store.close();
#if defined(_WIN32)
        RegDeleteTreeA(HKEY_CURRENT_USER, base.c_str());
#endif
    }

    ovo_test::TempDir config;
    const std::filesystem::path keyDirectory = config.path() / "ovosystem/registry/software/ovotest/key"; // on Linux
#if defined(_WIN32)
    std::string base = "Software\\ovotest-" + std::to_string(GetCurrentProcessId());
#else
    std::string base = "Software\\ovotest";
#endif
    registry store{HKEY_CURRENT_USER, base};
};

// (Empty values, values of the other type, refused names: the parity scenario.)
TEST_F(RegistryStoreTest, ValuesReadBackByNameWithoutCase)
{
    store.setDWORDValue("Number", 0xFFFFFFFFul);
    store.setStringValue("Text", "reader one");
    store.setStringValue(std::string(300, 'L'), "long one"); // longer than a file name
    store.setStringValue(std::string(299, 'L') + "M", "long two");
    EXPECT_EQ(store.queryDWORDValue("NUMBER", 7), 0xFFFFFFFFul);
    EXPECT_EQ(store.queryStringValue("text", "default"), "reader one");
    EXPECT_EQ(store.queryStringValue(std::string(300, 'l'), "default"), "long one");
    EXPECT_EQ(store.queryStringValue(std::string(299, 'L') + "m", "default"), "long two");
    store.setStringValue("text", "replaced");
    EXPECT_EQ(store.queryStringValue("Text", "default"), "replaced");
    store.deleteValue("Text");
    EXPECT_EQ(store.queryStringValue("Text", "default"), "default");
    store.flush();
    EXPECT_EQ(store.queryDWORDValue("Number", 7), 0xFFFFFFFFul);
    store.close();
    EXPECT_FALSE(store.open("Missing", readAccess));
    EXPECT_EQ(store.keyName(), base + "\\Missing");
    ASSERT_TRUE(store.open(std::string("KEY\0After", 9), readAccess)); // key names too, up to a NUL
    store.setDWORDValue("Number", 2);                                  // refused: the key is open for reading
    EXPECT_EQ(store.queryDWORDValue("Number", 7), 0xFFFFFFFFul);
}

#if !defined(_WIN32)
// On Linux a key is a directory and a value a file in it: every name Windows takes stays
// inside the store, and what stands there without being a value is none.
TEST_F(RegistryStoreTest, NamesStayInsideTheStore)
{
    for (const char* name : {"..\\..\\..\\escape", "a/b", "..", ".", "a\\\\b"})
        EXPECT_TRUE(registry(HKEY_CURRENT_USER, base).createAndOpen(name, allAccess)) << name;
    EXPECT_TRUE(registry(HKEY_CURRENT_USER).createAndOpen("..\\escape", allAccess));
    store.setStringValue("../../escape", "kept inside");
    EXPECT_EQ(store.queryStringValue("../../escape", ""), "kept inside");
    EXPECT_FALSE(std::filesystem::exists(config.path().parent_path() / "escape") ||
                 std::filesystem::exists(config.path() / "ovosystem/escape"));

    EXPECT_TRUE(registry(HKEY_CURRENT_USER, base).createAndOpen(std::string(255, 'k'), allAccess)); // Windows' limit
    EXPECT_TRUE(std::filesystem::is_directory(keyDirectory.parent_path() / std::string(255, 'k'))); // named as before
    registry escaped(HKEY_CURRENT_USER, base), inCapitals(HKEY_CURRENT_USER, base); // too long a file name escaped
    ASSERT_TRUE(escaped.createAndOpen(std::string(254, '%') + "k", allAccess));
    escaped.setDWORDValue("Mark", 1);
    EXPECT_TRUE(inCapitals.open(std::string(254, '%') + "K", readAccess) && inCapitals.queryDWORDValue("Mark", 0) == 1);
    ASSERT_EQ(::mkfifo((keyDirectory / "%vfifo").c_str(), 0600), 0);
    EXPECT_EQ(store.queryStringValue("fifo", "none"), "none"); // at once, not blocked on the FIFO
    std::ofstream(keyDirectory / "%next") << "left by a writer killed mid-way";
    store.setStringValue("after", "set");
    EXPECT_EQ(store.queryStringValue("after", ""), "set");

    ovo_test::TempDir machine; // HKEY_LOCAL_MACHINE: the first of the configuration directories
    setenv("XDG_CONFIG_DIRS", (machine.string() + ":/etc/xdg").c_str(), 1);
    EXPECT_TRUE(registry(HKEY_LOCAL_MACHINE, "Software").createAndOpen("Where", allAccess));
    unsetenv("XDG_CONFIG_DIRS");
    EXPECT_TRUE(std::filesystem::is_directory(machine.path() / "ovosystem/registry/software/where"));
}

// A value or sub-key that is another user's link is none: nothing is read from its target, a set replaces the link
// itself, a key through it neither opens nor is made.
TEST_F(RegistryStoreTest, ALinkThatAnotherUserPlantedIsNeverFollowed)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may make a link of another user";
    const auto sourceDirectory = keyDirectory.parent_path() / "source";
    registry source(HKEY_CURRENT_USER, base), sub(HKEY_CURRENT_USER, base + "\\Key");
    ASSERT_TRUE(source.createAndOpen("Source", allAccess));
    for (const auto& row : ovo_test::plantedLinks) {
        source.setStringValue("value", "elsewhere");
        ASSERT_TRUE(ovo_test::plantLink(row, keyDirectory, "%vlinked", sourceDirectory / "%vvalue"));
        EXPECT_EQ(store.queryStringValue("linked", "none"), row.followed ? "elsewhere" : "none") << row.name;
        ASSERT_TRUE(ovo_test::plantLink(row, keyDirectory, "sub", sourceDirectory));
        EXPECT_EQ(sub.open("Sub", allAccess), row.followed) << row.name;
        sub.close();
        EXPECT_EQ(sub.createAndOpen("Sub", allAccess), row.followed) << row.name;
        sub.setStringValue("value", "through the link");
        sub.close();
        EXPECT_EQ(source.queryStringValue("value", ""), row.followed ? "through the link" : "elsewhere") << row.name;
    }
    store.setStringValue("linked", "replaced"); // the link itself, not its target
    EXPECT_EQ(store.queryStringValue("linked", ""), "replaced");
    EXPECT_EQ(source.queryStringValue("value", ""), "through the link");
}
#endif

} // namespace
