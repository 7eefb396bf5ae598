// Thread-local last error, and errno values as Win32 codes, so that messages carry the
// same codes on every platform.
#include "platform/posix/handle.h"

#include <cerrno>

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

DWORD fromErrno(int error)
{
    switch (error) {
    case 0:
        return ERROR_SUCCESS;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
        return ERROR_ACCESS_DENIED;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EWOULDBLOCK:
        return ERROR_SHARING_VIOLATION;
    case EEXIST:
        return ERROR_FILE_EXISTS;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    case EIO:
    case ENXIO:
    case ENODEV:
        return ERROR_GEN_FAILURE;
    default:
        return ERROR_WRITE_FAULT;
    }
}

} // namespace

DWORD GetLastError() { return lastError; }

void SetLastError(DWORD code) { lastError = code; }

namespace ovo {
namespace posix {

DWORD setLastErrorFromErrno(int error)
{
    SetLastError(fromErrno(error));
    return lastError;
}

} // namespace posix
} // namespace ovo
