// The Win32 calls of a serial connection, under their own names in one namespace: the
// seam where a test build links scripted calls in place of the platform's
// (tests/fakes/scripted_serial.cpp). serial_calls.cpp forwards to the platform.
#ifndef OVO_SRC_PLATFORM_SERIAL_CALLS_H
#define OVO_SRC_PLATFORM_SERIAL_CALLS_H

#include "platform/win32.h"

namespace ovo {
namespace platform {
namespace serial {

HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                   DWORD creationDisposition, DWORD flagsAndAttributes, HANDLE templateFile);
BOOL CloseHandle(HANDLE file);
BOOL GetCommState(HANDLE file, LPDCB dcb);
BOOL SetCommState(HANDLE file, LPDCB dcb);
BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts);
BOOL SetupComm(HANDLE file, DWORD inQueue, DWORD outQueue);
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytesToRead, LPDWORD bytesRead, LPOVERLAPPED overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytesToWrite, LPDWORD bytesWritten, LPOVERLAPPED overlapped);
BOOL ClearCommError(HANDLE file, LPDWORD errors, LPCOMSTAT status);
BOOL PurgeComm(HANDLE file, DWORD flags);
DWORD GetLastError();

} // namespace serial
} // namespace platform
} // namespace ovo

#endif
