// Every multi-step operation of the layer with the process that runs it killed inside it: a
// victim repeats the operation, a SIGKILL ends it at a random moment, and the row's check
// looks at what it left; 150 kills a row. After each check nothing of the row's names is
// stale, and after the row nothing of them is left at all.
#include "platform/sweep.h"
#include "support/temp_dir.h"

#include <ovo/ipc/system_mutex.h>

#include <gtest/gtest.h>

#include <random>
#include <thread>

namespace {

using namespace std::chrono_literals;
using ovo::ipc::SharedMemory;
using ovo::ipc::SystemMutex;
using ovo_test::Scene;
using Names = std::vector<std::string>;

struct KilledOperation {
    const char* operation;
    ovo_test::SweepRound victim; // one round of the operation, repeated until the kill
    // What must hold after a kill; `held` is what the test holds through the row.
    std::function<std::string(const Scene&, void* held)> check;
    // What the test holds through the row (the objects' other holders), and what it makes
    // before each victim starts.
    std::function<std::shared_ptr<void>(const Scene&)> hold = nullptr;
    std::function<void(const Scene&)> prepare = nullptr;
    std::chrono::microseconds window = 2ms; // the kill comes at a random moment within it
};

// The mutex taken twice (a recursive hold) and given up without unlocking.
std::string dropHeldMutex(const Scene& s)
{
    SystemMutex mutex(s.name);
    mutex.lock();
    mutex.lock();
    return "";
}

// The mutex is free for the next holder: an abandonment is told once (tryLock answers false
// for it and holds nothing), so the try after it takes the mutex.
std::string mutexGranted(const Scene& s, void*)
{
    SystemMutex mutex(s.name);
    return mutex.tryLock(10000) || mutex.tryLock(0)
               ? (mutex.unlock(), "")
               : "the mutex was not granted after its holder was killed, or its abandonment was told twice";
}

// The block that the test holds is joined with its bytes, and a block that nobody holds is
// made anew and empty (and filled, for the next to find).
std::string joinedAndFresh(const Scene& s)
{
    SharedMemory held(s.name + "-held", 4096), fresh(s.name + "-fresh", 65536);
    if (held.isCreated() || !ovo_test::allBytesAre(held, 'J'))
        return "a block that another process holds was not joined with its bytes";
    const bool made = fresh.isCreated() && ovo_test::allBytesAre(fresh, 0);
    ovo_test::fillBytes(fresh, 0xA5);
    return made ? "" : "a block that nobody held was not made anew and empty";
}

// What a killed set left: the old text or the new one, and a set after it holds.
std::string valueWhole(const Scene& s, void*)
{
    const ovo::win32::registry key = ovo_test::rowKey(s);
    const std::string text = key.queryStringValue("text", "missing");
    if (!ovo_test::isRowText(text))
        return "a killed set left neither the old nor the new text: " + text.substr(0, 16);
    key.setStringValue("text", ovo_test::rowText(0));
    return key.queryStringValue("text", "") == ovo_test::rowText(0) ? "" : "a set after the kill did not hold";
}

const KilledOperation operations[] = {
    {"set of a registry value", ovo_test::setRowTexts, valueWhole,
     [](const Scene& s) { return ovo_test::rowKey(s).setStringValue("text", ovo_test::rowText(0)), nullptr; }},
    {"last close of a held mutex", dropHeldMutex, mutexGranted},
    {"close of a held mutex that others hold", dropHeldMutex, mutexGranted,
     [](const Scene& s) -> std::shared_ptr<void> { return std::make_shared<SystemMutex>(s.name); }},
    {"create and join", joinedAndFresh, [](const Scene& s, void*) { return joinedAndFresh(s); },
     [](const Scene& s) -> std::shared_ptr<void> {
         auto held = std::make_shared<SharedMemory>(s.name + "-held", 4096);
         ovo_test::fillBytes(*held, 'J');
         return held;
     }},
    {"sweep of stale objects", [](const Scene&) { return ovo::ipc::removeStaleNamedObjects(), ""; },
     [](const Scene& s, void*) { // what the killed sweep left, the next one takes
         const bool kept = ovo_test::objectsNamed(s.name + "-held") == Names{s.name + "-held"};
         return ovo::ipc::removeStaleNamedObjects(), kept ? "" : "an object that the test holds was swept away";
     },
     [](const Scene& s) -> std::shared_ptr<void> { return std::make_shared<SystemMutex>(s.name + "-held"); },
     [](const Scene& s) { // three blocks of a process that dies as a crash ends it: its files stay
         ovo_test::ChildProcess([&] {
             for (const char* tag : {"-stale0", "-stale1", "-stale2"})
                 new SharedMemory(s.name + tag, 4096);
             return 0;
         }).wait();
     },
     300us},
};

void PrintTo(const KilledOperation& row, std::ostream* out) { *out << row.operation; }

class KillSweep : public ::testing::TestWithParam<KilledOperation> {};

TEST_P(KillSweep, WhatAKilledProcessLeftKeepsEveryInvariant)
{
    const KilledOperation& row = GetParam();
    const ovo_test::TempDir dir;
    const Scene scene{ovo_test::sweepName(row.operation), dir.string(), ""};
    std::shared_ptr<void> held = row.hold ? row.hold(scene) : nullptr;
    std::mt19937 random(20261125);
    std::uniform_int_distribution<long long> moment(0, row.window.count());
    for (unsigned kill = 0; kill < ovo_test::sweepRounds(150); ++kill) {
        if (row.prepare)
            row.prepare(scene);
        const auto victim = ovo_test::repeated(row.victim, scene, 0);
        ASSERT_EQ(victim->heard(1), "r") << "kill " << kill;
        std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
        ASSERT_EQ(victim->kill(), 137) << "kill " << kill << ": " << victim->heard();
        ASSERT_EQ(row.check(scene, held.get()), "") << "after kill " << kill;
        for (const std::string& object : ovo_test::objectsNamed(scene.name))
            ASSERT_EQ(object.find("(stale)"), std::string::npos) << object << " after kill " << kill;
    }
    held.reset();
    EXPECT_EQ(ovo_test::objectsNamed(scene.name), Names{}) << "left behind";
}

INSTANTIATE_TEST_SUITE_P(Operations, KillSweep, ::testing::ValuesIn(operations),
                         [](const auto& row) { return ovo_test::identifierOf(row.param.operation); });

} // namespace
