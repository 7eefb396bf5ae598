#include "platform/posix/files.h"
#include "platform/posix/file_object.h"
#include "platform/posix/foreign_links.h"
#include "platform/posix/system_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ovo {
namespace posix {

FileObject::FileObject(int descriptor, unsigned kinds) : KernelObject(kinds), descriptor(descriptor) {}

FileObject::~FileObject() { ::close(descriptor); }

BOOL FileObject::read(void* buffer, DWORD size, DWORD& done)
{
    for (;;) {
        const ssize_t count = sys::read(descriptor, buffer, size);
        if (count >= 0) {
            done = static_cast<DWORD>(count);
            return TRUE;
        }
        if (errno != EINTR) {
            setLastErrorFromErrno(errno);
            return FALSE;
        }
    }
}

BOOL FileObject::write(const void* buffer, DWORD size, DWORD& done)
{
    std::size_t written = done;
    const bool whole = writeWhole(descriptor, buffer, size, written);
    done = static_cast<DWORD>(written);
    if (!whole)
        setLastErrorFromErrno(errno);
    return whole ? TRUE : FALSE;
}

bool writeWhole(int descriptor, const void* data, std::size_t size, std::size_t& done)
{
    const char* bytes = static_cast<const char*>(data);
    while (done < size) {
        const ssize_t written = sys::write(descriptor, bytes + done, size - done);
        if (written < 0 && errno == EINTR)
            continue;
        if (written == 0)
            errno = ENOSPC;
        if (written <= 0)
            return false;
        done += static_cast<std::size_t>(written);
    }
    return true;
}

namespace {

const char devicePrefix[] = "\\\\.\\";

// "\\.\NAME" names the device /dev/NAME, or NAME itself when it is an absolute path; the
// path is empty for the names Windows refuses ("", "." and "..").
bool devicePath(const char* fileName, std::string& path)
{
    if (std::strncmp(fileName, devicePrefix, sizeof devicePrefix - 1) != 0)
        return false;
    const std::string name = fileName + sizeof devicePrefix - 1;
    const bool valid = name != "" && name != "." && name != "..";
    path = !valid ? std::string() : name[0] == '/' ? name : "/dev/" + name;
    return true;
}

// A missing file is ERROR_FILE_NOT_FOUND on Windows, a missing directory on its way
// ERROR_PATH_NOT_FOUND.
DWORD missingFileCode(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    const std::string directory = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    struct stat status;
    return ::stat(directory.c_str(), &status) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

int openFlags(DWORD desiredAccess, DWORD disposition)
{
    const bool reads = (desiredAccess & GENERIC_READ) != 0;
    const bool writes = (desiredAccess & GENERIC_WRITE) != 0;
    int flags = O_CLOEXEC | (reads && writes ? O_RDWR : writes ? O_WRONLY : O_RDONLY);
    switch (disposition) {
    case CREATE_NEW:
        return flags | O_CREAT | O_EXCL;
    case CREATE_ALWAYS:
        return flags | O_CREAT | O_TRUNC;
    case OPEN_ALWAYS:
        return flags | O_CREAT;
    case TRUNCATE_EXISTING:
        return flags | O_TRUNC;
    case OPEN_EXISTING:
        return flags;
    default:
        return -1;
    }
}

// The lock that keeps out what the share mode refuses: whoever writes without sharing
// writing holds it exclusively; whoever reads without sharing writing holds it shared.
int shareLock(DWORD desiredAccess, DWORD shareMode)
{
    if ((shareMode & FILE_SHARE_WRITE) != 0)
        return 0;
    if ((desiredAccess & GENERIC_WRITE) != 0)
        return LOCK_EX;
    return (shareMode & FILE_SHARE_READ) != 0 ? LOCK_SH : LOCK_EX;
}

// A plain path must name a regular file and "\\.\NAME" a character device. Anything else
// (a FIFO, a directory, a socket) is refused: the open itself is non-blocking, so that a
// FIFO without a reader can never hold the caller.
bool isExpectedKind(int descriptor, bool device)
{
    struct stat status;
    return ::fstat(descriptor, &status) == 0 && (device ? S_ISCHR(status.st_mode) : S_ISREG(status.st_mode));
}

} // namespace

} // namespace posix
} // namespace ovo

using ovo::posix::FileObject;
using ovo::posix::objectOf;
using ovo::posix::setLastErrorFromErrno;
namespace sys = ovo::posix::sys;

HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode, LPSECURITY_ATTRIBUTES, DWORD disposition,
                   DWORD, HANDLE)
{
    int flags = ovo::posix::openFlags(desiredAccess, disposition);
    if (fileName == nullptr || flags < 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    std::string path = fileName;
    const bool device = ovo::posix::devicePath(fileName, path);
    if (device && path.empty()) {
        SetLastError(ERROR_INVALID_NAME);
        return INVALID_HANDLE_VALUE;
    }
    if (path.find('\\') != std::string::npos)
        std::replace(path.begin(), path.end(), '\\', '/'); // Windows separates by either
    flags |= O_NONBLOCK; // regular files ignore it; serial ports keep it
    if (device)
        flags = (flags & ~O_CREAT) | O_NOCTTY; // a device is never made here
    int descriptor;
    do
        descriptor = ovo::posix::openWithoutForeignLinks(AT_FDCWD, path.c_str(), flags, 0666);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0 && errno == ENOENT) {
        SetLastError(ovo::posix::missingFileCode(path));
        return INVALID_HANDLE_VALUE;
    }
    if (descriptor < 0) {
        setLastErrorFromErrno(errno == ENXIO && !device ? EACCES : errno); // a FIFO with no reader
        return INVALID_HANDLE_VALUE;
    }
    if (!ovo::posix::isExpectedKind(descriptor, device)) {
        ::close(descriptor);
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    const int lock = ovo::posix::shareLock(desiredAccess, shareMode);
    if (lock != 0 && ::flock(descriptor, lock | LOCK_NB) != 0) {
        const int error = errno;
        ::close(descriptor);
        setLastErrorFromErrno(error);
        return INVALID_HANDLE_VALUE;
    }
    FileObject* const object = device && ::isatty(descriptor) ? ovo::posix::openSerialPort(descriptor)
                                                              : new FileObject(descriptor);
    if (object == nullptr) // the terminal refused its settings; errno tells why
        return INVALID_HANDLE_VALUE;
    SetLastError(ERROR_SUCCESS);
    return static_cast<ovo::posix::KernelObject*>(object);
}

DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD moveMethod)
{
    FileObject* const object = objectOf<FileObject>(file);
    if (object == nullptr)
        return INVALID_SET_FILE_POINTER;
    const int whence = moveMethod == FILE_BEGIN ? SEEK_SET : moveMethod == FILE_CURRENT ? SEEK_CUR : SEEK_END;
    const off_t offset = distanceHigh != nullptr
                             ? static_cast<off_t>((static_cast<std::uint64_t>(static_cast<DWORD>(*distanceHigh)) << 32) |
                                                  static_cast<DWORD>(distance))
                             : static_cast<off_t>(distance);
    const off_t position = ::lseek(object->descriptor, offset, whence);
    if (position < 0) {
        setLastErrorFromErrno(errno);
        return INVALID_SET_FILE_POINTER;
    }
    if (distanceHigh != nullptr)
        *distanceHigh = static_cast<LONG>(static_cast<std::uint64_t>(position) >> 32);
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(position);
}

BOOL SetEndOfFile(HANDLE file)
{
    FileObject* const object = objectOf<FileObject>(file);
    if (object == nullptr)
        return FALSE;
    const off_t position = ::lseek(object->descriptor, 0, SEEK_CUR);
    if (position < 0 || sys::ftruncate(object->descriptor, position) != 0) {
        setLastErrorFromErrno(errno);
        return FALSE;
    }
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

DWORD GetFileSize(HANDLE file, LPDWORD sizeHigh)
{
    FileObject* const object = objectOf<FileObject>(file);
    struct stat status;
    if (object == nullptr || ::fstat(object->descriptor, &status) != 0) {
        if (object != nullptr)
            setLastErrorFromErrno(errno);
        return INVALID_FILE_SIZE;
    }
    if (sizeHigh != nullptr)
        *sizeHigh = static_cast<DWORD>(static_cast<std::uint64_t>(status.st_size) >> 32);
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(status.st_size);
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytesToRead, LPDWORD bytesRead, LPOVERLAPPED)
{
    DWORD done = 0;
    FileObject* const object = objectOf<FileObject>(file);
    const BOOL ok = object != nullptr && object->read(buffer, bytesToRead, done);
    if (bytesRead != nullptr)
        *bytesRead = done;
    if (ok)
        SetLastError(ERROR_SUCCESS);
    return ok;
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytesToWrite, LPDWORD bytesWritten, LPOVERLAPPED)
{
    DWORD done = 0;
    FileObject* const object = objectOf<FileObject>(file);
    const BOOL ok = object != nullptr && object->write(buffer, bytesToWrite, done);
    if (bytesWritten != nullptr)
        *bytesWritten = done;
    if (ok)
        SetLastError(ERROR_SUCCESS);
    return ok;
}

BOOL CloseHandle(HANDLE object)
{
    ovo::posix::KernelObject* const kernelObject = objectOf<ovo::posix::KernelObject>(object);
    if (kernelObject == nullptr)
        return FALSE;
    delete kernelObject;
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}
