// Named kernel objects of the POSIX layer (mutex, event, file mapping). Mutexes, events
// and mappings share one namespace: each object is a file of its scope's directory
// (object_directory.h), "Local\" names the user's own, mode 0600. A file that is not a
// regular file, or in a user's scope not that user's own (made first by somebody else), is
// refused with ERROR_ACCESS_DENIED and left alone; no file is opened through a link. A file
// holds one page of header and the object's state, and a mapping's bytes after it.
//
// Liveness comes from the kernel, not from a count a crash could leave behind: every open
// handle holds a shared lock on byte 1 of the file (an open-file-description lock, which
// the kernel drops with the handle's descriptor, also when its process dies). Opening and
// closing take byte 0 exclusively, so that they see each other whole. Whoever finds byte 1
// free under that lock knows no handle is left: the closer removes the file, and an opener
// that finds a file left by processes that died starts a fresh object in it. The handles
// of one process on one object share one NamedObject: one descriptor, one mapping. Files
// that every holder left by dying are inert; a process's first fresh create sweeps a few of
// them away, and after it one create a second.
// A child made by fork shares its parent's open files, and so their locks: it owns none of
// the objects that it inherited, and their copies end without a lock or the file touched.
#ifndef OVO_SRC_PLATFORM_POSIX_NAMED_OBJECT_H
#define OVO_SRC_PLATFORM_POSIX_NAMED_OBJECT_H

#include "platform/posix/handle.h"
#include "platform/posix/object_directory.h"
#include "platform/posix/security.h"

#include <cstdint>
#include <memory>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ovo {
namespace posix {

enum class ObjectKind : std::uint32_t { mutex = 1, event = 2, mapping = 3 };

// One file of this user's "Local\\" directory.
struct ObjectFile {
    std::string name;   // after "Local\\" (a hashed long name as its file has it)
    std::uint32_t kind; // an ObjectKind, 0 when the file is not an object's
    bool live; // some handle holds it, or it is being opened or closed right now
    std::uint64_t dataSize;
    bool taken; // no object of this user's: a link, a FIFO, a directory, another user's file
};
std::vector<ObjectFile> userObjects();
// Removes the files of this user's "Local\\" directory that no handle holds; gives how many
// went.
unsigned removeStaleObjects();

class NamedObject {
public:
    // What a fresh object's state must hold before anybody else sees it.
    using Initializer = void (*)(void* state);
    // The file of an object, as the kernel knows it.
    using FileId = std::pair<dev_t, ino_t>;

    // Creates the object, or joins an existing one of the kind when `desiredAccess` is
    // granted (`existed` true). Null with the last error set on failure.
    static std::shared_ptr<NamedObject> create(ObjectKind kind, const char* name, const SECURITY_ATTRIBUTES* security,
                                               DWORD desiredAccess, std::uint64_t dataSize, Initializer initialize,
                                               bool& existed);
    // Joins an existing object; ERROR_FILE_NOT_FOUND when there is none.
    static std::shared_ptr<NamedObject> open(ObjectKind kind, const char* name, DWORD desiredAccess);

    ~NamedObject();
    NamedObject(const NamedObject&) = delete;
    NamedObject& operator=(const NamedObject&) = delete;

    // The kind's state, in the header page, shared by every holder.
    void* state() const;
    int descriptor() const { return fd_; }
    std::uint64_t dataSize() const;
    // Where a mapping's bytes begin in the file.
    static std::uint64_t dataOffset();
    // Leaves the header page mapped when the object closes, for unmapKept() later: a
    // thread's list of robust mutexes may point into it. Gives the page.
    void* keepMappedAfterClose();
    static void unmapKept(void* header);
    // Whether this process made this handle's object, not a parent that forked it.
    bool ownedHere() const;

private:
    NamedObject(int fd, FileId file, std::shared_ptr<const ObjectDirectory> directory, std::string fileName,
                void* header)
        : fd_(fd), file_(file), directory_(std::move(directory)), fileName_(std::move(fileName)), header_(header)
    {
    }

    static std::shared_ptr<NamedObject> acquire(ObjectKind kind, const char* name, const SECURITY_ATTRIBUTES* security,
                                                DWORD desiredAccess, std::uint64_t dataSize, Initializer initialize,
                                                bool create, bool& existed);

    int fd_;
    FileId file_;
    std::shared_ptr<const ObjectDirectory> directory_; // holds the file
    std::string fileName_;
    void* header_;
    bool keepMapped_ = false;
    const pid_t owner_ = getpid();
};

// A handle to a new Object (a KernelObject made of the named object and the handle's
// access), or null when there is no object; the last error (ERROR_ALREADY_EXISTS) stays.
template <typename Object>
HANDLE handleOf(std::shared_ptr<NamedObject> object, DWORD access)
{
    if (object == nullptr)
        return nullptr;
    const DWORD result = GetLastError();
    HANDLE handle = static_cast<KernelObject*>(new Object(std::move(object), access));
    SetLastError(result);
    return handle;
}

} // namespace posix
} // namespace ovo

#endif
