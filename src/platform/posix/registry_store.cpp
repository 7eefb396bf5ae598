#include "platform/posix/registry_store.h"

#include "platform/posix/file_name.h"
#include "platform/posix/file_object.h"
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
#include <mutex>
#include <pwd.h>
#include <set>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

namespace sys = ovo::posix::sys;

// The object behind a key handle of the layer.
struct RegistryKey {
    std::string directory;
    REGSAM access;
    bool machine;
};

// The keys open in this process, so that a stale or foreign handle is refused, not used.
class OpenKeys {
public:
    HKEY add(RegistryKey* key)
    {
        std::lock_guard<std::mutex> guard(lock_);
        keys_.insert(key);
        return reinterpret_cast<HKEY>(key);
    }
    bool remove(HKEY handle)
    {
        std::lock_guard<std::mutex> guard(lock_);
        auto* key = reinterpret_cast<RegistryKey*>(handle);
        if (keys_.erase(key) == 0)
            return false;
        delete key;
        return true;
    }
    // A copy of the key's description, or false for a handle that is not open.
    bool find(HKEY handle, RegistryKey& key)
    {
        std::lock_guard<std::mutex> guard(lock_);
        auto found = keys_.find(reinterpret_cast<RegistryKey*>(handle));
        if (found == keys_.end())
            return false;
        key = **found;
        return true;
    }

private:
    std::mutex lock_;
    std::set<RegistryKey*> keys_;
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

std::string userStore()
{
    const char* config = std::getenv("XDG_CONFIG_HOME");
    return (config != nullptr && config[0] == '/' ? std::string(config) : homeDirectory() + "/.config") +
           "/ovosystem/registry";
}

std::string machineStore()
{
    const char* dirs = std::getenv("XDG_CONFIG_DIRS");
    std::string first = dirs != nullptr ? std::string(dirs).substr(0, std::string(dirs).find(':')) : std::string();
    return (first.empty() || first[0] != '/' ? std::string("/etc/xdg") : first) + "/ovosystem/registry";
}

// The key a handle stands for: a root key or an open key.
LONG describe(HKEY handle, RegistryKey& key)
{
    if (handle == HKEY_CURRENT_USER)
        key = RegistryKey{userStore(), KEY_ALL_ACCESS, false};
    else if (handle == HKEY_LOCAL_MACHINE)
        key = RegistryKey{machineStore(), KEY_ALL_ACCESS, true};
    else if (!openKeys().find(handle, key))
        return ERROR_INVALID_HANDLE;
    return ERROR_SUCCESS;
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

// The directories from the key's own down to the sub-key's. As on Windows a key name holds
// any character but the backslash, empty elements count for nothing ("a\\b" is "a\b",
// "" the key itself), and a leading backslash or a name of more than 255 characters is
// refused.
LONG subKeyDirectories(const RegistryKey& key, LPCSTR subKey, std::vector<std::string>& directories)
{
    directories.assign(1, key.directory);
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
            directories.push_back(directories.back() + "/" + encodedElement(element));
    }
    return ERROR_SUCCESS;
}

LONG errorOf(int error) { return static_cast<LONG>(ovo::posix::setLastErrorFromErrno(error)); }

bool isDirectory(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// mkdir -p of a store's root.
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

std::string valuePath(const std::string& directory, LPCSTR name)
{
    const std::string folded = ovo::toLower(name != nullptr ? name : "");
    const std::string escaped = ovo::posix::escapedFileName(folded);
    const std::string file =
        escaped.size() <= longestPlainName ? valuePrefix + escaped : hashedName(hashedValuePrefix, folded);
    return directory + "/" + file;
}

bool isValueFile(const char* name)
{
    return std::strncmp(name, valuePrefix, 2) == 0 || std::strncmp(name, hashedValuePrefix, 2) == 0;
}

// Opens a value file for reading; only a regular file counts (a FIFO would block).
int openValue(const std::string& path, struct stat& status)
{
    const int fd = sys::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd >= 0 && (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))) {
        close(fd);
        errno = ENOENT;
        return -1;
    }
    return fd;
}

