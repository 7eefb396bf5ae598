// Named file mappings of the POSIX layer, backed by the system's paging store only
// (INVALID_HANDLE_VALUE as the file). A view keeps its object alive until it is unmapped,
// as on Windows, also after the mapping's handle is closed.
#ifndef OVO_SRC_PLATFORM_POSIX_MAPPING_H
#define OVO_SRC_PLATFORM_POSIX_MAPPING_H

#include "platform/posix/security.h"

const DWORD PAGE_READONLY = 0x02u;
const DWORD PAGE_READWRITE = 0x04u;
const DWORD SECTION_QUERY = 0x0001u;
const DWORD SECTION_MAP_WRITE = 0x0002u;
const DWORD SECTION_MAP_READ = 0x0004u;
const DWORD SECTION_MAP_EXECUTE = 0x0008u;
const DWORD SECTION_EXTEND_SIZE = 0x0010u;
const DWORD SECTION_ALL_ACCESS = STANDARD_RIGHTS_REQUIRED | 0x001Fu;
const DWORD FILE_MAP_WRITE = SECTION_MAP_WRITE;
const DWORD FILE_MAP_READ = SECTION_MAP_READ;
const DWORD FILE_MAP_ALL_ACCESS = SECTION_ALL_ACCESS;

// Creating a name that exists asks for all rights on it (see CreateMutexA); the size of
// an existing object stays. A size of 0 is refused (ERROR_INVALID_PARAMETER), and so is a
// real file: the library maps the paging store only.
HANDLE CreateFileMappingA(HANDLE file, LPSECURITY_ATTRIBUTES security, DWORD protection, DWORD maximumSizeHigh,
                          DWORD maximumSizeLow, LPCSTR name);
HANDLE OpenFileMappingA(DWORD desiredAccess, BOOL inheritHandle, LPCSTR name);
// Bytes 0 to 0 means the whole object; beyond its size ERROR_ACCESS_DENIED, as Windows.
LPVOID MapViewOfFile(HANDLE mapping, DWORD desiredAccess, DWORD offsetHigh, DWORD offsetLow, std::size_t bytes);
BOOL UnmapViewOfFile(LPCVOID address);

#endif
