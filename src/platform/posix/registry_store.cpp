#include "platform/posix/registry_store.h"

#include "platform/posix/file_name.h"
#include "platform/posix/file_object.h"
#include "platform/posix/foreign_links.h"
#include "platform/posix/handle.h"
#include "platform/posix/system_calls.h"

#include <ovo/strings.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <pwd.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

namespace {

namespace sys = ovo::posix::sys;

// The object behind a key handle of the layer: a descriptor of the key's directory, which
// stays this key's whatever happens to the names on the way to it.
struct RegistryKey {
    RegistryKey(int directory, REGSAM access, bool machine) : directory(directory), access(access), machine(machine) {}
    ~RegistryKey() { close(directory); }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    const int directory; // O_PATH: it names the directory, it reads nothing
    const REGSAM access;
    const bool machine;
};
using Key = std::shared_ptr<const RegistryKey>;

// The keys open in this process, so that a stale or foreign handle is refused, not used. A
// call holds its key while it works, so that a close by another thread cannot pull the
// directory from under it.
class OpenKeys {
public:
    HKEY add(Key key)
    {
        const HKEY handle = reinterpret_cast<HKEY>(const_cast<RegistryKey*>(key.get()));
        std::lock_guard<std::mutex> guard(lock_);
        keys_.emplace(handle, std::move(key));
        return handle;
    }
    bool remove(HKEY handle)
    {
        std::lock_guard<std::mutex> guard(lock_);
        return keys_.erase(handle) != 0;
    }
    Key find(HKEY handle)
    {
        std::lock_guard<std::mutex> guard(lock_);
        const auto found = keys_.find(handle);
        return found == keys_.end() ? nullptr : found->second;
    }

private:
    std::mutex lock_;
    std::unordered_map<HKEY, Key> keys_;
};

OpenKeys& openKeys()
{
    static auto* keys = new OpenKeys; // never destroyed: keys may be closed from static destructors
    return *keys;
}

std::string homeDirectory()
{
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/')
        return home;
    const passwd* user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "/";
}

// Where a root key's tree lives: the store's directories below a configuration directory.
struct Store {
    std::string configuration;
    bool machine;
};

bool storeOf(HKEY handle, Store& store)
{
    if (handle == HKEY_CURRENT_USER) {
        const char* config = std::getenv("XDG_CONFIG_HOME");
        store = {config != nullptr && config[0] == '/' ? std::string(config) : homeDirectory() + "/.config", false};
    } else if (handle == HKEY_LOCAL_MACHINE) {
        const char* dirs = std::getenv("XDG_CONFIG_DIRS");
        const std::string first = dirs != nullptr ? std::string(dirs).substr(0, std::string(dirs).find(':')) : "";
        store = {first.empty() || first[0] != '/' ? std::string("/etc/xdg") : first, true};
    } else {
        return false;
    }
    return true;
}

const std::size_t longestFileName = 255;  // NAME_MAX of the usual file systems
const std::size_t longestPlainName = 200; // of a value's file name; longer ones go by a hash
const std::size_t longestKeyName = 255;   // characters of one element, as on Windows

// A name as a prefix and the 64-bit FNV-1a hash of the name in hex.
std::string hashedName(const char* prefix, const std::string& name)
{
    std::uint64_t hash = 14695981039346656037ull;
    for (unsigned char c : name)
        hash = (hash ^ c) * 1099511628211ull;
    char hex[17];
    std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(hash));
    return prefix + std::string(hex);
}

// One element of a key path as a directory name: folded to lower case (names compare
// without case) and escaped, so that ordinary names stay as they are and every other name
// Windows takes stays inside the store: "." and ".." become %2E and %2E%2E, a name whose
// escaping is too long for a file name goes by its hash behind "%k" (no escaped name
// starts so).
std::string encodedElement(const std::string& element)
{
    const std::string folded = ovo::toLower(element);
    if (folded == "." || folded == "..")
        return folded == "." ? "%2E" : "%2E%2E";
    const std::string escaped = ovo::posix::escapedFileName(folded);
    return escaped.size() <= longestFileName ? escaped : hashedName("%k", folded);
}

// The directory names of a sub-key, one per element. As on Windows a key name holds any
// character but the backslash, empty elements count for nothing ("a\\b" is "a\b", "" the
// key itself), and a leading backslash or a name of more than 255 characters is refused.
LONG subKeyNames(LPCSTR subKey, std::vector<std::string>& names)
{
    const std::string path = subKey != nullptr ? subKey : "";
    if (!path.empty() && path[0] == '\\')
        return ERROR_BAD_PATHNAME;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('\\', begin), path.size());
        const std::string element = path.substr(begin, end - begin);
        begin = end + 1;
        if (element.size() > longestKeyName)
            return ERROR_INVALID_PARAMETER;
        if (!element.empty())
            names.push_back(encodedElement(element));
    }
    return ERROR_SUCCESS;
}

