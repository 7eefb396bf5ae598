#include "ipc/ipc_test.h"

#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using ovo::ipc::SystemEvent;
using ovo::ipc::SystemMutex;
using ovo_test::ChildProcess;
using ovo_test::waitForFile;

long msSince(Clock::time_point start)
{
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

class SystemMutexTest : public ovo_test::IpcTest {};

TEST_F(SystemMutexTest, AProcessThatComesSecondJoinsAndIsExcluded)
{
    const std::string mutexName = name("second");
    ChildProcess holder("ipc_peer", {"hold-mutex", mutexName, file("held"), file("release")});
    ASSERT_TRUE(waitForFile(file("held")));

    SystemMutex mutex(mutexName); // the create step is refused, the open step joins
    EXPECT_FALSE(mutex.tryLock(0));
    const auto start = Clock::now();
    EXPECT_FALSE(mutex.tryLock(100));
    EXPECT_GE(msSince(start), 90);
    EXPECT_LT(msSince(start), 2000);

    std::ofstream(file("release")).put('x');
    EXPECT_TRUE(mutex.tryLock(10000)); // granted as soon as the holder lets go
    mutex.unlock();
    EXPECT_EQ(holder.wait(), 0);
}

TEST_F(SystemMutexTest, AProcessThatComesFirstExcludesTheOther)
{
    const std::string mutexName = name("first");
    SystemMutex mutex(mutexName);
    mutex.lock();
    EXPECT_EQ(ChildProcess("ipc_peer", {"try-mutex", mutexName, "0"}).wait(), 1);
    EXPECT_EQ(ChildProcess("ipc_peer", {"try-mutex", mutexName, "100"}).wait(), 1);
    mutex.unlock();
    EXPECT_EQ(ChildProcess("ipc_peer", {"try-mutex", mutexName, "0"}).wait(), 0);
}

TEST_F(SystemMutexTest, ThreadsExcludeEachOtherAndAWaitEndsWithTheUnlock)
{
    SystemMutex mutex(name("threads"));
    ASSERT_TRUE(mutex.tryLock(0));
    std::atomic<bool> granted{false};
    std::thread other([&] {
        SystemMutex same(name("threads"));
        EXPECT_FALSE(same.tryLock(0));
        granted = same.tryLock(-1);
        same.unlock();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(granted);
    mutex.unlock();
    other.join();
    EXPECT_TRUE(granted);
}

TEST_F(SystemMutexTest, ADestroyedObjectLeavesTheMutexToItsOtherHolders)
{
    SystemMutex kept(name("kept"));
    {
        SystemMutex gone(name("kept"));
        kept.lock();
    }
    EXPECT_EQ(ChildProcess("ipc_peer", {"try-mutex", name("kept"), "0"}).wait(), 1);
    kept.unlock();
}

// A holder that died leaves the mutex abandoned: tryLock answers false for that one
// acquisition (and lets it go), lock takes it and goes on.
TEST_F(SystemMutexTest, AHolderKilledWhileHoldingDoesNotStopTheOthers)
{
    SystemMutex mutex(name("killed"));
    for (int round = 0; round < 2; ++round) {
        ChildProcess holder("ipc_peer", {"hold-mutex", name("killed"), file("held" + std::to_string(round)), "-"});
        ASSERT_TRUE(waitForFile(file("held" + std::to_string(round))));
        EXPECT_FALSE(mutex.tryLock(0));
        holder.kill();
        if (round == 0) {
            EXPECT_FALSE(mutex.tryLock(1000));
            EXPECT_TRUE(mutex.tryLock(0));
        } else {
            mutex.lock();
        }
        mutex.unlock();
    }
}

TEST_F(SystemMutexTest, AMutexOfAGoneNameIsFresh)
{
    {
        SystemMutex first(name("fresh"));
        first.lock();
        first.unlock();
    }
    ChildProcess holder("ipc_peer", {"hold-mutex", name("fresh"), file("held"), "-"});
    ASSERT_TRUE(waitForFile(file("held")));
    holder.kill();
    SystemMutex again(name("fresh")); // every holder died: a new, unowned mutex
    EXPECT_TRUE(again.tryLock(0));
    again.unlock();
}

TEST_F(SystemMutexTest, AnEventSetWithNobodyWaitingLetsOneWaitThrough)
{
    SystemEvent event(name("event"));
    event.set();
    event.set(); // counts once
    const auto start = Clock::now();
    event.wait();
    EXPECT_LT(msSince(start), 1000);

    std::atomic<int> released{0};
    std::thread waiter([&] {
        event.wait();
        ++released;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(released, 0); // the second wait blocks
    event.set();
    waiter.join();
    EXPECT_EQ(released, 1);
}

TEST_F(SystemMutexTest, OneSetReleasesOneOfSeveralWaiters)
{
    SystemEvent event(name("waiters"));
    std::atomic<int> released{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.emplace_back([&] {
            event.wait();
            ++released;
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    for (int expected = 1; expected <= 3; ++expected) {
        event.set();
        const auto start = Clock::now();
        while (released < expected && msSince(start) < 5000)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(released, expected);
    }
    for (auto& waiter : waiters)
        waiter.join();
}

// The event's list grants others the right to wait only, so a second create call on the
// live name is refused, in another process as in this one.
TEST_F(SystemMutexTest, ASecondEventOfALiveNameIsRefused)
{
    const std::string eventName = name("taken");
    SystemEvent event(eventName);
    const std::string expected = "::CreateEvent( '" + eventName + "' ) failed: 5";
    try {
        SystemEvent second(eventName);
        ADD_FAILURE() << "a second event of a live name";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), expected);
    }
    const std::string output = file("event.txt");
    EXPECT_EQ(ovo_test::runProgram(ovo_test::siblingProgram("ipc_peer"), {"event", eventName}, output), 3);
    EXPECT_EQ(ovo_test::readFile(output), expected);
}

} // namespace
