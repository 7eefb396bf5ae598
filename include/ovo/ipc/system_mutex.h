/// @file
/// A mutex that threads of different processes share by name.
#ifndef OVO_IPC_SYSTEM_MUTEX_H
#define OVO_IPC_SYSTEM_MUTEX_H

#include <ovo/export.h>

#include <string>

class SystemMutexImpl;

namespace ovo {
namespace ipc {

/// A mutex that threads of different processes share by name.
///
/// Creates the mutex "Local\<name>" or joins it; it starts unowned. Each lock() or
/// successful tryLock() is paired with one unlock() on the same thread. A holder that died
/// with the mutex locked leaves it to the next lock(); tryLock() gives false for that one
/// acquisition and lets the mutex go again at once, so that false always means "not held".
///
/// The object keeps no state beyond its handle, so any thread may call it.
class OVO_API SystemMutex {
public:
    /// Creates or joins the mutex of that name in the login session.
    /// @throws std::runtime_error "::OpenMutex( 'Local\NAME' ) failed. openError = CODE,
    ///         createError = CODE" when it can be neither created nor opened.
    explicit SystemMutex(const std::string& name);
    /// Closes this handle. Does not unlock.
    ~SystemMutex();

    /// Waits without limit until this thread holds the mutex. Reports nothing.
    void lock();
    /// Waits without limit until this thread holds the mutex, as lock() does, and tells
    /// whether the holder before died holding it (or let go of its last object of it): what
    /// the mutex guards may then be half changed, and this thread is the one to put it right.
    /// Each abandonment is told once, to the next owner; tryLock() tells it by false.
    /// @return true when the mutex was abandoned.
    bool lockReportingAbandonment();
    /// Waits at most `milliseconds`: 0 tests without waiting, -1 waits without limit.
    /// @return true when this thread holds the mutex now; false when the time ran out, the
    ///         wait failed or a dead holder had left the mutex.
    bool tryLock(long milliseconds);
    /// Ends this thread's hold of the mutex. Reports nothing.
    void unlock();

private:
    SystemMutex(const SystemMutex&) = delete;
    SystemMutex& operator=(const SystemMutex&) = delete;

    SystemMutexImpl* impl_;
};

} // namespace ipc
} // namespace ovo

#endif
