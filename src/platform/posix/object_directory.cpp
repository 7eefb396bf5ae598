#include "platform/posix/object_directory.h"

#include "platform/posix/file_name.h"
#include "platform/posix/fork_guard.h"
#include "platform/posix/handle.h"
#include "platform/posix/own_links.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <mutex>
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
int runtimeDirectory(const char* runtime, Route& route)
{
    if (runtime == nullptr || runtime[0] != '/')
        return -1;
    const int fd = openThroughOwnLinks(runtime, O_RDONLY | O_DIRECTORY);
    route.note(runtime, true);
    if (privateDirectory(fd))
        return fd;
    if (fd >= 0)
        close(fd);
    return -1;
}

// The directory NAME in PARENT (the descriptor of the directory at PARENTPATH, closed here),
// made when missing; -1 when it is not this user's alone.
int ownSubdirectory(int parent, const std::string& parentPath, const char* name, Route& route)
{
    if (parent < 0)
        return -1;
    if (mkdirat(parent, name, 0700) == 0)
        fchmodat(parent, name, 0700, 0); // whatever the umask: one made 0600 would be nobody's place
    const int fd = openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    close(parent);
    route.note(parentPath + "/" + name, false);
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
int rootObjectDirectory(Route& route)
{
    const int run = open("/run", O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    route.note("/run", false);
    if (run >= 0 && !inMemory(run)) {
        const int own = ownSubdirectory(open(sharedDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC), sharedDirectory,
                                        "ovosystem.u0", route);
        if (own >= 0) {
            close(run);
            return own;
        }
    }
    return ownSubdirectory(run, "/run", ownDirectory, route);
}

// The session's "ovosystem"; -1 when there is none of this user's alone.
int ownObjectDirectory(const char* runtime, Route& route)
{
    const int fd = runtimeDirectory(runtime, route);
    if (fd >= 0)
        return ownSubdirectory(fd, runtime, ownDirectory, route);
    return geteuid() == 0 ? rootObjectDirectory(route) : -1;
}

// The directory found last, and for whom ($XDG_RUNTIME_DIR and the effective user).
struct FoundDirectory {
    std::mutex lock;
    std::shared_ptr<const ObjectDirectory> directory;
    std::string foundFor;
};

std::mutex& lockOfFound();

// Never destroyed: objects may be made by static destructors.
FoundDirectory& found()
{
    static FoundDirectory* const found = [] {
        holdAcrossFork<&lockOfFound>();
        return new FoundDirectory;
    }();
    return *found;
}

std::mutex& lockOfFound() { return found().lock; }

} // namespace

void Route::note(const std::string& path, bool followLink)
{
    marks_.push_back(Landmark{path, followLink, Sight()});
    marks_.back().seen = sightAt(marks_.back());
}

bool Route::unchanged() const
{
    for (const Landmark& mark : marks_)
        if (sightAt(mark) != mark.seen)
            return false;
    return true;
}

bool Route::endsAt(int fd) const
{
    struct stat status;
    return fstat(fd, &status) == 0 && sightOf(status) == marks_.back().seen;
}

Route::Sight Route::sightAt(const Landmark& mark)
{
    struct stat status;
    const int flags = mark.followLink ? 0 : AT_SYMLINK_NOFOLLOW;
    return fstatat(AT_FDCWD, mark.path.c_str(), &status, flags) == 0 ? sightOf(status) : Sight();
}

Route::Sight Route::sightOf(const struct stat& status)
{
    return Sight(true, status.st_dev, status.st_ino, status.st_mode, status.st_uid);
}

ObjectDirectory::ObjectDirectory(int fd, std::string prefix, bool usersOnly, Route route)
    : fd_(fd), prefix_(std::move(prefix)), usersOnly_(usersOnly), route_(std::move(route))
{
}

ObjectDirectory::~ObjectDirectory()
{
    if (ownsDescriptor_)
        close(fd_);
}

std::shared_ptr<const ObjectDirectory> ObjectDirectory::local()
{
    FoundDirectory& last = found();
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    const std::string foundFor = std::string(runtime != nullptr ? runtime : "") + '\0' + std::to_string(geteuid());
    std::lock_guard<std::mutex> guard(last.lock);
    const ObjectDirectory* const kept = last.directory.get();
    if (kept != nullptr && !kept->route_.endsAt(kept->fd_))
        kept->ownsDescriptor_ = false; // closed under us, perhaps reused: no longer ours to close
    if (kept != nullptr && kept->ownsDescriptor_ && last.foundFor == foundFor && kept->route_.unchanged())
        return last.directory;
    std::shared_ptr<const ObjectDirectory> directory = searchLocal(runtime);
    const bool keep = directory != nullptr && !directory->route_.empty(); // no place of its own: searched each time
    last.directory = keep ? directory : nullptr;
    last.foundFor = foundFor;
    return directory;
}

std::shared_ptr<const ObjectDirectory> ObjectDirectory::searchLocal(const char* runtime)
{
    Route route;
    const int own = ownObjectDirectory(runtime, route);
    if (own >= 0)
        return std::shared_ptr<const ObjectDirectory>(new ObjectDirectory(own, "", true, std::move(route)));
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

std::vector<std::string> ObjectDirectory::fileNames(std::size_t most) const
{
    std::vector<std::string> names;
    const int fd = openat(fd_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); // a reading position of its own
    if (fd < 0)
        return names;
    // Entries as the kernel gives them, without a DIR's own checks: a sweep of a few files
    // reads the first batch and stops there.
    alignas(dirent64) char batch[16384];
    ssize_t size;
    while (names.size() < most && (size = getdents64(fd, batch, sizeof batch)) > 0)
        for (ssize_t at = 0; at < size && names.size() < most;) {
            const auto* entry = reinterpret_cast<const dirent64*>(batch + at);
            at += entry->d_reclen;
            if (std::strncmp(entry->d_name, prefix_.c_str(), prefix_.size()) == 0 &&
                std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                names.push_back(entry->d_name);
        }
    close(fd);
    return names;
}

std::string ObjectDirectory::objectName(const std::string& fileName) const
{
    return unescapedFileName(fileName.substr(prefix_.size()));
}

} // namespace posix
} // namespace ovo
