#include "platform/posix/foreign_links.h"

#include "platform/posix/system_calls.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace ovo {
namespace posix {
namespace {

const int mostLinks = 40; // followed in one open, as the kernel's limit

// A descriptor closed on every way out, errno kept.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor()
    {
        const int error = errno;
        if (fd_ >= 0)
            ::close(fd_);
        errno = error;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return fd_; }

private:
    const int fd_;
};

bool othersMayWrite(const struct stat& directory) { return (directory.st_mode & (S_IWGRP | S_IWOTH)) != 0; }

bool mayFollow(const struct stat& link, const struct stat& directory)
{
    return !othersMayWrite(directory) || link.st_uid == ::geteuid() || link.st_uid == directory.st_uid;
}

int openUnderRule(int directory, const char* path, int flags, mode_t mode, int links);

// The last element of `path` is a link, or an element on the way is a loop (`error`). The
// link is pinned by a descriptor of its own, judged by its owner and its directory's, and
// what it holds is opened from that directory under the same rule.
int followLink(int directory, const std::string& path, int flags, mode_t mode, int links, int error)
{
    const std::size_t slash = path.find_last_of('/');
    const std::string parentPath = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    const Descriptor parent(::openat(directory, parentPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    const Descriptor link(parent.get() < 0 ? -1
                                           : ::openat(parent.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat linkStatus, parentStatus;
    if (link.get() < 0 || ::fstat(link.get(), &linkStatus) != 0 || ::fstat(parent.get(), &parentStatus) != 0)
        return -1;
    if (!S_ISLNK(linkStatus.st_mode)) { // not a link at the end: the first answer stands
        errno = error;
        return -1;
    }
    if (!mayFollow(linkStatus, parentStatus)) {
        errno = EACCES;
        return -1;
    }
    char target[PATH_MAX];
    const ssize_t length = ::readlinkat(link.get(), "", target, sizeof target - 1);
    if (length < 0)
        return -1;
    target[length] = '\0';
    return openUnderRule(parent.get(), target, flags, mode, links + 1);
}

int openUnderRule(int directory, const char* path, int flags, mode_t mode, int links)
{
    if (links > mostLinks) {
        errno = ELOOP;
        return -1;
    }
    const int fd = sys::openat(directory, path, flags | O_NOFOLLOW, mode);
    // A link at the end gives ELOOP, or ENOTDIR where a directory is asked for.
    if (fd >= 0 || (errno != ELOOP && (errno != ENOTDIR || (flags & O_DIRECTORY) == 0)))
        return fd;
    return followLink(directory, path, flags, mode, links, errno);
}

} // namespace

int openWithoutForeignLinks(int directory, const char* path, int flags, mode_t mode)
{
    return openUnderRule(directory, path, flags, mode, 0);
}

} // namespace posix
} // namespace ovo
