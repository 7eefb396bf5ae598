// Shared memory where the system runs short, and the names it takes. (That a block is made
// once, empty, and joined with its bytes by others: the kill sweep and the parity scenario;
// that a joiner sees the size it asked for: the channel's case of a smaller view.)
#include "ipc/ipc_test.h"

namespace {

using ovo::ipc::SharedMemory;
using ovo::ipc::SystemMutex;

class SharedMemoryTest : public ovo_test::IpcTest {};

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
