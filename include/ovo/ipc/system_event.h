/// @file
/// An event that resets by itself: one set() lets one wait() through.
#ifndef OVO_IPC_SYSTEM_EVENT_H
#define OVO_IPC_SYSTEM_EVENT_H

#include <ovo/export.h>

#include <string>

class SystemEventImpl;

namespace ovo {
namespace ipc {

/// An event that resets by itself: one set() lets one wait() through.
///
/// Creates the event "Local\<name>", not set. The event grants others only the right to
/// wait on it, so a second constructor on a live name (in any process) fails with the
/// platform's "access denied" code: share the object, not the name, between threads.
///
/// The object keeps no state beyond its handle, so any thread may call it.
class OVO_API SystemEvent {
public:
    /// Creates the event of that name in the login session, not set.
    /// @throws std::runtime_error "::CreateEvent( 'NAME' ) failed: CODE".
    explicit SystemEvent(const std::string& name);
    /// Closes this handle.
    ~SystemEvent();

    /// Lets one waiter through, or the next wait() if none waits. Reports nothing.
    void set();
    /// Waits without limit until the event is set, and clears it. Reports nothing.
    void wait();

private:
    SystemEvent(const SystemEvent&) = delete;
    SystemEvent& operator=(const SystemEvent&) = delete;

    SystemEventImpl* impl_;
};

} // namespace ipc
} // namespace ovo

#endif
