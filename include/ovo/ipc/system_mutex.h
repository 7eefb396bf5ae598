// A mutex that threads of different processes share by name.
#ifndef OVO_IPC_SYSTEM_MUTEX_H
#define OVO_IPC_SYSTEM_MUTEX_H

#include <ovo/export.h>

#include <string>

class SystemMutexImpl;

namespace ovo {
namespace ipc {

// Creates the mutex "Local\<name>" or joins it; it starts unowned. Each lock() or
// successful tryLock() is paired with one unlock() on the same thread. A holder that died
// with the mutex locked leaves it to the next lock(); tryLock() gives false for that one
// acquisition and the mutex is then held all the same (unlock it).
class OVO_API SystemMutex {
public:
    explicit SystemMutex(const std::string& name);
    // Does not unlock.
    ~SystemMutex();

    void lock();
    // Waits at most `milliseconds`: 0 tests without waiting, -1 waits without limit.
    bool tryLock(long milliseconds);
    void unlock();

private:
    SystemMutex(const SystemMutex&) = delete;
    SystemMutex& operator=(const SystemMutex&) = delete;

    SystemMutexImpl* impl_;
};

} // namespace ipc
} // namespace ovo

#endif
