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

struct Script {
    int error = 0;
    int times = 0;
    int passing = 0;
    int calls = 0;
};

std::mutex lock;
std::map<std::string, Script> scripts;

// True when this call of `name` is to fail; errno is set then.
bool fails(const std::string& name)
{
    std::lock_guard<std::mutex> guard(lock);
    Script& script = scripts[name];
    ++script.calls;
    if (script.times == 0)
        return false;
    if (script.passing > 0) {
        --script.passing;
        return false;
    }
    --script.times;
    errno = script.error;
    return true;
}

} // namespace

void failCall(const std::string& call, int error, int times, int passing)
{
    std::lock_guard<std::mutex> guard(lock);
    Script& script = scripts[call];
    script.error = error;
    script.times = times;
    script.passing = passing;
}

void clearFailures()
{
    std::lock_guard<std::mutex> guard(lock);
    scripts.clear();
}

int callsOf(const std::string& call)
{
    std::lock_guard<std::mutex> guard(lock);
    return scripts[call].calls;
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
