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

#include <memory>
#include <string>
#include <vector>

namespace ovo {
namespace posix {

class ObjectDirectory {
public:
    // This user's "Local\" directory; null (with the last error set) when there is none.
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
    // The file of an object name: encoded so that no byte of the name reaches outside the
    // directory, hashed when that is too long for a file name.
    std::string fileName(const std::string& name) const;
    // The files of this scope, and the object name of one of them.
    std::vector<std::string> fileNames() const;
    std::string objectName(const std::string& fileName) const;

private:
    ObjectDirectory(int fd, std::string prefix, bool usersOnly);

    int fd_;
    std::string prefix_; // of every file of the scope in the directory
    bool usersOnly_;
};

} // namespace posix
} // namespace ovo

#endif
