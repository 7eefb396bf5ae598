#include "fakes/faulty_system_calls.h"

#include "platform/posix/system_calls.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace ovo_fake {
namespace {

const char* failing = "";
int failure = 0;
std::atomic<int> failuresLeft{0};

// True when this call of `name` is to fail; errno is set then.
bool fails(const char* name)
{
    if (std::strcmp(name, failing) != 0 || failuresLeft.fetch_sub(1) <= 0)
        return false;
    errno = failure;
    return true;
}

} // namespace

void failCall(const char* call, int error, int times)
{
    failing = call;
    failure = error;
    failuresLeft = times;
}

} // namespace ovo_fake

namespace ovo::posix::sys {

using ovo_fake::fails;

int open(const char* path, int flags, mode_t mode) { return fails("open") ? -1 : ::open(path, flags, mode); }
int openat(int directory, const char* path, int flags, mode_t mode)
{
    return fails("open") ? -1 : ::openat(directory, path, flags, mode);
}
ssize_t read(int fd, void* buffer, size_t size) { return fails("read") ? -1 : ::read(fd, buffer, size); }
ssize_t readv(int fd, const iovec* buffers, int count) { return fails("read") ? -1 : ::readv(fd, buffers, count); }
ssize_t write(int fd, const void* buffer, size_t size) { return fails("write") ? -1 : ::write(fd, buffer, size); }
int ftruncate(int fd, off_t size) { return fails("ftruncate") ? -1 : ::ftruncate(fd, size); }
int renameat(int fromDirectory, const char* from, int toDirectory, const char* to)
{
    return fails("rename") ? -1 : ::renameat(fromDirectory, from, toDirectory, to);
}
int fsync(int fd) { return fails("fsync") ? -1 : ::fsync(fd); }
int fallocate(int fd, off_t size)
{
    if (fails("fallocate"))
        return -1;
    errno = posix_fallocate(fd, 0, size);
    return errno == 0 ? 0 : -1;
}

} // namespace ovo::posix::sys
