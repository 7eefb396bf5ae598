// Linux: each user's names are a namespace of that user's own, and what killed holders
// left behind is listed (also by `ovo objects`) and swept away.
#include "ipc/ipc_test.h"

#include <sstream>
#include <sys/stat.h>

namespace {

using ovo::ipc::SystemMutex;

int peerAsNobody(std::vector<std::string> a)
{
    a.insert(a.begin(), {"--reuid=65534", "--regid=65534", "--clear-groups", ovo_test::siblingProgram("ipc_peer")});
    return ovo_test::runProgram("/usr/bin/setpriv", a);
}

class UserScopeTest : public ovo_test::IpcTest {
protected:
    void killHolderOf(const std::string& block)
    {
        ovo_test::ChildProcess peer("ipc_peer", {"memory", name(block), "64", "0", "1", file(block), "-"});
        ASSERT_TRUE(ovo_test::waitForFile(file(block)));
        peer.kill();
    }
    int tool(const std::vector<std::string>& args) { return ovo_test::runProgram("ovo", args, file("out")); }
    // The line of `ovo objects` about the object, or "none".
    std::string listed(const std::string& tag)
    {
        std::istringstream lines(tool({"objects"}) == 0 ? ovo_test::readFile(file("out")) : "");
        for (std::string line; std::getline(lines, line);)
            if (line.find(" " + name(tag)) != std::string::npos)
                return line;
        return "none";
    }
};

TEST_F(UserScopeTest, AnotherUsersProcessGetsObjectsOfItsOwn)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may run a process as another user";
    SystemMutex mutex(name("mine"));
    mutex.lock();
    EXPECT_EQ(peerAsNobody({"try-mutex", name("mine"), "0"}), 0); // its own, free
    ovo::ipc::MessageChannel channel(name("channel"), 8192);
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
        ASSERT_FALSE(fifo ? mkfifo(path.c_str(), 0600) : (std::ofstream{path}, chown(path.c_str(), 65534, 65534)));
        EXPECT_EQ(ovo_test::failureOf([&] { SystemMutex mutex(name("taken")); }),
                  "::OpenMutex( 'Local\\" + name("taken") + "' ) failed. openError = 5, createError = 5");
        EXPECT_TRUE(std::filesystem::remove(path));
    }
}

TEST_F(UserScopeTest, ObjectsOfKilledHoldersAreListedAndSweptAway)
{
    if (!std::filesystem::exists(ovo_test::siblingProgram("ovo")))
        GTEST_SKIP() << "built without the ovo tool";
    ovo::ipc::SharedMemory live(name("live"), 100);
    killHolderOf("stale");
    EXPECT_EQ(listed("live"), "live  shared memory " + name("live") + "  100 bytes");
    EXPECT_EQ(listed("stale"), "stale shared memory " + name("stale") + "  64 bytes");
    EXPECT_EQ(tool({"objects", "clean"}), 0);
    EXPECT_EQ(ovo_test::readFile(file("out")).compare(0, 8, "removed "), 0);
    EXPECT_EQ(listed("stale"), "none");
    killHolderOf("swept");
    SystemMutex fresh(name("fresh")); // a create sweeps
    EXPECT_EQ(listed("swept"), "none");
    EXPECT_EQ(listed("fresh"), "live  mutex         " + name("fresh"));
    EXPECT_EQ(tool({"objects", "stale"}), 2);
}

// A user of the test's own, whose objects no other test makes, kills or sweeps meanwhile.
TEST_F(UserScopeTest, CleanRemovesExactlyTheStaleObjectsAndSaysHowMany)
{
    if (geteuid() != 0 || !std::filesystem::exists(ovo_test::siblingProgram("ovo")))
        GTEST_SKIP() << "needs root, to run processes as a user of the test's own, and the ovo tool";
    const std::string user = std::to_string(40000 + getpid() % 20000);
    const auto asUser = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"--reuid=" + user, "--regid=" + user, "--clear-groups"});
        return words;
    };
    std::filesystem::permissions(std::filesystem::path(file("out")).parent_path(), std::filesystem::perms::all);
    std::vector<std::unique_ptr<ovo_test::ChildProcess>> holders; // both at once: a create sweeps
    for (const std::string block : {"first", "second"}) {
        holders.push_back(std::make_unique<ovo_test::ChildProcess>(
            "/usr/bin/setpriv",
            asUser({ovo_test::siblingProgram("ipc_peer"), "memory", name(block), "64", "0", "1", file(block), "-"})));
        ASSERT_TRUE(ovo_test::waitForFile(file(block)));
    }
    for (const auto& holder : holders)
        holder->kill();
    for (const char* removed : {"removed 2 stale objects\n", "removed 0 stale objects\n"}) {
        EXPECT_EQ(ovo_test::runProgram("/usr/bin/setpriv",
                                       asUser({ovo_test::siblingProgram("ovo"), "objects", "clean"}), file("out")),
                  0);
        EXPECT_EQ(ovo_test::readFile(file("out")), removed);
    }
}

} // namespace
