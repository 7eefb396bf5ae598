#include "ipc/ipc_test.h"
#include "support/sanitizers.h"

namespace {

using Clock = std::chrono::steady_clock;
using ovo::ipc::SystemMutex;
using ovo_test::ChildProcess;
using ovo_test::waitForFile;

auto msSince(Clock::time_point start) { return (Clock::now() - start) / std::chrono::milliseconds(1); }

int tryInPeer(const std::string& n, const char* ms) { return ChildProcess("ipc_peer", {"try-mutex", n, ms}).wait(); }

class SystemMutexTest : public ovo_test::IpcTest {};

TEST_F(SystemMutexTest, ProcessesExcludeEachOtherWhicheverComesFirst)
{
    ChildProcess holder("ipc_peer", {"hold-mutex", name("m"), file("held"), file("release")});
    ASSERT_TRUE(waitForFile(file("held")));
    SystemMutex mutex(name("m")); // the create step is refused, the open step joins
    EXPECT_FALSE(mutex.tryLock(0));
    const auto start = Clock::now();
    EXPECT_FALSE(mutex.tryLock(1100)); // seconds and milliseconds
    EXPECT_GE(msSince(start), 1090);
    release("release");
    EXPECT_TRUE(mutex.tryLock(-1)); // granted as soon as the holder lets go
    EXPECT_EQ(holder.wait(), 0);
    EXPECT_EQ(tryInPeer(name("m"), "100"), 1);
    SystemMutex(name("m")); // another handle of this process, closed while held: nothing given up
    mutex.unlock();
    EXPECT_EQ(tryInPeer(name("m"), "0"), 0);
}

// A holder that was killed, or that let go of its last object of a held mutex, stops nobody:
// with no other holder the name is fresh at once; a process that held it too is told once
// that it was abandoned (tryLock answers false and holds nothing, lockReportingAbandonment
// true and holds it), and lock takes it.
TEST_F(SystemMutexTest, AHolderThatDiesOrDropsAHeldMutexStopsNobody)
{
    for (const std::string how : {"kill", "drop"})
        for (const std::string held : {"alone", "try", "lock", "report"}) {
#if defined(_WIN32)
            if (how == "drop" && held != "alone")
                break; // Windows gives the mutex up when the owning thread ends, not before
#endif
            const std::string tag = name(how + "-" + held);
            std::unique_ptr<SystemMutex> kept(held != "alone" ? new SystemMutex(tag) : nullptr);
            const char* command = how == "kill" ? "hold-mutex" : "drop-held-mutex";
            ChildProcess holder("ipc_peer", {command, tag, file(tag), file(tag + "-exit")});
            ASSERT_TRUE(waitForFile(file(tag)));
            if (how == "kill")
                holder.kill();
            SystemMutex mutex(tag);
            const auto start = Clock::now();
            const bool granted = held == "lock"     ? (mutex.lock(), true)
                                 : held == "report" ? mutex.lockReportingAbandonment()
                                                    : mutex.tryLock(1500);
            EXPECT_LT(msSince(start), 500) << tag;
            EXPECT_EQ(granted, held != "try") << tag;
            // Told once: held by nobody, and the next try takes it.
            EXPECT_TRUE(granted || (tryInPeer(tag, "0") == 0 && mutex.tryLock(0))) << tag;
            mutex.unlock();
            if (held == "report") { // told once
                EXPECT_FALSE(mutex.lockReportingAbandonment()) << tag;
                mutex.unlock();
            }
            release(tag + "-exit");
            EXPECT_TRUE(how == "kill" || holder.wait() == 0) << tag;
        }
    // Held by another thread of this process: the name is free for a fresh mutex.
    auto dropped = std::make_unique<SystemMutex>(name("thread"));
    dropped->lock(); // this thread keeps it; another one closes the last handle
    std::thread([&] { dropped.reset(); }).join();
    EXPECT_EQ(tryInPeer(name("thread"), "0"), 0);
}

#if !defined(_WIN32)
// A child made by fork holds copies of its parent's objects: whatever it does with them (its
// destructors, exit), they stay its parent's. A handle it opens itself is its own, and keeps
// the object when the parent lets go. A program started holds none of them.
TEST_F(SystemMutexTest, AForkedChildEndsNoneOfItsParentsObjects)
{
    const std::string blockName = name("forked-block"); // of this process's id
    auto mutex = std::make_unique<SystemMutex>(name("forked"));
    auto block = std::make_unique<ovo::ipc::SharedMemory>(blockName, 64);
    mutex->lock();
    ChildProcess child([&]() -> int { // ends as a program does, with the static destructors of its exit
        {
            ovo::ipc::SharedMemory own(blockName, 64);
            mutex.reset();
            block.reset();
            release("forked");
            ovo_test::waitForFile(file("go"));
        } // the last handle of the block: it ends
        std::exit(0);
    });
    ASSERT_TRUE(waitForFile(file("forked")));
    EXPECT_EQ(tryInPeer(name("forked"), "0"), 1); // still held here
    block.reset();
    // The child's own handle holds the block now.
    ChildProcess joiner("ipc_peer", {"memory", blockName, "64", "1", "8", file("joined"), file("go")});
    ASSERT_TRUE(waitForFile(file("joined")));
    EXPECT_EQ(ovo_test::readFile(file("joined")), "joined");
    release("go");
    EXPECT_EQ(joiner.wait(), 0);
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(ovo_test::runProgram("/bin/sh", {"-c", "ls -l /proc/self/fd/ | grep -c " + name("forked")}, file("fds")),
              1);
    EXPECT_EQ(ovo_test::readFile(file("fds")), "0\n") << "a descriptor of an object crossed exec";
    mutex->unlock();
}

// A child forked while another thread was making an object makes its own: it never inherits
// a lock of the library held by a thread that it does not have.
TEST_F(SystemMutexTest, AChildForkedWhileAThreadMakesObjectsMakesItsOwn)
{
#ifdef OVO_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer's own locks are not all held across fork: its children can hang in them";
#endif
    std::atomic<bool> stop{false};
    std::thread busy([&] {
        while (!stop)
            ovo::ipc::SharedMemory(name("busy"), 16);
    });
    unsigned hung = 0;
    for (int i = 0; i < 200; ++i)
        hung += ChildProcess([&] { return alarm(5), SystemMutex(name("child")), 0; }).wait() != 0;
    stop = true;
    busy.join();
    EXPECT_EQ(hung, 0u) << "children that did not make their object";
}
#endif

TEST_F(SystemMutexTest, AnEventLetsOneWaitThroughASetAndStaysSetForTheNext)
{
    ovo::ipc::SystemEvent event(name("event"));
    event.set();
    event.set(); // counts once
    event.wait();
    std::atomic<int> released{0};
    std::thread waiters[2];
    for (auto& waiter : waiters)
        waiter = std::thread([&] { event.wait(), ++released; });
    for (int expected = 1; expected <= 2; ++expected) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_EQ(released, expected - 1); // a wait blocks until the next set, one a set
        event.set();
    }
    for (auto& waiter : waiters)
        waiter.join();
    // Its list grants others the right to wait only: a second create on the live name fails.
    EXPECT_EQ(ovo_test::failureOf([&] { ovo::ipc::SystemEvent second(name("event")); }),
              "::CreateEvent( '" + name("event") + "' ) failed: 5");
}

} // namespace
