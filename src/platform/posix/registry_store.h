// The registry of the POSIX layer: a tree of directories, one per key, under one
// directory per root key; each value of a key is one file in its directory.
//
//   HKEY_CURRENT_USER   $XDG_CONFIG_HOME/ovosystem/registry (or ~/.config/ovosystem/registry)
//   HKEY_LOCAL_MACHINE  the first of $XDG_CONFIG_DIRS (or /etc/xdg), then ovosystem/registry
//
// Key and value names compare without case, as on Windows: each is stored folded to lower
// case, every byte but letters, digits and "._-" written as %XX ("." and ".." as %2E), so
// that every name Windows takes is kept and none reaches outside the tree. As on Windows
// empty key path elements count for nothing, and a leading backslash (ERROR_BAD_PATHNAME)
// or a key name of more than 255 characters (ERROR_INVALID_PARAMETER) is refused.
//
// An open key holds a descriptor of its directory: what happens to the names on the way
// to it later does not move it, and no element of the store is reached through a symbolic
// link that another user planted (see foreign_links.h). A value write renames a complete
// new file over the value's under an exclusive lock of the key's directory: a set costs
// the value written, a query the value read (no lock: a reader opens the old file or the
// new one), and readers see the old or the new value, never a torn one, also when a
// writer dies. RegFlushKey makes the key's values durable.
#ifndef OVO_SRC_PLATFORM_POSIX_REGISTRY_STORE_H
#define OVO_SRC_PLATFORM_POSIX_REGISTRY_STORE_H

#include "platform/posix/win32_types.h"

using ovo::win32::HKEY;
using PHKEY = HKEY*;
using REGSAM = DWORD;
using LPBYTE = BYTE*;
using LPSTR = char*;

const DWORD REG_NONE = 0;
const DWORD REG_SZ = 1;
const DWORD REG_EXPAND_SZ = 2;
const DWORD REG_BINARY = 3;
const DWORD REG_DWORD = 4;
const DWORD REG_OPTION_NON_VOLATILE = 0;
const DWORD REG_CREATED_NEW_KEY = 1;
const DWORD REG_OPENED_EXISTING_KEY = 2;

const REGSAM KEY_QUERY_VALUE = 0x0001;
const REGSAM KEY_SET_VALUE = 0x0002;
const REGSAM KEY_CREATE_SUB_KEY = 0x0004;
const REGSAM KEY_WOW64_64KEY = 0x0100;
const REGSAM KEY_READ = 0x20019;
const REGSAM KEY_WRITE = 0x20006;
const REGSAM KEY_ALL_ACCESS = 0xF003F;

const DWORD ERROR_BAD_PATHNAME = 161;
const DWORD ERROR_MORE_DATA = 234;

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, PHKEY result);
LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options, REGSAM access,
                     LPSECURITY_ATTRIBUTES security, PHKEY result, LPDWORD disposition);
LONG RegCloseKey(HKEY key);
LONG RegFlushKey(HKEY key);
// A null name or "" is the key's unnamed value. With no data address the type and size
// are given; a buffer too small gets ERROR_MORE_DATA and the size needed (not the type).
LONG RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size);
LONG RegDeleteValueA(HKEY key, LPCSTR name);

#endif
