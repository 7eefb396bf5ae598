// What a HANDLE of the POSIX layer points at: one object per open handle, whatever kind
// of object it stands for. CloseHandle destroys it.
#ifndef OVO_SRC_PLATFORM_POSIX_HANDLE_H
#define OVO_SRC_PLATFORM_POSIX_HANDLE_H

#include "platform/posix/win32_types.h"

namespace ovo {
namespace posix {

// Each object carries the bits of the kinds it is, so that a handle's kind is checked by
// one compare on every call (a wait is on the fast path of every named mutex).
class KernelObject {
public:
    enum Kind : unsigned {
        fileKind = 1u << 0,
        serialPortKind = 1u << 1,
        waitableKind = 1u << 2,
        mutexKind = 1u << 3,
        eventKind = 1u << 4,
        mappingKind = 1u << 5,
    };
    static const unsigned kinds = 0; // every object is a KernelObject

    explicit KernelObject(unsigned kinds) : kinds_(kinds) {}
    virtual ~KernelObject() = default;
    bool is(unsigned kinds) const { return (kinds_ & kinds) == kinds; }

private:
    const unsigned kinds_;
};

// The object behind a handle, or null (with ERROR_INVALID_HANDLE set) when the handle is
// not one of this kind. `Kind::kinds` names the bits that make one.
template <typename Kind>
Kind* objectOf(HANDLE handle)
{
    auto* object = handle == INVALID_HANDLE_VALUE || handle == nullptr ? nullptr : static_cast<KernelObject*>(handle);
    if (object == nullptr || !object->is(Kind::kinds)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return static_cast<Kind*>(object);
}

// Sets the Win32 code that stands for errno's value and gives it.
DWORD setLastErrorFromErrno(int error);

} // namespace posix
} // namespace ovo

#endif
