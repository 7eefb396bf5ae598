#include "platform/posix/named_object.h"

#include "platform/posix/fork_guard.h"
#include "platform/posix/handle.h"
#include "platform/posix/object_directory.h"
#include "platform/posix/system_calls.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <limits>
#include <map>
#include <mutex>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ovo {
namespace posix {
namespace {

const unsigned ownerOnly = 0600;
const std::size_t maxPath = 260;        // Windows' limit on an object name
const std::uint32_t magic = 0x4F564F31; // "OVO1"
const unsigned sweptPerCreate = 16;
const std::size_t stateOffset = 64;
// Never through a link, never blocking on a FIFO, never taking a terminal.
const int objectOpenFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

struct Header {
    std::uint32_t magic;
    std::uint32_t kind;
    std::uint32_t listed;
    std::uint32_t everyone;
    std::uint32_t administrators;
    std::uint32_t reserved;
    std::uint64_t dataSize;
};
static_assert(sizeof(Header) <= stateOffset, "the state follows the header");

// Byte 0 guards opening and closing; byte 1 is held shared by every open handle.
const off_t guardByte = 0;
const off_t livenessByte = 1;

struct flock byteLock(off_t byte, short type)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

bool lockByte(int fd, off_t byte, short type, bool wait)
{
    struct flock lock = byteLock(byte, type);
    int result;
    do
        result = fcntl(fd, wait ? F_OFD_SETLKW : F_OFD_SETLK, &lock);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

// Whether no handle holds a lock on the byte (without taking one).
bool byteFree(int fd, off_t byte)
{
    struct flock lock = byteLock(byte, F_WRLCK);
    return fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type == F_UNLCK;
}

std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

// Whether a file of the directory may be taken for an object: a regular file (never a FIFO
// or device that could block or redirect us) and, where others may make files of our names,
// this user's own: another user could have made one of a name first.
bool trusted(const struct stat& file, const ObjectDirectory& directory)
{
    return S_ISREG(file.st_mode) && (!directory.usersOnly() || file.st_uid == directory.user());
}

std::shared_ptr<NamedObject> fail(int fd, DWORD error)
{
    if (fd >= 0)
        close(fd); // drops every lock of this descriptor
    SetLastError(error);
    return nullptr;
}

// Why an existing object is refused to a caller who wants `desiredAccess` on a `kind`.
DWORD refusal(const Header& header, ObjectKind kind, DWORD desiredAccess)
{
    if (header.magic != magic || header.kind != static_cast<std::uint32_t>(kind))
        return ERROR_INVALID_HANDLE;
    ObjectAccess access;
    access.listed = header.listed != 0;
    access.everyone = header.everyone;
    access.administrators = header.administrators;
    return (desiredAccess & ~access.granted()) != 0 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

// The objects this process holds, by file.
class ProcessObjects {
public:
    using Key = NamedObject::FileId;

    // The object that this process holds (not one inherited from a parent that forked it).
    std::shared_ptr<NamedObject> find(const Key& key)
    {
        std::lock_guard<std::mutex> guard(lock_);
        auto found = objects_.find(key);
        std::shared_ptr<NamedObject> object = found != objects_.end() ? found->second.lock() : nullptr;
        return object != nullptr && object->ownedHere() ? object : nullptr;
    }

    void add(const Key& key, const std::shared_ptr<NamedObject>& object)
    {
        std::lock_guard<std::mutex> guard(lock_);
        objects_[key] = object;
    }

    void forget(const Key& key)
    {
        std::lock_guard<std::mutex> guard(lock_);
        auto found = objects_.find(key);
        if (found != objects_.end() && found->second.expired())
            objects_.erase(found);
    }

    static std::mutex& lockOfAll();

private:
    std::mutex lock_;
    std::map<Key, std::weak_ptr<NamedObject>> objects_;
};

ProcessObjects& processObjects()
{
    // Never destroyed: handles may outlive static destructors.
    static ProcessObjects* const objects = [] {
        holdAcrossFork<&ProcessObjects::lockOfAll>();
        return new ProcessObjects;
    }();
    return *objects;
}

std::mutex& ProcessObjects::lockOfAll() { return processObjects().lock_; }

// Opens a file of the directory that may be taken for an object, never through a link; -1
// with the last error set otherwise (ERROR_ACCESS_DENIED for a file that is no object of
// this user's: a link, a FIFO, a directory, another user's file).
int openTrusted(const ObjectDirectory& directory, const std::string& fileName, int flags, unsigned mode,
                struct stat& opened)
{
    const int fd = sys::openat(directory.descriptor(), fileName.c_str(), objectOpenFlags | flags, mode);
    if (fd < 0) {
        if (errno == ELOOP)
            SetLastError(ERROR_ACCESS_DENIED);
        else
            setLastErrorFromErrno(errno);
        return -1;
    }
    if (fstat(fd, &opened) != 0 || !trusted(opened, directory)) {
        close(fd);
        SetLastError(ERROR_ACCESS_DENIED);
        return -1;
    }
    return fd;
}

// Whether the directory's entry of that name is the file opened.
bool stillNamed(const ObjectDirectory& directory, const std::string& fileName, const struct stat& opened)
{
    struct stat named;
    return fstatat(directory.descriptor(), fileName.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           named.st_ino == opened.st_ino && named.st_dev == opened.st_dev;
}

// Opens the file that the name stands for now, with the guard byte held; a file that its
// last holder removed meanwhile is passed over. -1 with the last error set on failure.
int openGuarded(const ObjectDirectory& directory, const std::string& fileName, bool create, unsigned mode,
                struct stat& opened)
{
    for (;;) {
        const int fd = openTrusted(directory, fileName, create ? O_CREAT : 0, mode, opened);
        if (fd < 0)
            return -1;
        if (!lockByte(fd, guardByte, F_WRLCK, true)) {
            setLastErrorFromErrno(errno);
            close(fd);
            return -1;
        }
        if (fstat(fd, &opened) == 0 && opened.st_nlink > 0 && stillNamed(directory, fileName, opened))
            return fd;
        close(fd);
    }
}

// The header of an object that others hold, when it is of the kind and grants the access.
void* joined(int fd, const struct stat& opened, ObjectKind kind, DWORD desiredAccess)
{
    if (static_cast<std::size_t>(opened.st_size) < pageSize()) {
        SetLastError(ERROR_INVALID_HANDLE); // not one of ours
        return nullptr;
    }
    void* header = mmap(nullptr, pageSize(), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (header == MAP_FAILED) {
        setLastErrorFromErrno(errno);
        return nullptr;
    }
    const DWORD refused = refusal(*static_cast<const Header*>(header), kind, desiredAccess);
    if (refused == ERROR_SUCCESS)
        return header;
    munmap(header, pageSize());
    SetLastError(refused);
    return nullptr;
}

// A new object in the file (new, or left by holders that all died): zeroed, its memory
// reserved (a full file system fails here, never a write into the mapping later with a
// SIGBUS), its header and state written before anybody else can see it.
void* startedFresh(int fd, const struct stat& opened, const ObjectDirectory& directory, const std::string& fileName,
                   ObjectKind kind, const ObjectAccess& access, unsigned mode, std::uint64_t dataSize,
                   NamedObject::Initializer initialize)
{
    void* header = MAP_FAILED;
    DWORD error = ERROR_SUCCESS;
    if (opened.st_size != 0 && sys::ftruncate(fd, 0) != 0) // a file just made is empty already
        error = setLastErrorFromErrno(errno);
    else if (sys::fallocate(fd, static_cast<off_t>(pageSize() + dataSize)) != 0)
        error = errno == ENOSPC || errno == EFBIG || errno == EDQUOT ? ERROR_COMMITMENT_LIMIT
                                                                     : setLastErrorFromErrno(errno);
    else if ((header = mmap(nullptr, pageSize(), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0)) == MAP_FAILED)
        error = setLastErrorFromErrno(errno);
    if (header == MAP_FAILED) {
        SetLastError(error);
        unlinkat(directory.descriptor(), fileName.c_str(), 0);
        return nullptr;
    }
    if ((opened.st_mode & 07777) != mode)
        fchmod(fd, mode); // the mode asked for, whatever the umask
    *static_cast<Header*>(header) = Header{magic, static_cast<std::uint32_t>(kind), access.listed, access.everyone,
                                           access.administrators, 0, dataSize};
    if (initialize != nullptr)
        initialize(static_cast<char*>(header) + stateOffset);
    return header;
}

// Removes files of the directory that no handle holds, looking at no more than `limit`
// files; gives how many went. A file that some handle holds (this one's among them) is told
// by one query of its liveness byte, before any lock is taken.
unsigned removeStale(const ObjectDirectory& directory, unsigned limit)
{
    unsigned removed = 0;
    for (const std::string& fileName : directory.fileNames(limit)) {
        const int fd = sys::openat(directory.descriptor(), fileName.c_str(), objectOpenFlags, 0);
        struct stat opened;
        // Under the guard, with no handle holding the liveness byte, nobody can join it.
        if (fd >= 0 && byteFree(fd, livenessByte) && fstat(fd, &opened) == 0 && trusted(opened, directory) &&
            lockByte(fd, guardByte, F_WRLCK, false) && lockByte(fd, livenessByte, F_WRLCK, false) &&
            stillNamed(directory, fileName, opened) && unlinkat(directory.descriptor(), fileName.c_str(), 0) == 0)
            ++removed;
        if (fd >= 0)
            close(fd);
    }
    return removed;
}

// Whether a fresh create of this process should sweep: the first one does, and after it at
// most one a second. A sweep reads the directory and probes up to 16 files, which a process
// that makes objects often should not pay for each; files left by holders that all died are
// inert and wait that long.
bool sweepDue(pid_t process)
{
    static std::atomic<pid_t> sweeper{0};
    static std::atomic<std::int64_t> lastSweep{0};
    const std::int64_t now = std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::chrono::steady_clock::now().time_since_epoch())
                                 .count();
    if (sweeper.load(std::memory_order_relaxed) == process && now - lastSweep.load(std::memory_order_relaxed) < 1000)
        return false;
    sweeper.store(process, std::memory_order_relaxed);
    lastSweep.store(now, std::memory_order_relaxed);
    return true;
}

// The directory of an object name and the name in it (after "Local\" or "Global\"), or null
// with the Win32 code of a name that Windows refuses as well: nothing after the prefix
// (ERROR_INVALID_NAME), a further backslash (ERROR_PATH_NOT_FOUND), more than MAX_PATH
// characters (ERROR_FILENAME_EXCED_RANGE).
std::shared_ptr<const ObjectDirectory> directoryOf(const char* name, std::string& rest)
{
    if (name == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER); // the layer has named objects only
        return nullptr;
    }
    rest = name;
    bool global = false;
    if (rest.size() > maxPath) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return nullptr;
    }
    if (rest.compare(0, 6, "Local\\") == 0) {
        rest.erase(0, 6);
    } else if (rest.compare(0, 7, "Global\\") == 0) {
        rest.erase(0, 7);
        global = true;
    }
    if (rest.empty() || rest.find('\\') != std::string::npos) {
        SetLastError(rest.empty() ? ERROR_INVALID_NAME : ERROR_PATH_NOT_FOUND); // no such directory of objects
        return nullptr;
    }
    return global ? ObjectDirectory::global() : ObjectDirectory::local();
}

} // namespace

std::vector<ObjectFile> userObjects()
{
    std::vector<ObjectFile> objects;
    const std::shared_ptr<const ObjectDirectory> directory = ObjectDirectory::local();
    if (directory == nullptr)
        return objects;
    for (const std::string& fileName : directory->fileNames()) {
        struct stat opened;
        const int fd = openTrusted(*directory, fileName, 0, 0, opened);
        ObjectFile file{directory->objectName(fileName), 0, false, 0, fd < 0};
        if (fd < 0 && GetLastError() != ERROR_ACCESS_DENIED)
            continue; // gone meanwhile
        if (fd >= 0) {
            Header header = {};
            if (pread(fd, &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header) && header.magic == magic) {
                file.kind = header.kind;
                file.dataSize = header.dataSize;
            }
            file.live = !byteFree(fd, guardByte) || !byteFree(fd, livenessByte);
            close(fd);
        }
        objects.push_back(file);
    }
    return objects;
}

unsigned removeStaleObjects()
{
    const std::shared_ptr<const ObjectDirectory> directory = ObjectDirectory::local();
    return directory != nullptr ? removeStale(*directory, std::numeric_limits<unsigned>::max()) : 0;
}

std::shared_ptr<NamedObject> NamedObject::create(ObjectKind kind, const char* name, const SECURITY_ATTRIBUTES* security,
                                                 DWORD desiredAccess, std::uint64_t dataSize, Initializer initialize,
                                                 bool& existed)
{
    return acquire(kind, name, security, desiredAccess, dataSize, initialize, true, existed);
}

std::shared_ptr<NamedObject> NamedObject::open(ObjectKind kind, const char* name, DWORD desiredAccess)
{
    bool existed = false;
    return acquire(kind, name, nullptr, desiredAccess, 0, nullptr, false, existed);
}

std::shared_ptr<NamedObject> NamedObject::acquire(ObjectKind kind, const char* name, const SECURITY_ATTRIBUTES* security,
                                                  DWORD desiredAccess, std::uint64_t dataSize, Initializer initialize,
                                                  bool create, bool& existed)
{
    std::string rest;
    const std::shared_ptr<const ObjectDirectory> directory = directoryOf(name, rest);
    if (directory == nullptr)
        return nullptr;
    const std::string fileName = directory->fileName(rest);
    const ObjectAccess access = ObjectAccess::of(security);
    // Within a user's scope the access list decides what that user's processes may do;
    // no other user may open the file at all.
    const unsigned mode = directory->usersOnly() ? ownerOnly : access.fileMode();
    struct stat opened;
    const int fd = openGuarded(*directory, fileName, create, mode, opened);
    if (fd < 0)
        return nullptr;
    const ProcessObjects::Key key(opened.st_dev, opened.st_ino);
    if (std::shared_ptr<NamedObject> held = processObjects().find(key)) {
        close(fd); // this process holds the object already: one more handle on it
        const DWORD refused = refusal(*static_cast<const Header*>(held->header_), kind, desiredAccess);
        if (refused != ERROR_SUCCESS)
            return fail(-1, refused);
        existed = true;
        SetLastError(ERROR_ALREADY_EXISTS);
        return held;
    }
    existed = !lockByte(fd, livenessByte, F_WRLCK, false); // someone holds it
    if (!existed && !create) {
        unlinkat(directory->descriptor(), fileName.c_str(), 0); // left behind by holders that died
        return fail(fd, ERROR_FILE_NOT_FOUND);
    }
    void* const header = existed ? joined(fd, opened, kind, desiredAccess)
                                 : startedFresh(fd, opened, *directory, fileName, kind, access, mode, dataSize, initialize);
    if (header == nullptr)
        return fail(fd, GetLastError());
    lockByte(fd, livenessByte, F_RDLCK, false); // compatible with the other holders
    lockByte(fd, guardByte, F_UNLCK, false);
    std::shared_ptr<NamedObject> object(new NamedObject(fd, key, directory, fileName, header));
    processObjects().add(key, object);
    if (!existed && sweepDue(object->owner_))
        removeStale(*directory, sweptPerCreate);
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return object;
}

NamedObject::~NamedObject()
{
    if (ownedHere()) { // an inherited copy's locks are the parent's
        lockByte(fd_, guardByte, F_WRLCK, true);
        lockByte(fd_, livenessByte, F_UNLCK, false);
        if (lockByte(fd_, livenessByte, F_WRLCK, false))
            unlinkat(directory_->descriptor(), fileName_.c_str(), 0); // the last handle anywhere
    }
    processObjects().forget(file_);
    if (!keepMapped_)
        munmap(header_, pageSize());
    close(fd_);
}

void* NamedObject::keepMappedAfterClose()
{
    keepMapped_ = true;
    return header_;
}

void NamedObject::unmapKept(void* header) { munmap(header, pageSize()); }

bool NamedObject::ownedHere() const { return owner_ == getpid(); }

void* NamedObject::state() const { return static_cast<char*>(header_) + stateOffset; }

std::uint64_t NamedObject::dataSize() const { return static_cast<const Header*>(header_)->dataSize; }

std::uint64_t NamedObject::dataOffset() { return pageSize(); }

} // namespace posix
} // namespace ovo
