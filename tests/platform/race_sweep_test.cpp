// Every pair of operations that two processes can race on one name, 10,000 rounds and more:
// each side is a process that repeats its operation and checks after every round what must
// hold; a companion goes on until the others are done. Afterwards nothing of the name is left.
#include "platform/sweep.h"
#include "support/temp_dir.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/system_mutex.h>

#include <gtest/gtest.h>

namespace {

using ovo::ipc::SharedMemory;
using ovo::ipc::SystemMutex;
using ovo_test::Scene;

struct Race {
    const char* operations;
    std::vector<ovo_test::SweepRound> sides;  // each repeated by a process of its own
    ovo_test::SweepRound companion = nullptr; // repeated while the sides run
};

const unsigned rounds = 10000;

// The mutex made or joined, held by nobody else (whoever holds it holds DIR/held), closed.
std::string mutexRound(const Scene& s)
{
    SystemMutex mutex(s.name);
    mutex.lock();
    const std::string mark = s.dir + "/held";
    const bool alone = std::filesystem::create_directory(mark);
    if (alone)
        std::filesystem::remove(mark);
    mutex.unlock();
    return alone ? "" : "two processes held the mutex at once";
}

std::string blockRound(const Scene& s) { return SharedMemory(s.name, 4096), ""; }

// The channel made or joined, a message sent and one taken, closed.
std::string channelRound(const Scene& s)
{
    ovo::ipc::MessageChannel channel(s.name, 8192);
    std::vector<unsigned char> body(8, 'm');
    if (!channel.send(1, body.data(), 8))
        return "a message was refused";
    return channel.recv(0, body) && body.size() == 8 ? "" : "the message sent was not there to take";
}

// A block that a process left by dying is taken over (fresh and empty), and stays in the
// namespace while held: a mutex cannot have its name. NAME0 to NAME99 in turn, left by one
// process every hundred rounds.
std::string takeOverRound(const Scene& s)
{
    static unsigned round = 0;
    const unsigned batch = 100, index = round++ % batch;
    if (index == 0)
        ovo_test::ChildProcess([&] {
            for (unsigned i = 0; i < batch; ++i)
                ovo_test::fillBytes(*new SharedMemory(s.name + std::to_string(i), 4096), 0x5A);
            return 0; // its descriptors go, its files stay: stale
        }).wait();
    SharedMemory block(s.name + std::to_string(index), 4096);
    if (!block.isCreated() || !ovo_test::allBytesAre(block, 0))
        return "a block that its holder left by dying was not made anew and empty";
    const bool refused = !ovo_test::failureOf([&] { SystemMutex mutex(s.name + std::to_string(index)); }).empty();
    return refused ? "" : "a block that is held was swept away: its name made a mutex";
}

// Reads the row's value: never a text that nobody wrote.
std::string queryRound(const Scene& s)
{
    static const ovo::win32::registry key = ovo_test::rowKey(s);
    return ovo_test::isRowText(key.queryStringValue("text", ovo_test::rowText(0))) ? "" : "a text that nobody wrote";
}

const Race races[] = {
    {"set and query of a registry value", {ovo_test::setRowTexts, queryRound}},
    {"create and last close of a mutex", {mutexRound, mutexRound}},
    {"create and last close of shared memory", {blockRound, blockRound}},
    {"create and last close of a channel", {channelRound, channelRound}},
    {"sweep and take-over of a stale object",
     {takeOverRound},
     [](const Scene&) { return ovo::ipc::removeStaleNamedObjects(), ""; }},
};

void PrintTo(const Race& row, std::ostream* out) { *out << row.operations; }

class RaceSweep : public ::testing::TestWithParam<Race> {};

TEST_P(RaceSweep, EveryRoundOfEverySideKeepsItsInvariants)
{
    const Race& race = GetParam();
    const ovo_test::TempDir dir;
    const Scene scene{ovo_test::sweepName(race.operations), dir.string(), ""};
    const auto companion = race.companion ? ovo_test::repeated(race.companion, scene, 0) : nullptr;
    ASSERT_TRUE(companion == nullptr || companion->heard(1) == "r");
    std::vector<std::unique_ptr<ovo_test::ChildProcess>> sides;
    for (const ovo_test::SweepRound& side : race.sides)
        sides.push_back(ovo_test::repeated(side, scene, ovo_test::sweepRounds(rounds)));
    for (auto& side : sides)
        EXPECT_EQ(side->wait(), 0) << side->heard();
    EXPECT_TRUE(companion == nullptr || companion->kill() == 137) << companion->heard();
    EXPECT_EQ(ovo_test::objectsNamed(scene.name), std::vector<std::string>{}) << "left behind";
}

INSTANTIATE_TEST_SUITE_P(Pairs, RaceSweep, ::testing::ValuesIn(races),
                         [](const auto& row) { return ovo_test::identifierOf(row.param.operations); });

} // namespace
