#include <ovo/ipc/system_mutex.h>

#include "ipc/create_or_open.h"
#include "ipc/object_name.h"
#include "ipc/owned_handle.h"
#include "platform/win32.h"

#include <ovo/strings.h>
#include <ovo/win32/security_attributes.h>

#include <stdexcept>

class SystemMutexImpl : public ovo::ipc::OwnedHandle {
public:
    using OwnedHandle::OwnedHandle;
};

namespace ovo {
namespace ipc {
namespace {

// Create first; a name that exists refuses the create call (its list grants others no
// more than SYNCHRONIZE) and is joined by the open call, which asks for no more.
HANDLE createOrOpen(const std::string& name)
{
    win32::SecurityAttributes security(win32::SecurityAttributes::SA_World, SYNCHRONIZE);
    unsigned long createError = 0, openError = 0;
    HANDLE handle =
        ipc::createOrOpen([&] { return CreateMutexA(security, FALSE, name.c_str()); },
                          [&] { return OpenMutexA(SYNCHRONIZE, FALSE, name.c_str()); }, createError, openError);
    if (handle == nullptr)
        throw std::runtime_error(format("::OpenMutex( '%s' ) failed. openError = %lu, createError = %lu", name.c_str(),
                                        openError, createError));
    return handle;
}

} // namespace

SystemMutex::SystemMutex(const std::string& name) : impl_(new SystemMutexImpl(createOrOpen(platformName(name)))) {}

SystemMutex::~SystemMutex() { delete impl_; }

void SystemMutex::lock() { WaitForSingleObject(impl_->handle, INFINITE); }

bool SystemMutex::lockReportingAbandonment() { return WaitForSingleObject(impl_->handle, INFINITE) == WAIT_ABANDONED; }

bool SystemMutex::tryLock(long milliseconds)
{
    const DWORD result = WaitForSingleObject(impl_->handle, static_cast<DWORD>(milliseconds));
    // An abandoned mutex is granted but answers false; it is let go again at once, so
    // that false always means "not held" and the caller owes no unlock.
    if (result == WAIT_ABANDONED)
        ReleaseMutex(impl_->handle);
    return result == WAIT_OBJECT_0;
}

void SystemMutex::unlock() { ReleaseMutex(impl_->handle); }

} // namespace ipc
} // namespace ovo
