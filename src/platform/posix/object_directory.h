// Where the files of named objects live: one directory a scope of names, opened and checked
// once for each use and held by the objects made in it, so that every file of an object is
// reached from the directory that was checked, never by a path that could lead elsewhere.
//
// "Local\" is the login session's: the directory "ovosystem" (mode 0700) in the user's
// runtime directory, $XDG_RUNTIME_DIR when that is a directory of this user that nobody else
// may enter (mode 0700), or for root without one in /run (where /run is on a disk, in its
// own /dev/shm/ovosystem.u0 instead); a file there is the name encoded.
// Nobody but the user (and root) can make a file in it. A user without a session (cron, su,
// a container's shell) has no such place: its names are the files "ovosystem.u<UID>.NAME" of
// /dev/shm, where another user can make a file of a name first (which takes that name).
// "Global\" is "ovosystem.g.NAME" in /dev/shm, for every user.
#ifndef OVO_SRC_PLATFORM_POSIX_OBJECT_DIRECTORY_H
#define OVO_SRC_PLATFORM_POSIX_OBJECT_DIRECTORY_H

#include <atomic>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace ovo {
namespace posix {

// The paths that the search for a directory went by, and what stood at each: while every
// one is as it was, a search made again would find the same directory.
class Route {
public:
    void note(const std::string& path, bool followLink);
    bool empty() const { return marks_.empty(); }
    bool unchanged() const;
    // Whether the descriptor is of what stood at the last path noted (of a route not empty).
    bool endsAt(int fd) const;

private:
    using Sight = std::tuple<bool, dev_t, ino_t, mode_t, uid_t>; // all but the first 0 when nothing stood there
    struct Landmark {
        std::string path;
        bool followLink;
        Sight seen;
    };
    static Sight sightAt(const Landmark& mark);
    static Sight sightOf(const struct stat& status);

    std::vector<Landmark> marks_;
};

class ObjectDirectory {
public:
    // This user's "Local\" directory; null (with the last error set) when there is none.
    // A process searches once and keeps what it found while the route is unchanged: the
    // search costs ten system calls, the check one per path and one for the descriptor
    // (which a program that closes every descriptor may have closed under us).
    static std::shared_ptr<const ObjectDirectory> local();
    // The directory of "Global\" names.
    static std::shared_ptr<const ObjectDirectory> global();

    ~ObjectDirectory();
    ObjectDirectory(const ObjectDirectory&) = delete;
    ObjectDirectory& operator=(const ObjectDirectory&) = delete;

    int descriptor() const { return fd_; }
    // Whether a file here stands for an object only when it is this user's: in /dev/shm
    // anybody may make a file of a "Local\" name first.
    bool usersOnly() const { return usersOnly_; }
    // The effective user that the directory was found for (a process that changes it finds
    // the directory again).
    uid_t user() const { return user_; }
    // The file of an object name: encoded so that no byte of the name reaches outside the
    // directory, hashed when that is too long for a file name.
    std::string fileName(const std::string& name) const;
    // The files of this scope (the first `most` that the directory lists), and the object
    // name of one of them.
    std::vector<std::string> fileNames(std::size_t most = static_cast<std::size_t>(-1)) const;
    std::string objectName(const std::string& fileName) const;

private:
    ObjectDirectory(int fd, std::string prefix, bool usersOnly, Route route = Route());
    static std::shared_ptr<const ObjectDirectory> searchLocal(const char* runtime);

    int fd_;
    mutable std::atomic<bool> ownsDescriptor_{true}; // false once the program closed it under us
    std::string prefix_; // of every file of the scope in the directory
    bool usersOnly_;
    uid_t user_ = geteuid();
    Route route_; // empty for a directory that is searched for every use, never kept
};

} // namespace posix
} // namespace ovo

#endif
