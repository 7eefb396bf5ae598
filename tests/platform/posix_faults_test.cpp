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

namespace {

using ovo_fake::failCall;
namespace fs = std::filesystem;

class PosixFaultsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("XDG_CONFIG_HOME", config.string().c_str(), 1);
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Faults", 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                  nullptr, &key, nullptr),
                  0);
    }
    void TearDown() override
    {
        failCall();
        RegCloseKey(key);
        unsetenv("XDG_CONFIG_HOME");
    }

    std::string text(const char* name) const
    {
        char buffer[64] = {};
        DWORD type = 0, size = sizeof buffer;
        const LONG result = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size);
        return result == 0 ? std::string(buffer, size) : "error " + std::to_string(result);
    }
    LONG setText(const char* name, const std::string& value) const
    {
        return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.data()),
                              static_cast<DWORD>(value.size()));
    }
    HANDLE newFile() const
    {
        return CreateFileA(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    }

    ovo_test::TempDir config, files;
    const std::string file = (files.path() / "file").string();
    HKEY key = nullptr;
};

TEST_F(PosixFaultsTest, ARegistryCallThatFailsReportsTheCauseAndKeepsTheOldValue)
{
    ASSERT_EQ(setText("value", "old"), 0);
    const struct {
        const char* call;
        int error;
        LONG code;
    } failures[] = {{"write", ENOSPC, 112},
                    {"rename", EIO, 31},
                    {"open", EMFILE, 4}}; // DISK_FULL, GEN_FAILURE, TOO_MANY_OPEN_FILES
    for (const auto& failure : failures) {
        failCall(failure.call, failure.error);
        EXPECT_EQ(setText("value", "new"), failure.code) << failure.call;
        EXPECT_EQ(text("value"), "old") << failure.call;
        const fs::path directory = config.path() / "ovosystem/registry/faults";
        EXPECT_EQ(std::distance(fs::directory_iterator(directory), fs::directory_iterator()), 1) << failure.call;
    }
    failCall("read", EIO);
    EXPECT_EQ(text("value"), "error 31");
    failCall("fsync", EIO);
    EXPECT_EQ(RegFlushKey(key), 31);
    EXPECT_EQ(RegFlushKey(key), 0);
}

TEST_F(PosixFaultsTest, InterruptedCallsAreRetriedAndFailuresReportTheCause)
{
    failCall("write", EINTR, 3);
    ASSERT_EQ(setText("value", "whole"), 0);
    failCall("read", EINTR, 2);
    EXPECT_EQ(text("value"), "whole");

    HANDLE handle = newFile();
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    DWORD done = 0;
    char buffer[8];
    failCall("write", EINTR, 2);
    EXPECT_TRUE(WriteFile(handle, "hello", 5, &done, nullptr));
    EXPECT_EQ(done, 5u);
    failCall("write", ENOSPC);
    EXPECT_FALSE(WriteFile(handle, "abc", 3, &done, nullptr));
    EXPECT_EQ(GetLastError(), 112u);
    failCall("read", EIO);
    EXPECT_FALSE(ReadFile(handle, buffer, sizeof buffer, &done, nullptr));
    EXPECT_EQ(GetLastError(), 31u);
    CloseHandle(handle);
    EXPECT_EQ(ovo_test::readFile(file), "hello");
    failCall("open", EMFILE);
    EXPECT_EQ(newFile(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 4u);
}

} // namespace
