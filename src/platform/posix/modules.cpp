#include "platform/posix/modules.h"
#include "platform/load_failure.h"
#include "platform/posix/handle.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

thread_local std::string lastLoadFailure;

bool isDirectory(const char* path)
{
    struct stat status;
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// The code Windows gives for a file the loader refused. Windows adds ".dll" to a name
// without a suffix, so a directory is found (and refused) only by a name that ends in a
// dot; any other directory name is a module that is not there.
DWORD loadFailureCode(const char* fileName)
{
    if (isDirectory(fileName))
        return fileName[std::strlen(fileName) - 1] == '.' ? ERROR_ACCESS_DENIED : ERROR_MOD_NOT_FOUND;
    return lastLoadFailure.find("No such file") != std::string::npos ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT;
}

} // namespace

// dlopen("") would give the main program; Windows finds no module of that name.
HMODULE LoadLibraryA(LPCSTR fileName)
{
    const bool named = fileName != nullptr && fileName[0] != '\0';
    void* const module = named ? ::dlopen(fileName, RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (module == nullptr) {
        const char* reason = named ? ::dlerror() : "no file name";
        lastLoadFailure = reason != nullptr ? reason : "";
        SetLastError(named ? loadFailureCode(fileName) : ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    SetLastError(ERROR_SUCCESS);
    return module;
}

BOOL FreeLibrary(HMODULE module)
{
    if (module == nullptr || ::dlclose(module) != 0) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}

HMODULE GetModuleHandleA(LPCSTR name)
{
    void* const module = name != nullptr ? ::dlopen(name, RTLD_LAZY | RTLD_NOLOAD) : nullptr;
    if (module == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    ::dlclose(module); // RTLD_NOLOAD counted one more reference
    SetLastError(ERROR_SUCCESS);
    return module;
}

HANDLE GetCurrentProcess() { return INVALID_HANDLE_VALUE; } // -1, as on Windows

FARPROC GetProcAddress(HMODULE module, LPCSTR name)
{
    if (module == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    void* const address = name != nullptr ? ::dlsym(module, name) : nullptr;
    SetLastError(address != nullptr ? ERROR_SUCCESS : ERROR_PROC_NOT_FOUND);
    return address;
}

BOOL SetCurrentDirectoryA(LPCSTR path)
{
    if (path == nullptr || ::chdir(path) != 0) {
        ovo::posix::setLastErrorFromErrno(path == nullptr ? EINVAL : errno);
        return FALSE;
    }
    return TRUE;
}

DWORD GetEnvironmentVariableA(LPCSTR name, char* buffer, DWORD size)
{
    const char* const value = name != nullptr ? std::getenv(name) : nullptr;
    if (value == nullptr) {
        SetLastError(ERROR_ENVVAR_NOT_FOUND);
        return 0;
    }
    const std::size_t length = std::strlen(value);
    if (buffer == nullptr || size <= length)
        return static_cast<DWORD>(length + 1);
    std::memcpy(buffer, value, length + 1);
    return static_cast<DWORD>(length);
}

namespace ovo {
namespace platform {

std::string loadFailureText(DWORD) { return lastLoadFailure; }

} // namespace platform
} // namespace ovo
