#include "ipc/ipc_test.h"

#include <ovo/ipc/shared_memory.h>

#include <algorithm>
#include <stdexcept>

namespace {

using ovo::ipc::SharedMemory;
using ovo_test::ChildProcess;
using ovo_test::readFile;
using ovo_test::waitForFile;

unsigned char* bytes(const SharedMemory& memory) { return static_cast<unsigned char*>(memory.begin()); }

class SharedMemoryTest : public ovo_test::IpcTest {};

TEST_F(SharedMemoryTest, TheFirstObjectCreatesAndTheSecondJoinsTheSameBytes)
{
    SharedMemory first(name("block"), 10000);
    SharedMemory second(name("block"), 10000);
    EXPECT_TRUE(first.isCreated());
    EXPECT_FALSE(second.isCreated());
    EXPECT_EQ(static_cast<char*>(first.end()) - static_cast<char*>(first.begin()), 10000);
    EXPECT_TRUE(std::all_of(bytes(first), bytes(first) + 10000, [](unsigned char b) { return b == 0; }));
    bytes(first)[9999] = 0xA5;
    bytes(second)[0] = 0x5A;
    EXPECT_EQ(bytes(second)[9999], 0xA5);
    EXPECT_EQ(bytes(first)[0], 0x5A);
}

TEST_F(SharedMemoryTest, EachObjectsEndComesFromItsOwnSize)
{
    SharedMemory first(name("ends"), 8000);
    SharedMemory smaller(name("ends"), 100);
    EXPECT_EQ(static_cast<char*>(smaller.end()) - static_cast<char*>(smaller.begin()), 100);
    try {
        SharedMemory larger(name("ends"), 20000);
        ADD_FAILURE() << "a view beyond the block";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), "::MapViewOfFile( size = 20000 ) failed: 5");
    }
}

TEST_F(SharedMemoryTest, AnotherProcessJoinsAndWritesAreSeenBothWays)
{
    SharedMemory memory(name("shared"), 4096);
    bytes(memory)[10] = 0x42;
    ChildProcess peer("ipc_peer", {"memory", name("shared"), "4096", "11", "171", file("ready"), file("release")});
    ASSERT_TRUE(waitForFile(file("ready")));
    EXPECT_EQ(readFile(file("ready")), "joined");
    EXPECT_EQ(bytes(memory)[11], 171);
    std::ofstream(file("release")).put('x');
    EXPECT_EQ(peer.wait(), 0);
    EXPECT_EQ(bytes(memory)[10], 0x42); // the peer's leaving ends nothing
}

TEST_F(SharedMemoryTest, ABlockMadeByAnotherProcessIsJoined)
{
    ChildProcess peer("ipc_peer", {"memory", name("theirs"), "4096", "0", "7", file("ready"), file("release")});
    ASSERT_TRUE(waitForFile(file("ready")));
    EXPECT_EQ(readFile(file("ready")), "created");
    {
        SharedMemory memory(name("theirs"), 4096);
        EXPECT_FALSE(memory.isCreated());
        EXPECT_EQ(bytes(memory)[0], 7);
    }
    std::ofstream(file("release")).put('x');
    EXPECT_EQ(peer.wait(), 0);
}

TEST_F(SharedMemoryTest, AfterTheLastHolderABlockIsNewAndEmpty)
{
    {
        SharedMemory memory(name("again"), 64);
        bytes(memory)[0] = 1;
    }
    {
        SharedMemory memory(name("again"), 64);
        EXPECT_TRUE(memory.isCreated());
        EXPECT_EQ(bytes(memory)[0], 0);
    }
    // The same when every holder was killed.
    for (int holders : {1, 2}) {
        std::vector<std::unique_ptr<ChildProcess>> peers;
        for (int i = 0; i < holders; ++i) {
            const std::string ready = file("killed" + std::to_string(holders) + std::to_string(i));
            peers.emplace_back(new ChildProcess("ipc_peer", {"memory", name("killed"), "64", "3", "9", ready, "-"}));
            ASSERT_TRUE(waitForFile(ready));
        }
        for (auto& peer : peers)
            peer->kill();
        SharedMemory memory(name("killed"), 64);
        EXPECT_TRUE(memory.isCreated());
        EXPECT_EQ(bytes(memory)[3], 0);
    }
}

} // namespace
