#include "platform/posix/object_directory.h"

#include "platform/posix/file_name.h"
#include "platform/posix/handle.h"
#include "platform/posix/own_links.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace ovo {
namespace posix {
namespace {

const char sharedDirectory[] = "/dev/shm";
const char ownDirectory[] = "ovosystem";
const std::size_t maxFileName = 255; // NAME_MAX of the usual file systems

std::uint64_t fnv1a(const std::string& text, std::uint64_t seed)
{
    std::uint64_t hash = seed;
    for (unsigned char c : text)
        hash = (hash ^ c) * 0x100000001B3ull;
    return hash;
}

// A directory that nobody but this user may enter: its own, mode 0700.
bool privateDirectory(int fd)
{
    struct stat status;
    return fd >= 0 && fstat(fd, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & 0777) == 0700;
}

// $XDG_RUNTIME_DIR when it is this user's alone; -1 otherwise.
int runtimeDirectory()
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime == nullptr || runtime[0] != '/')
        return -1;
    const int fd = openThroughOwnLinks(runtime, O_RDONLY | O_DIRECTORY);
    if (privateDirectory(fd))
        return fd;
    if (fd >= 0)
        close(fd);
    return -1;
}

// The directory NAME in PARENT (closed here), made when missing; -1 when it is not this
// user's alone.
int ownSubdirectory(int parent, const char* name)
{
    if (parent < 0)
        return -1;
    mkdirat(parent, name, 0700);
    const int fd = openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    close(parent);
    if (privateDirectory(fd))
        return fd;
    if (fd >= 0)
        close(fd);
    return -1;
}

bool inMemory(int fd)
{
    struct statfs system;
    return fstatfs(fd, &system) == 0 && (system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC);
}

// Root without a session keeps its names in /run, where systemd mounts a file system in
// memory. Where /run lies on a disk instead (a container's image, a machine started
// without such an init), every object would be a file mapped from that disk, its writes
// written back to it: there root's names live in a directory of its own in /dev/shm, and
// in /run only when another user made that directory first.
int rootObjectDirectory()
{
    const int run = open("/run", O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (run >= 0 && !inMemory(run)) {
        const int own = ownSubdirectory(open(sharedDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC), "ovosystem.u0");
        if (own >= 0) {
            close(run);
            return own;
        }
    }
    return ownSubdirectory(run, ownDirectory);
}

// The session's "ovosystem"; -1 when there is none of this user's alone.
int ownObjectDirectory()
{
    const int runtime = runtimeDirectory();
    if (runtime >= 0)
        return ownSubdirectory(runtime, ownDirectory);
    return geteuid() == 0 ? rootObjectDirectory() : -1;
}

} // namespace

ObjectDirectory::ObjectDirectory(int fd, std::string prefix, bool usersOnly)
    : fd_(fd), prefix_(std::move(prefix)), usersOnly_(usersOnly)
{
}

ObjectDirectory::~ObjectDirectory() { close(fd_); }

std::shared_ptr<const ObjectDirectory> ObjectDirectory::local()
{
    const int own = ownObjectDirectory();
    if (own >= 0)
        return std::shared_ptr<const ObjectDirectory>(new ObjectDirectory(own, "", true));
    const int shared = open(sharedDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (shared < 0) {
        setLastErrorFromErrno(errno);
        return nullptr;
    }
    return std::shared_ptr<const ObjectDirectory>(
        new ObjectDirectory(shared, "ovosystem.u" + std::to_string(geteuid()) + ".", true));
}

std::shared_ptr<const ObjectDirectory> ObjectDirectory::global()
{
    const int shared = open(sharedDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (shared < 0) {
        setLastErrorFromErrno(errno);
        return nullptr;
    }
    return std::shared_ptr<const ObjectDirectory>(new ObjectDirectory(shared, "ovosystem.g.", false));
}

std::string ObjectDirectory::fileName(const std::string& name) const
{
    std::string encoded = escapedFileName(name);
    if (prefix_.empty() && !encoded.empty() && encoded[0] == '.')
        encoded.replace(0, 1, "%2E"); // "." and ".." are names of objects too
    if (prefix_.size() + encoded.size() <= maxFileName)
        return prefix_ + encoded;
    char hashed[40];
    std::snprintf(hashed, sizeof hashed, "~%016llx%016llx",
                  static_cast<unsigned long long>(fnv1a(name, 0xCBF29CE484222325ull)),
                  static_cast<unsigned long long>(fnv1a(name, 0x84222325CBF29CE4ull)));
    return prefix_ + hashed;
}

std::vector<std::string> ObjectDirectory::fileNames() const
{
    std::vector<std::string> names;
    const int fd = openat(fd_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); // a reading position of its own
    DIR* dir = fd >= 0 ? fdopendir(fd) : nullptr;
    if (dir == nullptr) {
        if (fd >= 0)
            close(fd);
        return names;
    }
    while (const dirent* entry = readdir(dir))
        if (std::strncmp(entry->d_name, prefix_.c_str(), prefix_.size()) == 0 && std::strcmp(entry->d_name, ".") != 0 &&
            std::strcmp(entry->d_name, "..") != 0)
            names.push_back(entry->d_name);
    closedir(dir);
    return names;
}

std::string ObjectDirectory::objectName(const std::string& fileName) const
{
    return unescapedFileName(fileName.substr(prefix_.size()));
}

} // namespace posix
} // namespace ovo
