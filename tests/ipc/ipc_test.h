// What the inter-process tests and their peer share: names of their own, files that pass signs
// between processes, and the check that nothing of their names is left.
#ifndef OVO_TESTS_IPC_IPC_TEST_H
#define OVO_TESTS_IPC_IPC_TEST_H

#include "ipc/channel_ledger.h"
#include "support/failure_of.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/named_objects.h>
#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include <unistd.h>

namespace ovo_test {

class IpcTest : public ::testing::Test {
protected:
    // A name no other test run uses.
    static std::string name(const std::string& tag) { return prefix() + tag; }

    std::string file(const std::string& name) const { return (dir_.path() / name).string(); }
    void release(const std::string& name) const { std::ofstream(file(name)).put('x'); }

    // This run's objects that are left in this user's namespace (none show on Windows,
    // whose kernel ends them).
    static std::vector<std::string> leftovers()
    {
        std::vector<std::string> found;
        for (const ovo::ipc::ListedObject& object : ovo::ipc::namedObjects())
            if (object.name.find(prefix()) != std::string::npos)
                found.push_back(object.name);
        return found;
    }

    void TearDown() override { EXPECT_EQ(leftovers(), std::vector<std::string>()) << "objects left behind"; }

private:
    static std::string prefix() { return "ovotest-" + std::to_string(getpid()) + "-"; }

    TempDir dir_;
};

} // namespace ovo_test

#endif
