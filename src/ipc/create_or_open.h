// "Creates or joins" of the named objects: the create call first and, when the object exists
// and its list grants others less than a create asks for, the open call. An open that finds
// nothing means that the object's last holder closed it between the two calls: then both go
// again until one of them wins. Each round lost is a close by another process, so the bound
// is for a name that others make and close without pause, never reached otherwise.
#ifndef OVO_SRC_IPC_CREATE_OR_OPEN_H
#define OVO_SRC_IPC_CREATE_OR_OPEN_H

#include "platform/win32.h"

namespace ovo {
namespace ipc {

// The handle, or null with the last codes of both calls.
template <typename Create, typename Open>
HANDLE createOrOpen(Create create, Open open, unsigned long& createError, unsigned long& openError)
{
    const unsigned rounds = 1000;
    for (unsigned round = 1;; ++round) {
        if (HANDLE handle = create())
            return handle;
        createError = GetLastError();
        if (HANDLE handle = open())
            return handle;
        openError = GetLastError();
        if (createError != ERROR_ACCESS_DENIED || openError != ERROR_FILE_NOT_FOUND || round == rounds)
            return nullptr;
    }
}

} // namespace ipc
} // namespace ovo

#endif