LONG errorOf(int error) { return static_cast<LONG>(ovo::posix::setLastErrorFromErrno(error)); }

LONG missingOr(int error) { return error == ENOENT || error == ENOTDIR ? ERROR_FILE_NOT_FOUND : errorOf(error); }

// mkdir -p of the configuration directory a store lives in.
LONG makeDirectories(const std::string& path, mode_t mode)
{
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string prefix = path.substr(0, slash);
        if (mkdir(prefix.c_str(), mode) != 0 && errno != EEXIST)
            return errorOf(errno);
        if (slash == std::string::npos)
            return ERROR_SUCCESS;
    }
}

int openDirectory(int from, const char* name)
{
    return ovo::posix::openWithoutForeignLinks(from, name, O_PATH | O_DIRECTORY | O_CLOEXEC);
}

// Opens the directories named one below the other from `from` (making the missing ones
// when asked): `directory` becomes the last one's descriptor, `created` tells whether one
// was made.
LONG openDirectories(int from, const std::vector<std::string>& names, bool create, mode_t mode, int& directory,
                     bool& created)
{
    directory = openDirectory(from, ".");
    int error = errno;
    for (const std::string& name : names) {
        if (directory < 0)
            break;
        int next = openDirectory(directory, name.c_str());
        if (next < 0 && errno == ENOENT && create) {
            const bool made = mkdirat(directory, name.c_str(), mode) == 0;
            created = created || made;
            if (made || errno == EEXIST)
                next = openDirectory(directory, name.c_str());
        }
        error = errno; // why the last one failed, if it did
        close(directory);
        directory = next;
    }
    return directory >= 0 ? ERROR_SUCCESS : missingOr(error);
}

