// Names reach the platform as they are, after "Local\": what Windows accepts works, what
// it refuses fails with its code, and nothing lands outside the layer's own place.
#include "ipc/ipc_test.h"

#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>

#include <stdexcept>

namespace {

using ovo::ipc::SharedMemory;
using ovo::ipc::SystemEvent;
using ovo::ipc::SystemMutex;

class ObjectNamesTest : public ovo_test::IpcTest {};

TEST_F(ObjectNamesTest, SlashesAndDotsAreOrdinaryCharacters)
{
    for (const std::string tail : {"a/b", "..", "../../../tmp/escape", "/", ".%2F", "sp ace", "\xC3\xA9t\xC3\xA9"}) {
        SCOPED_TRACE(tail);
        const std::string objectName = name(tail);
        SharedMemory memory(objectName, 64);
        SharedMemory same(objectName, 64);
        EXPECT_TRUE(memory.isCreated());
        EXPECT_FALSE(same.isCreated());
        SystemMutex mutex(objectName + "_lock");
        EXPECT_TRUE(mutex.tryLock(0));
        mutex.unlock();
#if !defined(_WIN32)
        EXPECT_FALSE(std::filesystem::exists("/tmp/escape"));
        EXPECT_EQ(leftovers().size(), 2u); // the block and the mutex, each one file
#endif
    }
}

TEST_F(ObjectNamesTest, TheNameEndsAtANul)
{
    SharedMemory memory(name("nul") + std::string("\0tail", 5), 64);
    SharedMemory same(name("nul"), 64);
    EXPECT_FALSE(same.isCreated());
}

struct RefusedName {
    const char* what;
    std::string tail;
    unsigned long code;
};

TEST_F(ObjectNamesTest, NamesThatWindowsRefusesFailWithItsCode)
{
    const RefusedName cases[] = {
        {"a further backslash", "a\\b", 3},    // ERROR_PATH_NOT_FOUND
        {"10,000 bytes", std::string(10000, 'x'), 206}, // ERROR_FILENAME_EXCED_RANGE
    };
    for (const RefusedName& refused : cases) {
        SCOPED_TRACE(refused.what);
        const std::string objectName = name(refused.tail);
        const std::string platformName = "Local\\" + objectName;
        const std::string codes = "openError = " + std::to_string(refused.code) +
                                  ", createError = " + std::to_string(refused.code);
        try {
            SystemMutex mutex(objectName);
            ADD_FAILURE() << "mutex made";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()), "::OpenMutex( '" + platformName + "' ) failed. " + codes);
        }
        try {
            SharedMemory memory(objectName, 64);
            ADD_FAILURE() << "block made";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()), "::OpenFileMapping( '" + platformName + "' ) failed. " + codes);
        }
        try {
            SystemEvent event(objectName);
            ADD_FAILURE() << "event made";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()), "::CreateEvent( '" + objectName + "' ) failed: " + std::to_string(refused.code));
        }
    }
}

TEST_F(ObjectNamesTest, AnEmptyNameIsRefused)
{
    try {
        SystemMutex mutex("");
        ADD_FAILURE() << "mutex made";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), "::OpenMutex( 'Local\\' ) failed. openError = 123, createError = 123");
    }
}

// Mutexes, events and blocks share one namespace, as on Windows.
TEST_F(ObjectNamesTest, ANameTakenByAnotherKindOfObjectIsRefused)
{
    SystemMutex mutex(name("kind"));
    try {
        SharedMemory memory(name("kind"), 64);
        ADD_FAILURE() << "block made";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()),
                  "::OpenFileMapping( 'Local\\" + name("kind") + "' ) failed. openError = 6, createError = 6");
    }
}

} // namespace
