#include "platform/posix/own_links.h"

#include <cerrno>
#include <climits>
#include <deque>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ovo {
namespace posix {
namespace {

const int maxLinks = 40; // as the kernel's ELOOP

// The path's names, "." and empty ones left out, in front of `rest`.
void prepend(const std::string& path, std::deque<std::string>& rest)
{
    std::deque<std::string> names;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (end > start && path.compare(start, end - start, ".") != 0)
            names.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    rest.insert(rest.begin(), names.begin(), names.end());
}

int fail(int error, int fd1, int fd2 = -1)
{
    if (fd1 >= 0)
        close(fd1);
    if (fd2 >= 0)
        close(fd2);
    errno = error;
    return -1;
}

} // namespace

int openThroughOwnLinks(const std::string& path, int flags, mode_t mode)
{
    if (path.empty())
        return fail(ENOENT, -1);
    std::deque<std::string> rest;
    prepend(path, rest);
    int directory = open(path[0] == '/' ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC);
    for (int links = 0; directory >= 0 && !rest.empty();) {
        const std::string name = rest.front();
        rest.pop_front();
        // The entry itself, a link not followed, so that its owner is the one looked at.
        const int entry = openat(directory, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
        if (entry < 0 && errno == ENOENT && rest.empty() && (flags & O_CREAT) != 0) {
            const int made = openat(directory, name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, mode);
            const int error = errno;
            close(directory);
            errno = error;
            return made;
        }
        struct stat status;
        if (entry < 0 || fstat(entry, &status) != 0)
            return fail(errno, directory, entry);
        if (S_ISLNK(status.st_mode)) {
            if (status.st_uid != geteuid() && status.st_uid != 0)
                return fail(EACCES, directory, entry);
            char target[PATH_MAX];
            const ssize_t length = readlinkat(entry, "", target, sizeof target);
            close(entry);
            if (length <= 0 || ++links > maxLinks)
                return fail(length <= 0 ? errno : ELOOP, directory);
            prepend(std::string(target, static_cast<std::size_t>(length)), rest);
            if (target[0] == '/') {
                close(directory);
                directory = open("/", O_PATH | O_DIRECTORY | O_CLOEXEC);
            }
            continue;
        }
        if (rest.empty()) { // the last name, no link: opened as asked (a link put there meanwhile fails)
            const int opened = openat(directory, name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, mode);
            const int error = errno;
            close(directory);
            close(entry);
            errno = error;
            return opened;
        }
        close(directory);
        directory = entry; // a directory on the way (the next openat fails if it is none)
    }
    if (directory < 0)
        return -1;
    const int opened = openat(directory, ".", flags | O_CLOEXEC, mode); // the path named a directory ("/")
    const int error = errno;
    close(directory);
    errno = error;
    return opened;
}

} // namespace posix
} // namespace ovo
