#include <ovo/win32/security_attributes.h>

#include "platform/win32.h"

namespace ovo {
namespace win32 {

bool IsWow64()
{
    // Looked up on every call: systems without the function answer false.
    using IsWow64Process = BOOL(WINAPI*)(HANDLE, BOOL*);
    const auto isWow64Process =
        reinterpret_cast<IsWow64Process>(reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleA("kernel32.dll"), "IsWow64Process")));
    if (isWow64Process == nullptr)
        return false;
    BOOL flag = 0;
    if (!isWow64Process(GetCurrentProcess(), &flag))
        return false;
    return flag == 1;
}

} // namespace win32
} // namespace ovo
