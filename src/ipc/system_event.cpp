#include <ovo/ipc/system_event.h>

#include "ipc/object_name.h"
#include "ipc/owned_handle.h"
#include "platform/win32.h"

#include <ovo/strings.h>
#include <ovo/win32/security_attributes.h>

#include <stdexcept>

class SystemEventImpl : public ovo::ipc::OwnedHandle {
public:
    using OwnedHandle::OwnedHandle;
};

namespace ovo {
namespace ipc {
namespace {

HANDLE create(const std::string& name)
{
    win32::SecurityAttributes security(win32::SecurityAttributes::SA_World, SYNCHRONIZE);
    HANDLE handle = CreateEventA(security, FALSE, FALSE, platformName(name).c_str());
    if (handle == nullptr)
        throw std::runtime_error(format("::CreateEvent( '%s' ) failed: %lu", name.c_str(),
                                        static_cast<unsigned long>(GetLastError())));
    return handle;
}

} // namespace

SystemEvent::SystemEvent(const std::string& name) : impl_(new SystemEventImpl(create(name))) {}

SystemEvent::~SystemEvent() { delete impl_; }

void SystemEvent::set() { SetEvent(impl_->handle); }

void SystemEvent::wait() { WaitForSingleObject(impl_->handle, INFINITE); }

} // namespace ipc
} // namespace ovo
