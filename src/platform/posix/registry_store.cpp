#include "platform/posix/registry_store.h"

#include "platform/posix/file_name.h"
#include "platform/posix/file_object.h"
#include "platform/posix/handle.h"
#include "platform/posix/system_calls.h"

#include <ovo/strings.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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

const char valuesFile[] = "%values";       // '%' followed by no hex digits: no key name encodes to it
const char newValuesFile[] = "%values.new"; // the next values, complete before the rename
const char magic[] = "OVOREG1\n";

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

// One element of a key path as a directory name; empty when the element is refused.
std::string encodedElement(const std::string& element)
{
    if (element.empty() || element == "." || element == ".." || element.find('/') != std::string::npos)
        return std::string();
    return ovo::posix::escapedFileName(ovo::toLower(element)); // names compare without case
}

// The directories from the key's own down to the sub-key's, or ERROR_BAD_PATHNAME.
LONG subKeyDirectories(const RegistryKey& key, LPCSTR subKey, std::vector<std::string>& directories)
{
    directories.assign(1, key.directory);
    const std::string path = subKey != nullptr ? subKey : "";
    for (std::size_t begin = 0; !path.empty() && begin <= path.size();) {
        const std::size_t end = std::min(path.find('\\', begin), path.size());
        const std::string element = encodedElement(path.substr(begin, end - begin));
        if (element.empty())
            return ERROR_BAD_PATHNAME;
        directories.push_back(directories.back() + "/" + element);
        begin = end + 1;
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

struct Value {
    std::string name;
    DWORD type;
    std::string data;
};

bool readAll(int fd, std::string& bytes)
{
    char buffer[8192];
    for (;;) {
        const ssize_t count = sys::read(fd, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        if (count == 0)
            return true;
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
}

void put32(std::string& bytes, std::uint32_t value) { bytes.append(reinterpret_cast<const char*>(&value), 4); }

bool take32(const std::string& bytes, std::size_t& at, std::uint32_t& value)
{
    if (bytes.size() - at < 4)
        return false;
    std::memcpy(&value, bytes.data() + at, 4);
    at += 4;
    return true;
}

bool takeText(const std::string& bytes, std::size_t& at, std::string& text)
{
    std::uint32_t size;
    if (!take32(bytes, at, size) || bytes.size() - at < size)
        return false;
    text.assign(bytes, at, size);
    at += size;
    return true;
}

// The values of a key directory; none when it has no values file yet.
LONG readValues(const std::string& directory, std::vector<Value>& values)
{
    values.clear();
    if (!isDirectory(directory))
        return ERROR_FILE_NOT_FOUND; // the key itself is gone
    const int fd = sys::open((directory + "/" + valuesFile).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return errno == ENOENT ? ERROR_SUCCESS : errorOf(errno);
    std::string bytes;
    const bool read = readAll(fd, bytes);
    close(fd);
    if (!read)
        return ERROR_GEN_FAILURE;
    // Records after the header; a damaged tail (written by something else) is ignored.
    std::size_t at = std::strlen(magic);
    if (bytes.compare(0, at, magic) != 0)
        return ERROR_SUCCESS;
    for (Value value; takeText(bytes, at, value.name) && take32(bytes, at, value.type) && takeText(bytes, at, value.data);)
        values.push_back(value);
    return ERROR_SUCCESS;
}

LONG writeValues(const std::string& directory, const std::vector<Value>& values, bool machine)
{
    std::string bytes = magic;
    for (const Value& value : values) {
        put32(bytes, static_cast<std::uint32_t>(value.name.size()));
        bytes += value.name;
        put32(bytes, value.type);
        put32(bytes, static_cast<std::uint32_t>(value.data.size()));
        bytes += value.data;
    }
    const std::string next = directory + "/" + newValuesFile;
    const int fd = sys::open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, machine ? 0644 : 0600);
    if (fd < 0)
        return errorOf(errno);
    std::size_t done = 0;
    const bool written = ovo::posix::writeWhole(fd, bytes.data(), bytes.size(), done);
    const int writeError = errno;
    close(fd);
    if (written && sys::rename(next.c_str(), (directory + "/" + valuesFile).c_str()) == 0)
        return ERROR_SUCCESS;
    const LONG failure = errorOf(written ? errno : writeError);
    unlink(next.c_str()); // the old values stay as they were
    return failure;
}

std::vector<Value>::iterator findValue(std::vector<Value>& values, LPCSTR name)
{
    const std::string wanted = name != nullptr ? name : "";
    for (auto value = values.begin(); value != values.end(); ++value)
        if (ovo::icompare(value->name, wanted))
            return value;
    return values.end();
}

// Changes a key's values under an exclusive lock of its directory (writers in every
// process take turns; readers never wait: they read whole files).
template <typename Change>
LONG changeValues(HKEY handle, Change change)
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
    std::vector<Value> values;
    result = readValues(key.directory, values);
    if (result == ERROR_SUCCESS)
        result = change(values);
    if (result == ERROR_SUCCESS)
        result = writeValues(key.directory, values, key.machine);
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
    for (const std::string& path : {key.directory + "/" + valuesFile, key.directory}) {
        const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0 && errno == ENOENT)
            continue; // no values yet
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
    std::vector<Value> values;
    if ((result = readValues(key.directory, values)) != ERROR_SUCCESS)
        return result;
    const auto value = findValue(values, name);
    if (value == values.end())
        return ERROR_FILE_NOT_FOUND;
    if (type != nullptr)
        *type = value->type;
    const DWORD length = static_cast<DWORD>(value->data.size());
    if (data != nullptr && *size < length) {
        *size = length;
        return ERROR_MORE_DATA;
    }
    if (data != nullptr)
        std::memcpy(data, value->data.data(), length);
    if (size != nullptr)
        *size = length;
    return ERROR_SUCCESS;
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD, DWORD type, const BYTE* data, DWORD size)
{
    if (data == nullptr && size != 0)
        return ERROR_INVALID_PARAMETER;
    const std::string bytes(reinterpret_cast<const char*>(data), data != nullptr ? size : 0);
    return changeValues(key, [&](std::vector<Value>& values) {
        const auto value = findValue(values, name);
        if (value == values.end())
            values.push_back(Value{name != nullptr ? name : "", type, bytes});
        else
            *value = Value{value->name, type, bytes};
        return static_cast<LONG>(ERROR_SUCCESS);
    });
}

LONG RegDeleteValueA(HKEY key, LPCSTR name)
{
    return changeValues(key, [&](std::vector<Value>& values) {
        const auto value = findValue(values, name);
        if (value == values.end())
            return static_cast<LONG>(ERROR_FILE_NOT_FOUND);
        values.erase(value);
        return static_cast<LONG>(ERROR_SUCCESS);
    });
}
