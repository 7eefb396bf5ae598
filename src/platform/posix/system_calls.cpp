#include "platform/posix/system_calls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace ovo {
namespace posix {
namespace sys {

int open(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }
int openat(int directory, const char* path, int flags, mode_t mode) { return ::openat(directory, path, flags, mode); }
ssize_t read(int fd, void* buffer, size_t size) { return ::read(fd, buffer, size); }
ssize_t readv(int fd, const iovec* buffers, int count) { return ::readv(fd, buffers, count); }
ssize_t write(int fd, const void* buffer, size_t size) { return ::write(fd, buffer, size); }
int ftruncate(int fd, off_t size) { return ::ftruncate(fd, size); }
int renameat(int fromDirectory, const char* from, int toDirectory, const char* to)
{
    return ::renameat(fromDirectory, from, toDirectory, to);
}
int fsync(int fd) { return ::fsync(fd); }
int fallocate(int fd, off_t size)
{
    const int error = posix_fallocate(fd, 0, size);
    errno = error;
    return error == 0 ? 0 : -1;
}

} // namespace sys
} // namespace posix
} // namespace ovo
