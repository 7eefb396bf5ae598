// What the inter-process tests share: names of their own, files that pass signs between
// processes, the text of an exception, and the check that nothing of their names is left.
#ifndef OVO_TESTS_IPC_IPC_TEST_H
#define OVO_TESTS_IPC_IPC_TEST_H

#include "support/child_process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#if defined(_WIN32)
#  include <process.h>
#  define ovo_test_pid _getpid
#else
#  include <unistd.h>
#  define ovo_test_pid getpid
#endif

namespace ovo_test {

class IpcTest : public ::testing::Test {
protected:
    // A name no other test run uses.
    static std::string name(const std::string& tag) { return prefix() + tag; }

    std::string file(const std::string& name) const { return (dir_.path() / name).string(); }
    void release(const std::string& name) const { std::ofstream(file(name)).put('x'); }

    // The files of this run's objects that the library's layer keeps (none on Windows).
    static std::vector<std::string> leftovers()
    {
        std::vector<std::string> found;
#if !defined(_WIN32)
        for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
            const std::string fileName = entry.path().filename().string();
            if (fileName.find(prefix()) != std::string::npos)
                found.push_back(fileName);
        }
#endif
        return found;
    }

    void TearDown() override { EXPECT_EQ(leftovers(), std::vector<std::string>()) << "objects left behind"; }

private:
    static std::string prefix() { return "ovotest-" + std::to_string(ovo_test_pid()) + "-"; }

    TempDir dir_;
};

// What `make` throws, or "" when it throws nothing.
template <typename Make>
std::string thrownBy(Make make)
{
    try {
        make();
    } catch (const std::exception& error) {
        return error.what();
    }
    return std::string();
}

} // namespace ovo_test

#endif
