#include "platform/registry_calls.h"

namespace ovo {
namespace platform {
namespace registry {

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, PHKEY result)
{
    return ::RegOpenKeyExA(key, subKey, options, access, result);
}

LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options, REGSAM access,
                     LPSECURITY_ATTRIBUTES security, PHKEY result, LPDWORD disposition)
{
    return ::RegCreateKeyExA(key, subKey, reserved, keyClass, options, access, security, result, disposition);
}

LONG RegCloseKey(HKEY key) { return ::RegCloseKey(key); }
LONG RegFlushKey(HKEY key) { return ::RegFlushKey(key); }

LONG RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size)
{
    return ::RegQueryValueExA(key, name, reserved, type, data, size);
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size)
{
    return ::RegSetValueExA(key, name, reserved, type, data, size);
}

LONG RegDeleteValueA(HKEY key, LPCSTR name) { return ::RegDeleteValueA(key, name); }

} // namespace registry
} // namespace platform
} // namespace ovo
