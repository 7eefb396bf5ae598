// An event that resets by itself: one set() lets one wait() through.
#ifndef OVO_IPC_SYSTEM_EVENT_H
#define OVO_IPC_SYSTEM_EVENT_H

#include <ovo/export.h>

#include <string>

class SystemEventImpl;

namespace ovo {
namespace ipc {

// Creates the event "Local\<name>", not set. The event grants others only the right to
// wait on it, so a second constructor on a live name (in any process) fails with the
// platform's "access denied" code: share the object, not the name, between threads.
class OVO_API SystemEvent {
public:
    explicit SystemEvent(const std::string& name);
    ~SystemEvent();

    void set();
    void wait();

private:
    SystemEvent(const SystemEvent&) = delete;
    SystemEvent& operator=(const SystemEvent&) = delete;

    SystemEventImpl* impl_;
};

} // namespace ipc
} // namespace ovo

#endif
