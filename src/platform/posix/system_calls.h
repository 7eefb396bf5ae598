// The system calls of the POSIX layer whose failures it must survive (a full disk, an
// interrupted call, an I/O error), under their own names in one namespace: the seam where
// the layer's own tests link calls that fail on demand (tests/fakes/faulty_system_calls.cpp)
// in place of the real ones (system_calls.cpp).
#ifndef OVO_SRC_PLATFORM_POSIX_SYSTEM_CALLS_H
#define OVO_SRC_PLATFORM_POSIX_SYSTEM_CALLS_H

#include <sys/types.h>

struct iovec;

namespace ovo {
namespace posix {
namespace sys {

int open(const char* path, int flags, mode_t mode = 0);
int openat(int directory, const char* path, int flags, mode_t mode = 0);
ssize_t read(int fd, void* buffer, size_t size);
ssize_t readv(int fd, const iovec* buffers, int count);
ssize_t write(int fd, const void* buffer, size_t size);
int ftruncate(int fd, off_t size);
int renameat(int fromDirectory, const char* from, int toDirectory, const char* to);
int fsync(int fd);
// Reserves the file's blocks up to `size` (posix_fallocate), -1 with errno set when it cannot.
int fallocate(int fd, off_t size);

} // namespace sys
} // namespace posix
} // namespace ovo

#endif
