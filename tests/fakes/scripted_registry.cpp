#include "fakes/scripted_registry.h"

#include "platform/registry_calls.h"

#include <cstdio>
#include <cstring>

namespace ovo_fake {
namespace {

RegistryScript script;
std::uintptr_t lastKey = 0x4B00;

std::string hex(std::uintptr_t value, const char* format = "%lX")
{
    char text[24];
    std::snprintf(text, sizeof text, format, static_cast<unsigned long>(value));
    return text;
}

std::string hex(const void* key) { return hex(reinterpret_cast<std::uintptr_t>(key)); }

LONG open(const char* call, HKEY root, LPCSTR subKey, REGSAM access, PHKEY result)
{
    script.calls.push_back(std::string(call) + "(" + hex(root) + ", " + subKey + ", " + hex(access) + ")");
    *result = script.openResult == 0 ? reinterpret_cast<HKEY>(++lastKey) : nullptr;
    return script.openResult;
}

} // namespace

RegistryScript& registryScript() { return script; }

void resetRegistryScript()
{
    script = RegistryScript();
    lastKey = 0x4B00;
}

} // namespace ovo_fake

namespace ovo {
namespace platform {
namespace registry {

using ovo_fake::hex;
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
    script.calls.push_back("RegCloseKey(" + hex(key) + ")");
    return ERROR_SUCCESS;
}

LONG RegFlushKey(HKEY key)
{
    script.calls.push_back("RegFlushKey(" + hex(key) + ")");
    return ERROR_SUCCESS;
}

// As the platform answers: the type and size alone without a buffer, ERROR_MORE_DATA
// for a buffer too small, the bytes otherwise.
LONG RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size)
{
    script.calls.push_back("RegQueryValueExA(" + hex(key) + ", " + name + ", " + (data ? std::to_string(*size) : "-") +
                           ")");
    const auto value = script.values.find(name);
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    if (value == script.values.end())
        return ERROR_FILE_NOT_FOUND;
    *type = value->second.type;
    const auto length = static_cast<DWORD>(value->second.bytes.size());
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
    std::string bytes;
    for (DWORD i = 0; i < size; ++i)
        bytes += (i == 0 ? "" : " ") + hex(data[i], "%02lX");
    script.calls.push_back("RegSetValueExA(" + hex(key) + ", " + name + ", " + std::to_string(type) + ", [" + bytes +
                           "])");
    return key != nullptr ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG RegDeleteValueA(HKEY key, LPCSTR name)
{
    script.calls.push_back("RegDeleteValueA(" + hex(key) + ", " + name + ")");
    return key != nullptr ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

} // namespace registry
} // namespace platform
} // namespace ovo
