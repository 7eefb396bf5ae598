/// @file
/// One key of the registry.
#ifndef OVO_WIN32_REGISTRY_H
#define OVO_WIN32_REGISTRY_H

#include <ovo/export.h>
#include <ovo/win32/types.h>

#include <string>

namespace ovo {
namespace win32 {

/// One key of the registry: open or create it under a root key, read values with a
/// default, write and delete values. Nothing here throws (but for exhausted memory).
///
/// On Linux the registry is a file-backed store of the library's own, one tree per root
/// key (per user for HKEY_CURRENT_USER, machine-wide for HKEY_LOCAL_MACHINE).
///
/// Open keys and copies: a copy (constructor or assignment) shares the source's key. A
/// process-wide count of the objects that hold each key decides who closes it: close() and
/// the destructor give up this object's share, and the key is closed when the last share
/// goes, so each key is closed exactly once whatever the order. Assignment gives up the
/// target's share of the key it held first, as close() would. open(), createAndOpen() and
/// attach() do not: close() the key before the object takes another.
///
/// One object is used by one thread at a time.
class OVO_API registry {
public:
    /// An object with no root key and no open key.
    registry();
    /// An object for keys directly under root (HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE).
    explicit registry(HKEY root);
    /// An object for keys under `root\baseName`.
    registry(HKEY root, const std::string& baseName);
    /// Shares other's key (see the class description).
    registry(const registry& other);
    /// Gives up this object's share of its key, then shares other's.
    registry& operator=(const registry& other);
    /// Gives up this object's share of its key; the last share closes it.
    ~registry();

    /// The object closes `key` from now on.
    void attach(HKEY key);
    /// Opens the key `baseName\name` (or `name` without a base).
    ///
    /// `access` is the platform's mask, with the 64-bit view added in a 32-bit process on
    /// 64-bit Windows. keyName() gives the attempted path also on failure.
    /// @return false when it fails.
    bool open(const std::string& name, unsigned long access);
    /// Opens the key `baseName\name` (or `name`), creating it if it does not exist, as open does.
    /// @return false when it fails.
    bool createAndOpen(const std::string& name, unsigned long access);
    /// Gives up this object's share of its key (the last share closes it); nothing happens
    /// without an open key.
    void close();
    /// Makes the key's values durable. Reports nothing.
    void flush();

    /// The open key; null when none is open.
    HKEY keyHandle() const;
    /// The path of the key last opened or created, below the root key.
    const std::string& keyName() const;

    /// The value name, of at most 4 bytes, as a number; defaultValue when it cannot be read.
    unsigned long queryDWORDValue(const std::string& name, unsigned long defaultValue) const;
    /// REG_SZ and REG_EXPAND_SZ values (not expanded); an empty value reads as empty.
    /// defaultValue when the value is missing, of another type or cannot be read.
    std::string queryStringValue(const std::string& name, const std::string& defaultValue) const;
    /// Stores value (its low 32 bits) as the number name. Reports nothing.
    void setDWORDValue(const std::string& name, unsigned long value) const;
    /// Stores value as the text name (REG_SZ). Reports nothing.
    void setStringValue(const std::string& name, const std::string& value) const;
    /// Deletes the value name. Reports nothing.
    void deleteValue(const std::string& name) const;

private:
    bool openWith(bool create, const std::string& name, unsigned long access);

    HKEY rootKey_;
    HKEY keyHandle_;
    std::string baseName_;
    std::string keyName_;
};

} // namespace win32
} // namespace ovo

#endif
