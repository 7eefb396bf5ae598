// The one platform handle of a named object's implementation, closed with it.
#ifndef OVO_SRC_IPC_OWNED_HANDLE_H
#define OVO_SRC_IPC_OWNED_HANDLE_H

#include "platform/win32.h"

namespace ovo {
namespace ipc {

class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle) : handle(handle) {}
    ~OwnedHandle() { CloseHandle(handle); }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;

    const HANDLE handle;
};

} // namespace ipc
} // namespace ovo

#endif
