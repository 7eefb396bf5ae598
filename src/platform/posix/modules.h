// Modules, the current process, the current directory and environment variables in the
// POSIX layer.
#ifndef OVO_SRC_PLATFORM_POSIX_MODULES_H
#define OVO_SRC_PLATFORM_POSIX_MODULES_H

#include "platform/posix/win32_types.h"

using HMODULE = void*;
using FARPROC = void*;

const DWORD ERROR_MOD_NOT_FOUND = 126;
const DWORD ERROR_PROC_NOT_FOUND = 127;
const DWORD ERROR_BAD_EXE_FORMAT = 193;
const DWORD ERROR_ENVVAR_NOT_FOUND = 203;

// dlopen with the path unchanged; on failure Windows' code: ERROR_MOD_NOT_FOUND for ""
// (not the main program), a file that is not there or a directory, ERROR_ACCESS_DENIED for
// a directory named with a final dot, ERROR_BAD_EXE_FORMAT for any other file, and
// dlerror()'s text kept for the thread (see loadFailureText).
HMODULE LoadLibraryA(LPCSTR fileName);
BOOL FreeLibrary(HMODULE module);
// A module this process has loaded already, without a further reference; the layer knows
// no module of Windows ("kernel32.dll"): null with ERROR_MOD_NOT_FOUND.
HMODULE GetModuleHandleA(LPCSTR name);
// The pseudo handle that stands for the calling process.
HANDLE GetCurrentProcess();
// A null module finds nothing, as on Windows (not the process's global symbols).
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
BOOL SetCurrentDirectoryA(LPCSTR path);
// Size 0 or a buffer too small: the size needed with the NUL; else the length copied.
// 0 with ERROR_ENVVAR_NOT_FOUND when the variable is not set.
DWORD GetEnvironmentVariableA(LPCSTR name, char* buffer, DWORD size);

#endif
