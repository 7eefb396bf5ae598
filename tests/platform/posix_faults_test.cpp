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
#include <functional>
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

    ovo_test::TempDir config, files;
    const std::string file = (files.path() / "file").string();
    HKEY key = nullptr;
};

// Each failure of the system gives its cause's code and changes nothing; an interrupted
// call is retried. `result` runs the layer's call and gives its code (0 for success).
TEST_F(PosixFaultsTest, FailuresReportTheCauseAndChangeNothing)
{
    ASSERT_EQ(setText("value", "old"), 0);
    HANDLE handle = CreateFileA(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    DWORD done = 0;
    char buffer[8];
    const auto fileCode = [](BOOL ok) { return ok ? 0L : static_cast<LONG>(GetLastError()); };
    const struct {
        const char* call;
        int error, times;
        std::function<LONG()> result;
        LONG code;
    } cases[] = {
        {"write", ENOSPC, 1, [&] { return setText("value", "new"); }, 112}, // ERROR_DISK_FULL
        {"rename", EIO, 1, [&] { return setText("value", "new"); }, 31},    // ERROR_GEN_FAILURE
        {"open", EMFILE, 1, [&] { return setText("value", "new"); }, 4},    // ERROR_TOO_MANY_OPEN_FILES
        {"read", EIO, 1, [&] { return text("value") == "old" ? 0L : 31L; }, 31},
        {"fsync", EIO, 1, [&] { return RegFlushKey(key); }, 31},
        {"write", ENOSPC, 1, [&] { return fileCode(WriteFile(handle, "abc", 3, &done, nullptr)); }, 112},
        {"read", EIO, 1, [&] { return fileCode(ReadFile(handle, buffer, sizeof buffer, &done, nullptr)); }, 31},
        {"open", EMFILE, 1,
         [&] {
             return fileCode(CreateFileA(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0,
                                         nullptr) != INVALID_HANDLE_VALUE);
         },
         4},
        {"write", EINTR, 3, [&] { return setText("value", "old"); }, 0},
        {"read", EINTR, 2, [&] { return text("value") == "old" ? 0L : 1L; }, 0},
        {"write", EINTR, 2, [&] { return fileCode(WriteFile(handle, "hello", 5, &done, nullptr)); }, 0},
    };
    for (const auto& c : cases) {
        failCall(c.call, c.error, c.times);
        EXPECT_EQ(c.result(), c.code) << c.call << " " << c.error;
        failCall();
        EXPECT_EQ(text("value"), "old") << c.call << " " << c.error;
        const fs::path directory = config.path() / "ovosystem/registry/faults";
        EXPECT_EQ(std::distance(fs::directory_iterator(directory), fs::directory_iterator()), 1) << "no file left";
    }
    CloseHandle(handle);
    EXPECT_EQ(ovo_test::readFile(file), "hello");
}

} // namespace
