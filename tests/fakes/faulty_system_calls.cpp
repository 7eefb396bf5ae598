#include "fakes/faulty_system_calls.h"

#include "platform/posix/system_calls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <unistd.h>

namespace ovo_fake {
namespace {

struct Failure {
    int error, times, passing;
};

std::mutex lock;
std::map<std::string, Failure> failures;

// True when this call of `name` is to fail; errno is set then.
bool fails(const char* name)
{
    std::lock_guard<std::mutex> guard(lock);
    const auto failure = failures.find(name);
    if (failure == failures.end() || failure->second.times == 0 || failure->second.passing-- > 0)
        return false;
    --failure->second.times;
    errno = failure->second.error;
    return true;
}

} // namespace

void failCall(const std::string& call, int error, int times, int passing)
{
    std::lock_guard<std::mutex> guard(lock);
    if (error == 0)
        failures.clear();
    else
        failures[call] = Failure{error, times, passing};
}

} // namespace ovo_fake

namespace ovo {
namespace posix {
namespace sys {

using ovo_fake::fails;

int open(const char* path, int flags, mode_t mode) { return fails("open") ? -1 : ::open(path, flags, mode); }
ssize_t read(int fd, void* buffer, size_t size) { return fails("read") ? -1 : ::read(fd, buffer, size); }
ssize_t write(int fd, const void* buffer, size_t size) { return fails("write") ? -1 : ::write(fd, buffer, size); }
int ftruncate(int fd, off_t size) { return fails("ftruncate") ? -1 : ::ftruncate(fd, size); }
int rename(const char* from, const char* to) { return fails("rename") ? -1 : ::rename(from, to); }
int fsync(int fd) { return fails("fsync") ? -1 : ::fsync(fd); }

} // namespace sys
} // namespace posix
} // namespace ovo