// Reads `size` bytes or fails (EIO for a file that ends early).
bool readExactly(int fd, void* buffer, std::size_t size)
{
    auto* bytes = static_cast<char*>(buffer);
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = sys::read(fd, bytes + done, size - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            errno = count == 0 ? EIO : errno;
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

// A key's value: its type and size from the header, its data only when asked for.
LONG readValue(const std::string& path, LPDWORD type, LPBYTE data, LPDWORD size)
{
    struct stat status;
    const int fd = openValue(path, status);
    if (fd < 0)
        return errno == ENOENT || errno == ENOTDIR ? ERROR_FILE_NOT_FOUND : errorOf(errno);
    char header[headerSize];
    LONG result = ERROR_SUCCESS;
    if (static_cast<std::size_t>(status.st_size) >= headerSize && !readExactly(fd, header, headerSize)) {
        result = errorOf(errno);
    } else if (static_cast<std::size_t>(status.st_size) < headerSize ||
               std::memcmp(header, valueMagic, sizeof valueMagic) != 0) {
        result = ERROR_FILE_NOT_FOUND; // not written by this store
    } else {
        const DWORD length = static_cast<DWORD>(status.st_size - headerSize);
        if (type != nullptr)
            std::memcpy(type, header + sizeof valueMagic, 4);
        if (data != nullptr && *size < length)
            result = ERROR_MORE_DATA;
        else if (data != nullptr && !readExactly(fd, data, length))
            result = errorOf(errno);
        if (size != nullptr)
            *size = length;
    }
    close(fd);
    return result;
}

// Writes the next value beside the key's values and renames it into place: another
// process sees the old or the new value, also when this one dies on the way.
LONG writeValue(const std::string& directory, const std::string& path, DWORD type, const BYTE* data, DWORD size,
                bool machine)
{
    const std::string next = directory + "/" + nextValueFile;
    unlink(next.c_str()); // left by a writer that died
    const int fd = sys::open(next.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, machine ? 0644 : 0600);
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
    if (written && sys::rename(next.c_str(), path.c_str()) == 0)
        return ERROR_SUCCESS;
    const LONG failure = errorOf(written ? errno : writeError);
    unlink(next.c_str()); // the old value stays as it was
    return failure;
}

// Changes a value under an exclusive lock of its key's directory: writers in every process
// take turns; readers never wait, they open whole files.
template <typename Change>
LONG changeValue(HKEY handle, LPCSTR name, Change change)
{
    RegistryKey key;
    LONG result = describe(handle, key);
    if (result != ERROR_SUCCESS)
        return result;
    if ((key.access & KEY_SET_VALUE) == 0)
        return ERROR_ACCESS_DENIED;
    const int lock = open(key.directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (lock < 0)
        return errno == ENOENT ? ERROR_FILE_NOT_FOUND : errorOf(errno);
    while (flock(lock, LOCK_EX) != 0 && errno == EINTR) {
    }
    result = change(key, valuePath(key.directory, name));
    close(lock);
    return result;
}

LONG openKey(HKEY handle, LPCSTR subKey, REGSAM access, PHKEY result, bool create, LPDWORD disposition)
{
    if (result == nullptr)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    RegistryKey key;
    LONG status = describe(handle, key);
    std::vector<std::string> directories;
    if (status == ERROR_SUCCESS)
        status = subKeyDirectories(key, subKey, directories);
    if (status != ERROR_SUCCESS)
        return status;
    const mode_t mode = key.machine ? 0755 : 0700;
    bool created = false;
    if (create && !isDirectory(directories.front()) && (status = makeDirectories(directories.front(), mode)) != ERROR_SUCCESS)
        return status;
    for (std::size_t i = 1; i < directories.size(); ++i) {
        if (isDirectory(directories[i]))
            continue;
        if (!create)
            return ERROR_FILE_NOT_FOUND;
        if (mkdir(directories[i].c_str(), mode) != 0 && errno != EEXIST)
            return errorOf(errno);
        created = true;
    }
    if (disposition != nullptr)
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    *result = openKeys().add(new RegistryKey{directories.back(), access, key.machine});
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
    return openKeys().remove(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG RegFlushKey(HKEY handle)
{
    RegistryKey key;
    LONG result = describe(handle, key);
    if (result != ERROR_SUCCESS)
        return result;
    DIR* const directory = opendir(key.directory.c_str());
    if (directory == nullptr)
        return errno == ENOENT ? ERROR_FILE_NOT_FOUND : errorOf(errno);
    std::vector<std::string> paths;
    while (const dirent* entry = readdir(directory))
        if (isValueFile(entry->d_name))
            paths.push_back(key.directory + "/" + entry->d_name);
    closedir(directory);
    paths.push_back(key.directory); // the renames
    for (const std::string& path : paths) {
        struct stat status;
        const int fd =
            path == key.directory ? open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : openValue(path, status);
        if (fd < 0 && errno == ENOENT)
            continue; // deleted meanwhile
        if (fd < 0)
            return errorOf(errno);
        const bool synced = sys::fsync(fd) == 0;
        const int syncError = errno;
        close(fd);
        if (!synced)
            return errorOf(syncError);
    }
    return ERROR_SUCCESS;
}

LONG RegQueryValueExA(HKEY handle, LPCSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size)
{
    RegistryKey key;
    LONG result = describe(handle, key);
    if (result != ERROR_SUCCESS)
        return result;
    if ((key.access & KEY_QUERY_VALUE) == 0)
        return ERROR_ACCESS_DENIED;
    if (data != nullptr && size == nullptr)
        return ERROR_INVALID_PARAMETER;
    return readValue(valuePath(key.directory, name), type, data, size);
}

LONG RegSetValueExA(HKEY handle, LPCSTR name, DWORD, DWORD type, const BYTE* data, DWORD size)
{
    if (data == nullptr && size != 0)
        return ERROR_INVALID_PARAMETER;
    return changeValue(handle, name, [&](const RegistryKey& key, const std::string& path) {
        return writeValue(key.directory, path, type, data, size, key.machine);
    });
}

LONG RegDeleteValueA(HKEY handle, LPCSTR name)
{
    return changeValue(handle, name, [](const RegistryKey&, const std::string& path) {
        return unlink(path.c_str()) == 0 ? static_cast<LONG>(ERROR_SUCCESS)
               : errno == ENOENT         ? static_cast<LONG>(ERROR_FILE_NOT_FOUND)
                                         : errorOf(errno);
    });
}