LONG openStore(const Store& store, bool create, int& directory)
{
    const mode_t mode = store.machine ? 0755 : 0700;
    if (create) {
        const LONG made = makeDirectories(store.configuration, mode);
        if (made != ERROR_SUCCESS)
            return made;
    }
    bool created = false;
    const int configuration = open(store.configuration.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (configuration < 0)
        return missingOr(errno);
    const LONG result = openDirectories(configuration, {"ovosystem", "registry"}, create, mode, directory, created);
    close(configuration);
    return result;
}

// The key a handle stands for: an open key, or a root key's store.
LONG describe(HKEY handle, Key& key)
{
    Store store;
    if (!storeOf(handle, store)) {
        key = openKeys().find(handle);
        return key != nullptr ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
    }
    int directory = -1;
    const LONG result = openStore(store, false, directory);
    if (result == ERROR_SUCCESS)
        key = std::make_shared<const RegistryKey>(directory, KEY_ALL_ACCESS, store.machine);
    return result;
}

// A value is one file in its key's directory, so that a write costs the value written and
// a query the value read. Its name is the value name folded to lower case and escaped
// behind "%v" ('%' and a letter that is no hex digit: no key directory is named so);
// names too long for one file name go by a 64-bit hash of the folded name behind "%h".
// The file holds a magic word, the type, then the data.
const char valuePrefix[] = "%v";
const char hashedValuePrefix[] = "%h";
const char nextValueFile[] = "%next"; // the value being written, complete before the rename
const char valueMagic[8] = {'O', 'V', 'O', 'V', 'A', 'L', '1', '\n'};
const std::size_t headerSize = sizeof valueMagic + 4;

std::string valueFile(LPCSTR name)
{
    const std::string folded = ovo::toLower(name != nullptr ? name : "");
    const std::string escaped = ovo::posix::escapedFileName(folded);
    return escaped.size() <= longestPlainName ? valuePrefix + escaped : hashedName(hashedValuePrefix, folded);
}

bool isValueFile(const char* name)
{
    return std::strncmp(name, valuePrefix, 2) == 0 || std::strncmp(name, hashedValuePrefix, 2) == 0;
}

// Opens a value file of the key for reading (without waiting: a FIFO there never blocks).
int openValue(const Key& key, const std::string& file)
{
    return ovo::posix::openWithoutForeignLinks(key->directory, file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

// Fills the buffers in order or fails (EIO for a file that ends early).
bool readWhole(int fd, iovec* parts, int count)
{
    while (count > 0) {
        const ssize_t done = sys::readv(fd, parts, count);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0) {
            errno = done == 0 ? EIO : errno;
            return false;
        }
        std::size_t left = static_cast<std::size_t>(done);
        for (; count > 0 && left >= parts->iov_len; ++parts, --count)
            left -= parts->iov_len;
        if (count > 0) {
            parts->iov_base = static_cast<char*>(parts->iov_base) + left;
            parts->iov_len -= left;
        }
    }
    return true;
}

// The value file that answered ERROR_MORE_DATA, kept open for the thread's next call: the
// reader asks again at once with the room it was told (queryStringValue does), and so
// reads the very version whose size it was told, without a second open. A change or close
// of a key by the thread lets it go.
class HeldValue {
public:
    ~HeldValue() { release(); }
    void hold(const Key& key, const std::string& file, int fd, const struct stat& status)
    {
        release();
        key_ = key;
        file_ = file;
        fd_ = fd;
        status_ = status;
    }
    // The descriptor and status held for this value, or -1; nothing is held afterwards.
    int take(const Key& key, const std::string& file, struct stat& status)
    {
        const int fd = key == key_ && file == file_ ? fd_ : -1;
        if (fd >= 0) {
            status = status_;
            fd_ = -1;
        }
        release();
        return fd;
    }
    void release()
    {
        if (fd_ >= 0)
            close(fd_);
        fd_ = -1;
        key_.reset();
    }

private:
    Key key_;
    std::string file_;
    int fd_ = -1;
    struct stat status_;
};

thread_local HeldValue heldValue;

// A key's value: its type and size from the header, its data when asked for, with the
// header in one read. Data that does not fit is not read: the size it needs is the answer
// (ERROR_MORE_DATA), and the file is held for the call that asks again with that room.
LONG readValue(const Key& key, const std::string& file, LPDWORD type, LPBYTE data, LPDWORD size)
{
    struct stat status;
    int fd = heldValue.take(key, file, status);
    const bool held = fd >= 0;
    if (!held && (fd = openValue(key, file)) < 0)
        return missingOr(errno);
    if (!held && fstat(fd, &status) != 0) {
        const int error = errno;
        close(fd);
        return errorOf(error);
    }
    LONG result = ERROR_SUCCESS;
    if (!S_ISREG(status.st_mode) || static_cast<std::size_t>(status.st_size) < headerSize) {
        result = ERROR_FILE_NOT_FOUND; // only a regular file can be a value
    } else {
        const DWORD length = static_cast<DWORD>(status.st_size - static_cast<off_t>(headerSize));
        char header[headerSize];
        iovec parts[2] = {{header, headerSize}, {data, length}};
        if (data != nullptr && *size < length) {
            result = ERROR_MORE_DATA;
        } else if (!readWhole(fd, parts, data != nullptr ? 2 : 1)) {
            result = errorOf(errno);
        } else if (std::memcmp(header, valueMagic, sizeof valueMagic) != 0) {
            result = ERROR_FILE_NOT_FOUND; // not written by this store
        } else if (type != nullptr) {
            std::memcpy(type, header + sizeof valueMagic, 4);
        }
        if (size != nullptr && (result == ERROR_SUCCESS || result == ERROR_MORE_DATA))
            *size = length;
    }
    if (result == ERROR_MORE_DATA)
        heldValue.hold(key, file, fd, status);
    else
        close(fd);
    return result;
}

// Writes the next value beside the key's values and renames it into place: another
// process sees the old or the new value, also when this one dies on the way.
LONG writeValue(const Key& key, const std::string& file, DWORD type, const BYTE* data, DWORD size)
{
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const mode_t mode = key->machine ? 0644 : 0600;
    int fd = sys::openat(key->directory, nextValueFile, flags, mode);
    if (fd < 0 && errno == EEXIST) { // left by a writer that died
        unlinkat(key->directory, nextValueFile, 0);
        fd = sys::openat(key->directory, nextValueFile, flags, mode);
    }
    if (fd < 0)
        return errorOf(errno);
    char header[headerSize];
    std::memcpy(header, valueMagic, sizeof valueMagic);
    std::memcpy(header + sizeof valueMagic, &type, 4);
    std::size_t headerDone = 0, dataDone = 0;
    const bool written =
        ovo::posix::writeWhole(fd, header, headerSize, headerDone) && ovo::posix::writeWhole(fd, data, size, dataDone);
    const int writeError = errno;
    close(fd);
    if (written && sys::renameat(key->directory, nextValueFile, key->directory, file.c_str()) == 0)
        return ERROR_SUCCESS;
    const LONG failure = errorOf(written ? errno : writeError);
    unlinkat(key->directory, nextValueFile, 0); // the old value stays as it was
    return failure;
}

// Changes a value under an exclusive lock of its key's directory: writers in every process
// take turns; readers never wait, they open whole files.
template <typename Change> LONG changeValue(HKEY handle, LPCSTR name, Change change)
{
    Key key;
    LONG result = describe(handle, key);
    if (result != ERROR_SUCCESS)
        return result;
    if ((key->access & KEY_SET_VALUE) == 0)
        return ERROR_ACCESS_DENIED;
    heldValue.release(); // the thread reads what it wrote
    const int lock = openat(key->directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (lock < 0)
        return missingOr(errno);
    while (flock(lock, LOCK_EX) != 0 && errno == EINTR) {
    }
    result = change(key, valueFile(name));
    close(lock);
    return result;
}

LONG openKey(HKEY handle, LPCSTR subKey, REGSAM access, PHKEY result, bool create, LPDWORD disposition)
{
    if (result == nullptr)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    std::vector<std::string> names;
    LONG status = subKeyNames(subKey, names);
    if (status != ERROR_SUCCESS)
        return status;
    Store store;
    Key from;
    int start = -1;
    if (storeOf(handle, store))
        status = openStore(store, create, start);
    else if ((from = openKeys().find(handle)) != nullptr)
        store.machine = from->machine;
    else
        status = ERROR_INVALID_HANDLE;
    if (status != ERROR_SUCCESS)
        return status;
    int directory = -1;
    bool created = false;
    status = openDirectories(from != nullptr ? from->directory : start, names, create, store.machine ? 0755 : 0700,
                             directory, created);
    if (start >= 0)
        close(start);
    if (status != ERROR_SUCCESS)
        return status;
    if (disposition != nullptr)
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    *result = openKeys().add(std::make_shared<const RegistryKey>(directory, access, store.machine));
    return ERROR_SUCCESS;
}

} // namespace

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD, REGSAM access, PHKEY result)
{
    return openKey(key, subKey, access, result, false, nullptr);
}

LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD, LPSTR, DWORD options, REGSAM access, LPSECURITY_ATTRIBUTES,
                     PHKEY result, LPDWORD disposition)
{
    if (options != REG_OPTION_NON_VOLATILE)
        return ERROR_INVALID_PARAMETER; // every key of this store lives on disk
    return openKey(key, subKey, access, result, true, disposition);
}

