// An ordered collection of named text values with typed access and a one-line text form.
//
// Every value is text; the typed get/set convert at the call (reads through
// ovo::NumberParser, so "on" reads as true and "" as 0). Names compare byte by byte and
// iterate in that order. A read without default throws std::runtime_error
// "key 'NAME' not found in nvCollection" for a missing name, or the parser's exception;
// a read with default never throws. `long` and `unsigned long` carry 32-bit values on
// every platform: setLong and setULong store the low 32 bits, as setInt and setUInt.
//
// The text form is a flat list of pairs cut by two caller-chosen separators, for
// instance "baud=9600;data=8" with ";" and "=". Nothing is quoted or escaped.
#ifndef OVO_NV_COLLECTION_H
#define OVO_NV_COLLECTION_H

#include <ovo/export.h>

#include <map>
#include <string>

namespace ovo {

class OVO_API nvCollection {
public:
    using const_iterator = std::map<std::string, std::string>::const_iterator;

    nvCollection();
    // An empty collection, then load(text, pairSeparator, nvSeparator).
    nvCollection(const std::string& text, const std::string& pairSeparator, const std::string& nvSeparator);
    nvCollection(const nvCollection& other);
    nvCollection(nvCollection&& other) noexcept; // other stays valid and empty
    ~nvCollection();
    nvCollection& operator=(const nvCollection& other);
    nvCollection& operator=(nvCollection&& other) noexcept;

    unsigned int size() const;
    bool has(const std::string& name) const;
    const_iterator begin() const;
    const_iterator end() const;

    bool getBool(const std::string& name) const;
    bool getBool(const std::string& name, bool defaultValue) const;
    void setBool(const std::string& name, bool value); // "yes" or "no"

    int getInt(const std::string& name) const;
    int getInt(const std::string& name, int defaultValue) const;
    void setInt(const std::string& name, int value);

    long getLong(const std::string& name) const;
    long getLong(const std::string& name, long defaultValue) const;
    void setLong(const std::string& name, long value);

    short getShort(const std::string& name) const;
    short getShort(const std::string& name, short defaultValue) const;
    void setShort(const std::string& name, short value);

    unsigned int getUInt(const std::string& name) const;
    unsigned int getUInt(const std::string& name, unsigned int defaultValue) const;
    void setUInt(const std::string& name, unsigned int value);

    unsigned long getULong(const std::string& name) const;
    unsigned long getULong(const std::string& name, unsigned long defaultValue) const;
    void setULong(const std::string& name, unsigned long value);

    unsigned short getUShort(const std::string& name) const;
    unsigned short getUShort(const std::string& name, unsigned short defaultValue) const;
    void setUShort(const std::string& name, unsigned short value);

    std::string getString(const std::string& name) const;
    // The stored text, even when it is empty; the default only for a missing name.
    std::string getString(const std::string& name, const std::string& defaultValue) const;
    void setString(const std::string& name, const std::string& value);

    // Adds the pairs of text; a later pair replaces an earlier value of the same name.
    // A final piece without nvSeparator adds nothing. An empty pairSeparator cuts
    // nothing: the whole text is one piece, which adds at most one pair.
    void load(const std::string& text, const std::string& pairSeparator, const std::string& nvSeparator);
    // The entries in name order as name, nvSeparator, value, joined by pairSeparator.
    // Names and values end at a zero byte.
    std::string toString(const std::string& pairSeparator, const std::string& nvSeparator) const;

private:
    std::string getRaw(const std::string& name) const;
    void setRaw(const std::string& name, const std::string& value);
    // Stores the pair of the piece [start, end) of text; end may be the no-position marker.
    void extractNV(const std::string& text, const std::string& nvSeparator, unsigned int start, unsigned int end);

    std::map<std::string, std::string> entries_;
};

} // namespace ovo

#endif
