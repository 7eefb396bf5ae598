// The POSIX layer when the system fails it: a full disk, an I/O error, interrupted calls,
// no descriptors left. The layer's calls fail with the Win32 code of the cause, retry what
// was only interrupted, and leave no half-written state behind.
#include "fakes/faulty_system_calls.h"
#include "platform/win32.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

using ovo_fake::failCall;

class PosixFaultsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ovo_fake::clearFailures();
        setenv("XDG_CONFIG_HOME", config_.string().c_str(), 1);
    }
    void TearDown() override
    {
        ovo_fake::clearFailures();
        unsetenv("XDG_CONFIG_HOME");
    }

    HKEY createKey(const char* name)
    {
        HKEY key = nullptr;
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, name, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                  nullptr, &key, nullptr),
                  0);
        return key;
    }

    static std::string text(HKEY key, const char* name)
    {
        char buffer[64] = {};
        DWORD type = 0, size = sizeof buffer;
        return RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size) == 0
                   ? std::string(buffer, size)
                   : "(none)";
    }

    static LONG setText(HKEY key, const char* name, const std::string& value)
    {
        return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.data()),
                              static_cast<DWORD>(value.size()));
    }

    ovo_test::TempDir config_, files_;
};

TEST_F(PosixFaultsTest, ARegistryWriteThatFailsLeavesTheOldValues)
{
    HKEY key = createKey("Faults");
    ASSERT_EQ(setText(key, "value", "old"), 0);
    const struct {
        const char* call;
        int error;
        LONG code;
    } failures[] = {
        {"write", ENOSPC, 112},     // ERROR_DISK_FULL
        {"rename", EIO, 31},        // ERROR_GEN_FAILURE
        {"open", EMFILE, 4},        // ERROR_TOO_MANY_OPEN_FILES
    };
    for (const auto& failure : failures) {
        failCall(failure.call, failure.error, 1, failure.call == std::string("open") ? 1 : 0); // past the read
        EXPECT_EQ(setText(key, "value", "new"), failure.code) << failure.call;
        EXPECT_EQ(text(key, "value"), "old") << failure.call;
        EXPECT_FALSE(std::filesystem::exists(config_.path() / "ovosystem/registry/faults/%values.new"));
        ovo_fake::clearFailures();
    }
    EXPECT_EQ(setText(key, "value", "new"), 0);
    EXPECT_EQ(text(key, "value"), "new");
    failCall("fsync", EIO);
    EXPECT_EQ(RegFlushKey(key), 31);
    RegCloseKey(key);
}

TEST_F(PosixFaultsTest, InterruptedCallsAreRetried)
{
    HKEY key = createKey("Interrupted");
    failCall("write", EINTR, 3);
    ASSERT_EQ(setText(key, "value", "whole"), 0);
    failCall("read", EINTR, 2);
    EXPECT_EQ(text(key, "value"), "whole");
    EXPECT_GE(ovo_fake::callsOf("read"), 3);
    RegCloseKey(key);

    const std::string path = (files_.path() / "file").string();
    HANDLE file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    failCall("write", EINTR, 2);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, "hello", 5, &written, nullptr));
    EXPECT_EQ(written, 5u);
    CloseHandle(file);
    EXPECT_EQ(ovo_test::readFile(path), "hello");
}

TEST_F(PosixFaultsTest, FileTransfersReportTheCause)
{
    const std::string path = (files_.path() / "file").string();
    HANDLE file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD done = 0;
    failCall("write", ENOSPC);
    EXPECT_FALSE(WriteFile(file, "abc", 3, &done, nullptr));
    EXPECT_EQ(GetLastError(), 112u);
    failCall("read", EIO);
    char buffer[4];
    EXPECT_FALSE(ReadFile(file, buffer, sizeof buffer, &done, nullptr));
    EXPECT_EQ(GetLastError(), 31u);
    CloseHandle(file);
    failCall("open", EMFILE);
    EXPECT_EQ(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 4u);
}

TEST_F(PosixFaultsTest, ANamedObjectThatCannotBeMadeLeavesNothing)
{
    const std::string name = "Local\\ovofaults-" + std::to_string(getpid());
    const std::string file =
        "/dev/shm/ovosystem.u" + std::to_string(geteuid()) + ".ovofaults-" + std::to_string(getpid());
    failCall("ftruncate", ENOSPC, 1, 1); // the second one sizes the block
    EXPECT_EQ(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), 112u);
    EXPECT_FALSE(std::filesystem::exists(file));
    failCall("open", EMFILE);
    EXPECT_EQ(CreateMutexA(nullptr, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), 4u);
    EXPECT_FALSE(std::filesystem::exists(file));

    HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str());
    ASSERT_NE(mapping, nullptr); // the name is free and works again
    EXPECT_EQ(GetLastError(), 0u);
    CloseHandle(mapping);
    EXPECT_FALSE(std::filesystem::exists(file));
}

} // namespace
