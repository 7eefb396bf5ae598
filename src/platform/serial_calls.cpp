#include "platform/serial_calls.h"

namespace ovo {
namespace platform {
namespace serial {

HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                   DWORD creationDisposition, DWORD flagsAndAttributes, HANDLE templateFile)
{
    return ::CreateFileA(fileName, desiredAccess, shareMode, security, creationDisposition, flagsAndAttributes,
                         templateFile);
}

BOOL CloseHandle(HANDLE file) { return ::CloseHandle(file); }
BOOL GetCommState(HANDLE file, LPDCB dcb) { return ::GetCommState(file, dcb); }
BOOL SetCommState(HANDLE file, LPDCB dcb) { return ::SetCommState(file, dcb); }
BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts) { return ::SetCommTimeouts(file, timeouts); }
BOOL SetupComm(HANDLE file, DWORD inQueue, DWORD outQueue) { return ::SetupComm(file, inQueue, outQueue); }

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytesToRead, LPDWORD bytesRead, LPOVERLAPPED overlapped)
{
    return ::ReadFile(file, buffer, bytesToRead, bytesRead, overlapped);
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytesToWrite, LPDWORD bytesWritten, LPOVERLAPPED overlapped)
{
    return ::WriteFile(file, buffer, bytesToWrite, bytesWritten, overlapped);
}

BOOL ClearCommError(HANDLE file, LPDWORD errors, LPCOMSTAT status) { return ::ClearCommError(file, errors, status); }
BOOL PurgeComm(HANDLE file, DWORD flags) { return ::PurgeComm(file, flags); }
DWORD GetLastError() { return ::GetLastError(); }

} // namespace serial
} // namespace platform
} // namespace ovo
