// The POSIX layer when the system fails it: its calls fail with the Win32 code of the cause, retry what was only
// interrupted, and leave no half-written state behind; a "Global\" name reaches one object from every session
// and, as its list grants, every user.
#include "fakes/faulty_system_calls.h"
#include "platform/win32.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>
#include <ovo/win32/security_attributes.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using ovo_fake::failCall;

TEST(PosixFaults, FailuresReportTheCauseAndChangeNothing)
{
    ovo_test::TempDir config, files;
    setenv("XDG_CONFIG_HOME", config.string().c_str(), 1);
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Faults", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr), 0);
    const auto setText = [&](const char* text) {
        return RegSetValueExA(key, "value", 0, REG_SZ, reinterpret_cast<const BYTE*>(text), 3);
    };
    const auto text = [&] {
        char buffer[8] = {};
        DWORD size = sizeof buffer;
        const LONG result = RegQueryValueExA(key, "value", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer), &size);
        return result == 0 ? std::string(buffer, size) : "error " + std::to_string(result);
    };
    ASSERT_EQ(setText("old"), 0);
    const auto keyDirectory = config.path() / "ovosystem/registry/faults";
    const std::string file = (files.path() / "file").string();
    HANDLE handle = CreateFileA(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD done = 0;
    char buffer[8];
    const auto fileCode = [](BOOL ok) { return ok ? 0L : static_cast<LONG>(GetLastError()); };
    const struct {
        const char* call;
        int error, times;
        std::function<LONG()> result; // the layer's code, 0 for success
        LONG code;
    } cases[] = {
        {"write", ENOSPC, 1, [&] { return setText("new"); }, 112}, // ERROR_DISK_FULL
        {"rename", EIO, 1, [&] { return setText("new"); }, 31},    // ERROR_GEN_FAILURE
        {"open", EMFILE, 1, [&] { return setText("new"); }, 4},    // ERROR_TOO_MANY_OPEN_FILES
        {"read", EIO, 1, [&] { return text() == "error 31" ? 31L : 0L; }, 31},
        {"fsync", EIO, 1, [&] { return RegFlushKey(key); }, 31},
        {"write", ENOSPC, 1, [&] { return fileCode(WriteFile(handle, "abc", 3, &done, nullptr)); }, 112},
        {"read", EIO, 1, [&] { return fileCode(ReadFile(handle, buffer, sizeof buffer, &done, nullptr)); }, 31},
        {"open", EMFILE, 1,
         [&] { return fileCode(CreateFileA(file.c_str(), 0, 3, nullptr, 3, 0, nullptr) != INVALID_HANDLE_VALUE); }, 4},
        {"write", EINTR, 3, [&] { return setText("old"); }, 0},
        {"read", EINTR, 2, [&] { return text() == "old" ? 0L : 1L; }, 0},
        {"write", EINTR, 2, [&] { return fileCode(WriteFile(handle, "hello", 5, &done, nullptr)); }, 0},
    };
    for (const auto& c : cases) {
        failCall(c.call, c.error, c.times);
        EXPECT_EQ(c.result(), c.code) << c.call << " " << c.error;
        failCall();
        EXPECT_EQ(text(), "old") << c.call << " " << c.error;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(keyDirectory), {}), 1) << "a file left behind";
    }
    CloseHandle(handle);
    EXPECT_EQ(ovo_test::readFile(file), "hello");
    RegCloseKey(key);
}

TEST(PosixFaults, ANamedObjectThatCannotBeMadeLeavesNothing)
{
    ovo_test::TempDir runtime; // the session's directory of this test's own
    std::filesystem::permissions(runtime.path(), std::filesystem::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", runtime.string().c_str(), 1);
    const std::string name = "Local\\faults";
    const auto file = runtime.path() / "ovosystem" / "faults";
    failCall("fallocate", ENOSPC);
    EXPECT_EQ(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), 1455u); // ERROR_COMMITMENT_LIMIT: the memory cannot be committed
    failCall("ftruncate", EIO);
    std::ofstream(file) << "left by holders that died"; // a file just made is empty: only this one is cut
    EXPECT_EQ(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), 31u);
    failCall("open", EMFILE);
    EXPECT_EQ(CreateMutexA(nullptr, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), 4u);
    failCall();
    EXPECT_FALSE(std::filesystem::exists(file));
    HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str());
    ASSERT_NE(mapping, nullptr); // the name is free and works again
    CloseHandle(mapping);
    EXPECT_FALSE(std::filesystem::exists(file));
}

// "Global\" names are one namespace for every session: a process without one (a service)
// finds the mutex held, where the same "Local\" name is a mutex of its own.
TEST(PosixLayer, GlobalNamesAreOneNamespaceForEverySession)
{
    ovo_test::TempDir runtime;
    std::filesystem::permissions(runtime.path(), std::filesystem::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", runtime.string().c_str(), 1);
    for (const std::string scope : {"Global\\", "Local\\"}) {
        const std::string name = scope + "ovotest-scope-" + std::to_string(getpid());
        HANDLE held = CreateMutexA(nullptr, TRUE, name.c_str());
        ASSERT_NE(held, nullptr) << scope << ": " << GetLastError();
        ovo_test::ChildProcess sessionless([&] {
            unsetenv("XDG_RUNTIME_DIR");
            HANDLE mutex = CreateMutexA(nullptr, FALSE, name.c_str());
            return mutex != nullptr && WaitForSingleObject(mutex, 0) == WAIT_OBJECT_0 ? 0 : 1;
        });
        EXPECT_EQ(sessionless.wait(), scope == "Global\\" ? 1 : 0) << scope;
        CloseHandle(held);
    }
}

// A "Global\" object whose list grants everyone access is open to every user, whatever umask
// its creator has; that user's own objects without a session leave no descriptor open.
TEST(PosixLayer, AGlobalObjectThatGrantsEveryoneIsOpenToAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root, to be another user";
    const std::string name = "Global\\ovotest-everyone-" + std::to_string(getpid());
    ovo::win32::SecurityAttributes everyone(ovo::win32::SecurityAttributes::SA_World, SYNCHRONIZE);
    const mode_t umaskBefore = umask(077);
    HANDLE mutex = CreateMutexA(everyone, FALSE, name.c_str());
    umask(umaskBefore);
    ASSERT_NE(mutex, nullptr) << GetLastError();
    ovo_test::ChildProcess otherUser([&] {
        if (setgid(65534) != 0 || setuid(65534) != 0)
            return 3;
        unsetenv("XDG_RUNTIME_DIR"); // without a session: its names are searched for each use
        const int firstFree = dup(0);
        close(firstFree);
        for (int i = 0; i < 64; ++i)
            CloseHandle(CreateMutexA(nullptr, FALSE, "Local\\ovotest-sessionless"));
        return dup(0) != firstFree ? 2 : OpenMutexA(SYNCHRONIZE, FALSE, name.c_str()) != nullptr ? 0 : 1;
    });
    EXPECT_EQ(otherUser.wait(), 0) << "1: refused to another user; 2: descriptors left open by its own objects";
    CloseHandle(mutex);
}
