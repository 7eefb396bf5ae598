// Linux: each user's names are a namespace of that user's own, files left by killed
// holders are found and swept away, and `ovo objects` shows and cleans them.
#include "ipc/ipc_test.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/named_objects.h>
#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_mutex.h>

#include <sys/stat.h>

namespace {

using ovo::ipc::MessageChannel;
using ovo::ipc::SystemMutex;
using ovo_test::ChildProcess;
using ovo_test::runProgram;

const char nobody[] = "65534";

int peerAsNobody(std::vector<std::string> args)
{
    args.insert(args.begin(), {std::string("--reuid=") + nobody, std::string("--regid=") + nobody, "--clear-groups",
                               ovo_test::siblingProgram("ipc_peer")});
    return runProgram("setpriv", args);
}

// "live shared memory 64", or "none" when the name is not listed.
std::string listed(const std::string& name)
{
    for (const ovo::ipc::ListedObject& object : ovo::ipc::namedObjects())
        if (object.name == name)
            return (object.live ? "live " : "stale ") + object.kind + " " + std::to_string(object.size);
    return "none";
}

class UserScopeTest : public ovo_test::IpcTest {
protected:
    void kill(const std::string& holder)
    {
        ChildProcess peer("ipc_peer", {"memory", name(holder), "64", "0", "1", file(holder), "-"});
        ASSERT_TRUE(ovo_test::waitForFile(file(holder)));
        peer.kill();
    }
};

TEST_F(UserScopeTest, AnotherUsersProcessGetsObjectsOfItsOwn)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may run a process as another user";
    SystemMutex mutex(name("mine"));
    mutex.lock();
    EXPECT_EQ(peerAsNobody({"try-mutex", name("mine"), "0"}), 0); // its own, free
    MessageChannel channel(name("channel"), 8192);
    EXPECT_EQ(peerAsNobody({"channel-send", name("channel"), "8192", "2"}), 0); // both in an empty channel of its own
    EXPECT_EQ(channel.inQueue(), 0u);
    mutex.unlock();
}

// In a directory that everybody may write, anybody may make a file of a name first.
TEST_F(UserScopeTest, AFileThatIsNoObjectOfThisUserIsRefusedUntouched)
{
    const std::string path = "/dev/shm/ovosystem.u" + std::to_string(geteuid()) + "." + name("taken");
    for (const bool fifo : {true, false}) {
        if (!fifo && geteuid() != 0)
            GTEST_SKIP() << "only root may make a file of another user";
        ASSERT_EQ(fifo ? mkfifo(path.c_str(), 0600) : (std::ofstream(path) << "x", chown(path.c_str(), 65534, 65534)), 0);
        EXPECT_EQ(ovo_test::thrownBy([&] { SystemMutex mutex(name("taken")); }),
                  "::OpenMutex( 'Local\\" + name("taken") + "' ) failed. openError = 5, createError = 5");
        EXPECT_TRUE(std::filesystem::exists(path));
        std::filesystem::remove(path);
    }
}

TEST_F(UserScopeTest, ObjectsOfKilledHoldersAreListedAndSweptAway)
{
    ovo::ipc::SharedMemory live(name("live"), 100);
    kill("stale");
    EXPECT_EQ(listed(name("live")), "live shared memory 100");
    EXPECT_EQ(listed(name("stale")), "stale shared memory 64");
    const std::string output = file("objects.txt");
    EXPECT_EQ(runProgram(ovo_test::siblingProgram("ovo"), {"objects"}, output), 0);
    EXPECT_NE(ovo_test::readFile(output).find("stale shared memory " + name("stale") + "  64 bytes\n"), std::string::npos);
    EXPECT_EQ(runProgram(ovo_test::siblingProgram("ovo"), {"objects", "clean"}, output), 0);
    EXPECT_EQ(ovo_test::readFile(output).compare(0, 8, "removed "), 0);
    EXPECT_EQ(listed(name("stale")), "none");

    kill("swept");
    SystemMutex fresh(name("fresh")); // a create sweeps
    EXPECT_EQ(listed(name("swept")), "none");
    EXPECT_EQ(listed(name("live")), "live shared memory 100");
    EXPECT_EQ(runProgram(ovo_test::siblingProgram("ovo"), {"objects", "stale"}), 2);
}

} // namespace
