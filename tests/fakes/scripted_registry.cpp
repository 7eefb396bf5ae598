#include "fakes/scripted_registry.h"

#include "platform/registry_calls.h"

#include <cstdio>
#include <cstring>

namespace ovo_fake {
namespace {

RegistryScript script;
std::uintptr_t nextKey = 0x4B00;

std::string hex(const void* pointer)
{
    char text[32];
    std::snprintf(text, sizeof text, "%lx", static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(pointer)));
    return text;
}

LONG open(const char* call, HKEY root, LPCSTR subKey, REGSAM access, PHKEY result)
{
    script.calls.push_back(call);
    script.openedRoot = hex(root);
    script.openedKey = subKey;
    script.openedAccess = access;
    *result = script.openResult == 0 ? reinterpret_cast<HKEY>(++nextKey) : nullptr;
    return script.openResult;
}

} // namespace

RegistryScript& registryScript() { return script; }

void resetRegistryScript() { script = RegistryScript(); }

} // namespace ovo_fake

namespace ovo {
namespace platform {
namespace registry {

using ovo_fake::script;

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD, REGSAM access, PHKEY result)
{
    return ovo_fake::open("RegOpenKeyExA", key, subKey, access, result);
}

LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD, LPSTR, DWORD, REGSAM access, LPSECURITY_ATTRIBUTES, PHKEY result,
                     LPDWORD)
{
    return ovo_fake::open("RegCreateKeyExA", key, subKey, access, result);
}

LONG RegCloseKey(HKEY key)
{
    script.calls.push_back("RegCloseKey");
    script.closedKeys.push_back(reinterpret_cast<std::uintptr_t>(key));
    return ERROR_SUCCESS;
}

LONG RegFlushKey(HKEY)
{
    script.calls.push_back("RegFlushKey");
    return ERROR_SUCCESS;
}

// As the platform answers: the type and size alone without a buffer, ERROR_MORE_DATA
// for a buffer too small, the bytes otherwise.
LONG RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size)
{
    script.calls.push_back("RegQueryValueExA");
    script.querySizes.push_back(size != nullptr ? *size : 0);
    const auto value = script.values.find(name);
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    if (value == script.values.end())
        return ERROR_FILE_NOT_FOUND;
    *type = value->second.type;
    const DWORD length = static_cast<DWORD>(value->second.bytes.size());
    if (data != nullptr && *size < length) {
        *size = length;
        return ERROR_MORE_DATA;
    }
    if (data != nullptr)
        std::memcpy(data, value->second.bytes.data(), length);
    *size = length;
    return ERROR_SUCCESS;
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD, DWORD type, const BYTE* data, DWORD size)
{
    script.calls.push_back("RegSetValueExA");
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    script.values[name] = ovo_fake::StoredValue{type, std::string(reinterpret_cast<const char*>(data), size)};
    return ERROR_SUCCESS;
}

LONG RegDeleteValueA(HKEY key, LPCSTR name)
{
    script.calls.push_back("RegDeleteValueA");
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    return script.values.erase(name) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

} // namespace registry
} // namespace platform
} // namespace ovo
