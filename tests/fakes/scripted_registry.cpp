#include "fakes/scripted_registry.h"

#include "platform/registry_calls.h"

#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include <cstring>

namespace ovo_fake {
namespace {

RegistryScript script;

std::string hex(std::uintptr_t value) { return ovo::format("%lX", static_cast<unsigned long>(value)); }

std::string hex(const void* key) { return hex(reinterpret_cast<std::uintptr_t>(key)); }

LONG call(const std::string& name, HKEY key, const std::string& arguments)
{
    script.calls.push_back(name + "(" + hex(key) + arguments + ")");
    return key != nullptr ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG open(const char* name, HKEY root, LPCSTR subKey, REGSAM access, PHKEY result)
{
    *result = reinterpret_cast<HKEY>(++script.lastKey);
    return call(name, root, std::string(", ") + subKey + ", " + hex(access));
}

} // namespace

RegistryScript& registryScript() { return script; }
void resetRegistryScript() { script = RegistryScript(); }

} // namespace ovo_fake

namespace ovo {
namespace platform {
namespace registry {

using ovo_fake::call;
using ovo_fake::hex;

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD, REGSAM access, PHKEY result)
{
    return ovo_fake::open("RegOpenKeyExA", key, subKey, access, result);
}

LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD, LPSTR, DWORD, REGSAM access, LPSECURITY_ATTRIBUTES, PHKEY result,
                     LPDWORD)
{
    return ovo_fake::open("RegCreateKeyExA", key, subKey, access, result);
}

LONG RegCloseKey(HKEY key) { return call("RegCloseKey", key, ""); }

LONG RegFlushKey(HKEY key) { return call("RegFlushKey", key, ""); }

// As the platform answers: the type and size alone without a buffer, ERROR_MORE_DATA
// for a buffer too small, the bytes otherwise.
LONG RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size)
{
    const LONG result =
        call("RegQueryValueExA", key, std::string(", ") + name + ", " + (data ? std::to_string(*size) : "-"));
    const auto value = ovo_fake::script.values.find(name);
    if (result != ERROR_SUCCESS || value == ovo_fake::script.values.end())
        return result != ERROR_SUCCESS ? result : ERROR_FILE_NOT_FOUND;
    const auto length = static_cast<DWORD>(value->second.bytes.size());
    const bool fits = data == nullptr || *size >= length;
    if (data != nullptr && fits)
        std::memcpy(data, value->second.bytes.data(), length);
    *type = value->second.type;
    *size = length;
    return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD, DWORD type, const BYTE* data, DWORD size)
{
    const std::string bytes = ovo::NumberFormatter::buffer2stringU2(data, size);
    return call("RegSetValueExA", key, std::string(", ") + name + ", " + std::to_string(type) + ", [" + bytes + "]");
}

LONG RegDeleteValueA(HKEY key, LPCSTR name) { return call("RegDeleteValueA", key, std::string(", ") + name); }

} // namespace registry
} // namespace platform
} // namespace ovo
