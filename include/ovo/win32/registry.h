// One key of the registry: open or create it under a root key, read values with a
// default, write and delete values. Nothing here throws (but for exhausted memory).
#ifndef OVO_WIN32_REGISTRY_H
#define OVO_WIN32_REGISTRY_H

#include <ovo/export.h>
#include <ovo/win32/types.h>

#include <string>

namespace ovo {
namespace win32 {

// Open keys and copies: a copy (constructor or assignment) shares the source's key. A
// process-wide count of the objects that hold each key decides who closes it: close() and
// the destructor give up this object's share, and the key is closed when the last share
// goes, so each key is closed exactly once whatever the order. Assignment gives up the
// target's share of the key it held first, as close() would. open(), createAndOpen() and
// attach() do not: close() the key before the object takes another.
class OVO_API registry {
public:
    registry();
    explicit registry(HKEY root);
    registry(HKEY root, const std::string& baseName);
    registry(const registry& other);
    registry& operator=(const registry& other);
    ~registry();

    // The object closes `key` from now on.
    void attach(HKEY key);
    // The key baseName\name (or name without a base); `access` is the platform's mask, with
    // the 64-bit view added in a 32-bit process on 64-bit Windows. False when it fails.
    bool open(const std::string& name, unsigned long access);
    bool createAndOpen(const std::string& name, unsigned long access);
    void close();
    // Makes the key's values durable.
    void flush();

    HKEY keyHandle() const;
    const std::string& keyName() const;

    unsigned long queryDWORDValue(const std::string& name, unsigned long defaultValue) const;
    // REG_SZ and REG_EXPAND_SZ values (not expanded); an empty value reads as empty.
    std::string queryStringValue(const std::string& name, const std::string& defaultValue) const;
    void setDWORDValue(const std::string& name, unsigned long value) const;
    void setStringValue(const std::string& name, const std::string& value) const;
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
