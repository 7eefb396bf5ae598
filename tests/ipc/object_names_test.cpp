// Names reach the platform as they are, after "Local\": what Windows accepts works, what
// it refuses fails with its code, and nothing lands outside the layer's own place.
#include "ipc/ipc_test.h"

#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>

namespace {

using ovo::ipc::SharedMemory;
using ovo::ipc::SystemEvent;
using ovo::ipc::SystemMutex;
using ovo_test::thrownBy;

class ObjectNamesTest : public ovo_test::IpcTest {};

TEST_F(ObjectNamesTest, SlashesAndDotsAreOrdinaryCharacters)
{
    for (const std::string tail : {"a/b", "..", "../../../tmp/escape", "/", ".%2F", "sp ace", "\xC3\xA9t\xC3\xA9"}) {
        SCOPED_TRACE(tail);
        SharedMemory memory(name(tail), 64);
        SharedMemory same(name(tail), 64);
        EXPECT_TRUE(memory.isCreated());
        EXPECT_FALSE(same.isCreated());
        SystemMutex mutex(name(tail) + "_lock");
        EXPECT_TRUE(mutex.tryLock(0));
        mutex.unlock();
#if !defined(_WIN32)
        EXPECT_FALSE(std::filesystem::exists("/tmp/escape"));
        EXPECT_EQ(leftovers().size(), 2u); // the block and the mutex, each one file
#endif
    }
    SharedMemory memory(name("nul") + std::string("\0tail", 5), 64); // the name ends at a NUL
    EXPECT_FALSE(SharedMemory(name("nul"), 64).isCreated());
}

TEST_F(ObjectNamesTest, NamesThatWindowsRefusesFailWithItsCode)
{
    const struct {
        std::string name;
        unsigned long code;
    } cases[] = {
        {name("a\\b"), 3},                      // a further backslash: ERROR_PATH_NOT_FOUND
        {name(std::string(10000, 'x')), 206},   // ERROR_FILENAME_EXCED_RANGE
        {"", 123},                              // ERROR_INVALID_NAME
    };
    for (const auto& refused : cases) {
        const std::string platformName = "Local\\" + refused.name;
        const std::string code = std::to_string(refused.code);
        const std::string codes = "openError = " + code + ", createError = " + code;
        EXPECT_EQ(thrownBy([&] { SystemMutex mutex(refused.name); }), "::OpenMutex( '" + platformName + "' ) failed. " + codes);
        EXPECT_EQ(thrownBy([&] { SharedMemory memory(refused.name, 64); }),
                  "::OpenFileMapping( '" + platformName + "' ) failed. " + codes);
        EXPECT_EQ(thrownBy([&] { SystemEvent event(refused.name); }), "::CreateEvent( '" + refused.name + "' ) failed: " + code);
    }
}

// Mutexes, events and blocks share one namespace, as on Windows.
TEST_F(ObjectNamesTest, ANameTakenByAnotherKindOfObjectIsRefused)
{
    SystemMutex mutex(name("kind"));
    EXPECT_EQ(thrownBy([&] { SharedMemory memory(name("kind"), 64); }),
              "::OpenFileMapping( 'Local\\" + name("kind") + "' ) failed. openError = 6, createError = 6");
}

} // namespace
