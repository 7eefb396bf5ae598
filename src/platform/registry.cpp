#include <ovo/win32/registry.h>

#include <ovo/win32/security_attributes.h>

#include "platform/registry_calls.h"
#include "platform/shared_holders.h"

#include <algorithm>
#include <cstring>

namespace ovo {
namespace win32 {
namespace {

namespace calls = ovo::platform::registry;

using SharedKeys = ovo::platform::SharedHolders<HKEY>;

const REGSAM view64 = 0x0100; // KEY_WOW64_64KEY

} // namespace

registry::registry() : rootKey_(nullptr), keyHandle_(nullptr) {}

registry::registry(HKEY root) : rootKey_(root), keyHandle_(nullptr) {}

registry::registry(HKEY root, const std::string& baseName) : rootKey_(root), keyHandle_(nullptr), baseName_(baseName) {}

registry::registry(const registry& other)
    : rootKey_(other.rootKey_), keyHandle_(other.keyHandle_), baseName_(other.baseName_), keyName_(other.keyName_)
{
    if (keyHandle_ != nullptr)
        SharedKeys::instance().share(keyHandle_);
}

registry& registry::operator=(const registry& other)
{
    if (this == &other)
        return *this;
    if (other.keyHandle_ != nullptr)
        SharedKeys::instance().share(other.keyHandle_); // first, in case both hold the same key
    close();
    rootKey_ = other.rootKey_;
    keyHandle_ = other.keyHandle_;
    baseName_ = other.baseName_;
    keyName_ = other.keyName_;
    return *this;
}

registry::~registry() { close(); }

void registry::attach(HKEY key) { keyHandle_ = key; }

bool registry::open(const std::string& name, unsigned long access) { return openWith(false, name, access); }

bool registry::createAndOpen(const std::string& name, unsigned long access) { return openWith(true, name, access); }

bool registry::openWith(bool create, const std::string& name, unsigned long access)
{
    REGSAM mask = static_cast<REGSAM>(access);
    if (IsWow64())
        mask |= view64; // the 64-bit view, also from a 32-bit process
    keyName_ = baseName_.empty() ? name : baseName_ + "\\" + name;
    const LONG result = create ? calls::RegCreateKeyExA(rootKey_, keyName_.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                                        mask, nullptr, &keyHandle_, nullptr)
                               : calls::RegOpenKeyExA(rootKey_, keyName_.c_str(), 0, mask, &keyHandle_);
    return result == ERROR_SUCCESS;
}

void registry::close()
{
    if (keyHandle_ == nullptr)
        return;
    if (SharedKeys::instance().leave(keyHandle_))
        calls::RegCloseKey(keyHandle_);
    keyHandle_ = nullptr;
}

void registry::flush()
{
    if (keyHandle_ != nullptr)
        calls::RegFlushKey(keyHandle_);
}

HKEY registry::keyHandle() const { return keyHandle_; }

const std::string& registry::keyName() const { return keyName_; }

unsigned long registry::queryDWORDValue(const std::string& name, unsigned long defaultValue) const
{
    DWORD value = 0;
    DWORD size = sizeof value;
    DWORD type = 0;
    const LONG result =
        calls::RegQueryValueExA(keyHandle_, name.c_str(), nullptr, &type, reinterpret_cast<LPBYTE>(&value), &size);
    return result == ERROR_SUCCESS ? value : defaultValue;
}

// One read with room for a short text; a longer text, or one that grew since, answers
// ERROR_MORE_DATA with the size it needs and is read again with that room. So a text is
// always one value that was written, whoever changes it meanwhile, and a short one costs
// one read.
std::string registry::queryStringValue(const std::string& name, const std::string& defaultValue) const
{
    char shortText[256];
    DWORD type = 0;
    DWORD size = sizeof shortText;
    LONG result =
        calls::RegQueryValueExA(keyHandle_, name.c_str(), nullptr, &type, reinterpret_cast<LPBYTE>(shortText), &size);
    std::string text;
    if (result == ERROR_SUCCESS)
        text.assign(shortText, size);
    while (result == ERROR_MORE_DATA) {
        text.resize(size);
        result = calls::RegQueryValueExA(keyHandle_, name.c_str(), nullptr, &type, reinterpret_cast<LPBYTE>(&text[0]),
                                         &size);
        text.resize(std::min<std::size_t>(size, text.size()));
    }
    if (result != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ))
        return defaultValue;                             // missing, or no text
    text.resize(std::min(text.find('\0'), text.size())); // up to its NUL, stored or not; an empty value is not missing
    return text;
}

void registry::setDWORDValue(const std::string& name, unsigned long value) const
{
    const DWORD stored = static_cast<DWORD>(value);
    calls::RegSetValueExA(keyHandle_, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&stored),
                          sizeof stored);
}

void registry::setStringValue(const std::string& name, const std::string& value) const
{
    calls::RegSetValueExA(keyHandle_, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>(value.size() + 1));
}

void registry::deleteValue(const std::string& name) const { calls::RegDeleteValueA(keyHandle_, name.c_str()); }

} // namespace win32
} // namespace ovo
