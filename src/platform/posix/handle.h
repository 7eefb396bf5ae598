// What a HANDLE of the POSIX layer points at: one object per open handle, whatever kind
// of object it stands for. CloseHandle destroys it.
#ifndef OVO_SRC_PLATFORM_POSIX_HANDLE_H
#define OVO_SRC_PLATFORM_POSIX_HANDLE_H

#include "platform/posix/win32_types.h"

namespace ovo {
namespace posix {

class KernelObject {
public:
    virtual ~KernelObject() = default;
};

// The object behind a handle, or null (with ERROR_INVALID_HANDLE set) when the handle is
// not one of this kind.
template <typename Kind>
Kind* objectOf(HANDLE handle)
{
    auto* object = handle == INVALID_HANDLE_VALUE || handle == nullptr
                       ? nullptr
                       : dynamic_cast<Kind*>(static_cast<KernelObject*>(handle));
    if (object == nullptr)
        SetLastError(ERROR_INVALID_HANDLE);
    return object;
}

// Sets the Win32 code that stands for errno's value and gives it.
DWORD setLastErrorFromErrno(int error);

} // namespace posix
} // namespace ovo

#endif
