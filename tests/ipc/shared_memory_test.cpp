#include "ipc/ipc_test.h"

#include <algorithm>

namespace {

using ovo::ipc::SharedMemory;
using ovo::ipc::SystemMutex;

unsigned char* bytes(const SharedMemory& memory) { return static_cast<unsigned char*>(memory.begin()); }
long length(const SharedMemory& block) { return static_cast<char*>(block.end()) - static_cast<char*>(block.begin()); }

class SharedMemoryTest : public ovo_test::IpcTest {};

TEST_F(SharedMemoryTest, TheFirstObjectCreatesAndOthersJoinTheSameBytesWithTheirOwnEnd)
{
    SharedMemory first(name("block"), 10000);
    SharedMemory second(name("block"), 100);
    EXPECT_EQ(std::make_pair(first.isCreated(), second.isCreated()), std::make_pair(true, false));
    EXPECT_EQ(std::make_pair(length(first), length(second)), std::make_pair(10000L, 100L));
    EXPECT_TRUE(std::all_of(bytes(first), bytes(first) + 10000, [](unsigned char b) { return b == 0; }));
    bytes(first)[99] = 0xA5;
    bytes(second)[0] = 0x5A;
    EXPECT_EQ(bytes(second)[99], 0xA5);
    EXPECT_EQ(bytes(first)[0], 0x5A);
}

#if !defined(_WIN32)
// A block's memory is reserved when it is made: a file system too small fails the constructor
// with the code of memory that cannot be committed, and a block that was made stays writable
// however full its file system gets (a write never ends the process with SIGBUS). Both in a
// file system of 1 MiB of a mount namespace of their own.
TEST_F(SharedMemoryTest, AFullFileSystemFailsTheConstructorAndNeverAWrite)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may mount a file system of its own";
    const std::string peer = ovo_test::siblingProgram("ipc_peer") + " memory-fill " + name("full") + " ";
    const std::string script = "mount -t tmpfs -o size=1m tmpfs /dev/shm && mount --bind /dev/shm /run && "
                               "unset XDG_RUNTIME_DIR && for size in 8388608 524288; do " +
                               peer + "$size /dev/shm/filler 2>&1; echo \"status $?\"; done";
    ASSERT_EQ(
        ovo_test::runProgram("/usr/bin/unshare", {"-m", "--propagation", "private", "sh", "-c", script}, file("out")),
        0);
    EXPECT_EQ(ovo_test::readFile(file("out")), "ipc_peer: ::OpenFileMapping( 'Local\\" + name("full") +
                                                   "' ) failed. openError = 2, createError = 1455\nstatus 4\n"
                                                   "status 0\n");
}
#endif

// Names reach the platform as they are, after "Local\": what Windows accepts works, and
// nothing lands outside the layer's own place.
TEST_F(SharedMemoryTest, SlashesAndDotsInANameAreOrdinaryCharacters)
{
    for (const std::string tail : {"a/b", "..", "../../../tmp/escape", "/", ".%2F", "sp ace", "\xC3\xA9t\xC3\xA9"}) {
        SharedMemory memory(name(tail), 64);
        EXPECT_FALSE(SharedMemory(name(tail), 64).isCreated()) << tail;
        SystemMutex mutex(name(tail) + "_lock");
#if !defined(_WIN32)
        EXPECT_FALSE(std::filesystem::exists("/tmp/escape"));
        EXPECT_EQ(leftovers().size(), 2u) << tail; // the block and the mutex, each one file
#endif
    }
}

} // namespace
