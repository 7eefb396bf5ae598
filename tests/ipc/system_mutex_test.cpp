#include "ipc/ipc_test.h"

#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using ovo::ipc::SystemMutex;
using ovo_test::ChildProcess;
using ovo_test::waitForFile;

long msSince(Clock::time_point start)
{
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

int tryInPeer(const std::string& n, const char* ms) { return ChildProcess("ipc_peer", {"try-mutex", n, ms}).wait(); }

class SystemMutexTest : public ovo_test::IpcTest {};

TEST_F(SystemMutexTest, ProcessesExcludeEachOtherWhicheverComesFirst)
{
    ChildProcess holder("ipc_peer", {"hold-mutex", name("m"), file("held"), file("release")});
    ASSERT_TRUE(waitForFile(file("held")));
    SystemMutex mutex(name("m")); // the create step is refused, the open step joins
    EXPECT_FALSE(mutex.tryLock(0));
    const auto start = Clock::now();
    EXPECT_FALSE(mutex.tryLock(100));
    EXPECT_GE(msSince(start), 90);
    release("release");
    EXPECT_TRUE(mutex.tryLock(-1)); // granted as soon as the holder lets go
    EXPECT_EQ(holder.wait(), 0);
    EXPECT_EQ(tryInPeer(name("m"), "100"), 1);
    mutex.unlock();
    EXPECT_EQ(tryInPeer(name("m"), "0"), 0);
}

// A holder that died leaves the mutex abandoned: tryLock answers false for that one
// acquisition (and lets it go), lock takes it and goes on.
TEST_F(SystemMutexTest, AHolderKilledWhileHoldingDoesNotStopTheOthers)
{
    for (const std::string tag : {"try", "lock", "alone"}) {
        std::unique_ptr<SystemMutex> kept(tag != "alone" ? new SystemMutex(name(tag)) : nullptr);
        ChildProcess holder("ipc_peer", {"hold-mutex", name(tag), file(tag), "-"});
        ASSERT_TRUE(waitForFile(file(tag)));
        holder.kill();
        SystemMutex mutex(name(tag)); // alone: its only holder died, a new, unowned mutex
        if (tag == "lock") {
            mutex.lock();
        } else {
            EXPECT_TRUE(tag == "alone" || !mutex.tryLock(1000));
            EXPECT_EQ(tryInPeer(name(tag), "0"), 0) << tag; // a false tryLock holds nothing
            EXPECT_TRUE(mutex.tryLock(0)) << tag;
        }
        mutex.unlock();
    }
}

// A process whose last object of a held mutex goes while it runs: a name that nobody
// else holds is fresh at once, and a holder elsewhere is told once that it was abandoned.
TEST_F(SystemMutexTest, AMutexDroppedWhileHeldBlocksNobody)
{
    for (const bool joined : {false, true}) {
#if defined(_WIN32)
        if (joined)
            break; // Windows gives the mutex up when the owning thread ends, not before
#endif
        const std::string tag = joined ? "joined" : "alone";
        std::unique_ptr<SystemMutex> kept(joined ? new SystemMutex(name(tag)) : nullptr);
        ChildProcess dropper("ipc_peer", {"drop-held-mutex", name(tag), file(tag), file(tag + "-exit")});
        ASSERT_TRUE(waitForFile(file(tag)));
        SystemMutex mutex(name(tag));
        const auto start = Clock::now();
        EXPECT_EQ(mutex.tryLock(1500), !joined) << tag;
        EXPECT_TRUE(mutex.tryLock(0)) << tag;
        EXPECT_LT(msSince(start), 500) << tag;
        mutex.unlock();
        release(tag + "-exit");
        EXPECT_EQ(dropper.wait(), 0);
    }
    // Held by another thread of this process: the name is free for a fresh mutex.
    auto dropped = std::make_unique<SystemMutex>(name("thread"));
    dropped->lock(); // this thread keeps it; another one closes the last handle
    std::thread([&] { dropped.reset(); }).join();
    EXPECT_EQ(tryInPeer(name("thread"), "0"), 0);
}

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
    EXPECT_EQ(ovo_test::thrownBy([&] { ovo::ipc::SystemEvent second(name("event")); }),
              "::CreateEvent( '" + name("event") + "' ) failed: 5");
}

} // namespace
