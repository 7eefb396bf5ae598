// The Win32 calls of the registry, under their own names in one namespace: the seam where
// a test build links scripted calls in place of the platform's
// (tests/fakes/scripted_registry.cpp). registry_calls.cpp forwards to the platform.
#ifndef OVO_SRC_PLATFORM_REGISTRY_CALLS_H
#define OVO_SRC_PLATFORM_REGISTRY_CALLS_H

#include "platform/win32.h"

namespace ovo {
namespace platform {
namespace registry {

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, PHKEY result);
LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options, REGSAM access,
                     LPSECURITY_ATTRIBUTES security, PHKEY result, LPDWORD disposition);
LONG RegCloseKey(HKEY key);
LONG RegFlushKey(HKEY key);
LONG RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size);
LONG RegDeleteValueA(HKEY key, LPCSTR name);

} // namespace registry
} // namespace platform
} // namespace ovo

#endif
