// Files in the POSIX layer. Share modes hold between processes and threads through
// flock(): a handle opened for writing without FILE_SHARE_WRITE keeps an exclusive lock,
// so that a second such open fails with ERROR_SHARING_VIOLATION, as on Windows. A plain
// path opens a regular file only and "\\.\NAME" a character device only: anything else
// (a FIFO, a directory) gives ERROR_ACCESS_DENIED at once instead of blocking. As on
// Windows, '\' separates like '/', a missing directory on the way is ERROR_PATH_NOT_FOUND,
// and the device names "", "." and ".." are ERROR_INVALID_NAME. A symbolic link that
// another user planted in a directory that others may write is not followed
// (ERROR_ACCESS_DENIED, see foreign_links.h).
#ifndef OVO_SRC_PLATFORM_POSIX_FILES_H
#define OVO_SRC_PLATFORM_POSIX_FILES_H

#include "platform/posix/win32_types.h"

HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                   DWORD creationDisposition, DWORD flagsAndAttributes, HANDLE templateFile);
DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD moveMethod);
BOOL SetEndOfFile(HANDLE file);
DWORD GetFileSize(HANDLE file, LPDWORD sizeHigh);
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytesToRead, LPDWORD bytesRead, LPOVERLAPPED overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytesToWrite, LPDWORD bytesWritten, LPOVERLAPPED overlapped);
BOOL CloseHandle(HANDLE object);

#endif