LONG RegCloseKey(HKEY key)
{
    if (key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE)
        return ERROR_SUCCESS;
    heldValue.release();
    return openKeys().remove(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

// Makes the key's values durable: each value file, then the directory that holds the renames.
LONG RegFlushKey(HKEY handle)
{
    Key key;
    LONG result = describe(handle, key);
    if (result != ERROR_SUCCESS)
        return result;
    const int directory = openat(key->directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const listing = directory < 0 ? nullptr : fdopendir(directory);
    if (listing == nullptr) {
        const int error = errno;
        if (directory >= 0)
            close(directory);
        return missingOr(error);
    }
    std::vector<std::string> files;
    while (const dirent* entry = readdir(listing))
        if (isValueFile(entry->d_name))
            files.push_back(entry->d_name);
    const auto sync = [](int fd) { return sys::fsync(fd) == 0 ? static_cast<LONG>(ERROR_SUCCESS) : errorOf(errno); };
    for (const std::string& file : files) {
        struct stat status;
        const int fd = openValue(key, file);
        if (fd < 0 && errno != ENOENT)
            result = errorOf(errno);
        else if (fd >= 0 && fstat(fd, &status) == 0 && S_ISREG(status.st_mode))
            result = sync(fd);
        if (fd >= 0)
            close(fd);
        if (result != ERROR_SUCCESS)
            break;
    }
    if (result == ERROR_SUCCESS)
        result = sync(directory); // the renames
    closedir(listing);
    return result;
}

LONG RegQueryValueExA(HKEY handle, LPCSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size)
{
    Key key;
    LONG result = describe(handle, key);
    if (result != ERROR_SUCCESS)
        return result;
    if ((key->access & KEY_QUERY_VALUE) == 0)
        return ERROR_ACCESS_DENIED;
    if (data != nullptr && size == nullptr)
        return ERROR_INVALID_PARAMETER;
    return readValue(key, valueFile(name), type, data, size);
}

LONG RegSetValueExA(HKEY handle, LPCSTR name, DWORD, DWORD type, const BYTE* data, DWORD size)
{
    if (data == nullptr && size != 0)
        return ERROR_INVALID_PARAMETER;
    return changeValue(
        handle, name, [&](const Key& key, const std::string& file) { return writeValue(key, file, type, data, size); });
}

LONG RegDeleteValueA(HKEY handle, LPCSTR name)
{
    return changeValue(handle, name, [](const Key& key, const std::string& file) {
        return unlinkat(key->directory, file.c_str(), 0) == 0 ? static_cast<LONG>(ERROR_SUCCESS) : missingOr(errno);
    });
}
