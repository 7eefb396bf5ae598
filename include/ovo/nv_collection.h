/// @file
/// An ordered collection of named text values with typed access and a one-line text form.
#ifndef OVO_NV_COLLECTION_H
#define OVO_NV_COLLECTION_H

#include <ovo/export.h>

#include <map>
#include <string>

namespace ovo {

/// An ordered collection of named text values with typed access and a one-line text form.
///
/// Every value is text; the typed get/set convert at the call (reads through
/// ovo::NumberParser, so "on" reads as true and "" as 0). Names compare byte by byte and
/// iterate in that order. A read without default throws std::runtime_error
/// "key 'NAME' not found in nvCollection" for a missing name, or the parser's exception;
/// a read with default never throws: it gives the default for a missing name and for a
/// value that does not convert. `long` and `unsigned long` carry 32-bit values on every
/// platform: setLong and setULong store the low 32 bits, as setInt and setUInt.
///
/// The text form is a flat list of pairs cut by two caller-chosen separators, for
/// instance "baud=9600;data=8" with ";" and "=". Nothing is quoted or escaped.
///
/// Threads: several threads may read one collection while nobody writes; a caller that
/// writes to a collection that another thread uses provides the exclusion itself.
class OVO_API nvCollection {
public:
    /// Iterates the entries (name, value) in name order.
    using const_iterator = std::map<std::string, std::string>::const_iterator;

    /// An empty collection.
    nvCollection();
    /// An empty collection, then load(text, pairSeparator, nvSeparator).
    nvCollection(const std::string& text, const std::string& pairSeparator, const std::string& nvSeparator);
    /// A deep copy.
    nvCollection(const nvCollection& other);
    /// Takes the entries; other stays valid and empty.
    nvCollection(nvCollection&& other) noexcept;
    /// Frees the entries.
    ~nvCollection();
    /// Replaces the entries with a deep copy of other's.
    nvCollection& operator=(const nvCollection& other);
    /// Takes other's entries; other stays valid and empty.
    nvCollection& operator=(nvCollection&& other) noexcept;

    /// The number of entries.
    unsigned int size() const;
    /// Whether an entry of that name exists.
    bool has(const std::string& name) const;
    /// The first entry in name order.
    const_iterator begin() const;
    /// Behind the last entry.
    const_iterator end() const;

    /// The value read as parseBool reads it: a number (non-zero is true), or
    /// "true"/"yes"/"on", "false"/"no"/"off" in any case.
    /// @throws std::runtime_error for a missing name; std::logic_error for another text.
    bool getBool(const std::string& name) const;
    /// The value read as a truth value; defaultValue when it is missing or is none.
    bool getBool(const std::string& name, bool defaultValue) const;
    /// Stores "yes" or "no".
    void setBool(const std::string& name, bool value);

    /// The value as a 32-bit signed number.
    /// @throws std::runtime_error for a missing name, or what NumberParser::parseInt throws.
    int getInt(const std::string& name) const;
    /// The value as a 32-bit signed number; defaultValue when it is missing or is none.
    int getInt(const std::string& name, int defaultValue) const;
    /// Stores the decimal text of value.
    void setInt(const std::string& name, int value);

    /// The value as a 32-bit signed number.
    /// @throws std::runtime_error for a missing name, or what NumberParser::parseLong throws.
    long getLong(const std::string& name) const;
    /// The value as a 32-bit signed number; defaultValue when it is missing or is none.
    long getLong(const std::string& name, long defaultValue) const;
    /// Stores the decimal text of the low 32 bits of value, as a signed number.
    void setLong(const std::string& name, long value);

    /// The value as a 16-bit signed number.
    /// @throws std::runtime_error for a missing name, or what NumberParser::parseInt16 throws.
    short getShort(const std::string& name) const;
    /// The value as a 16-bit signed number; defaultValue when it is missing or is none.
    short getShort(const std::string& name, short defaultValue) const;
    /// Stores the decimal text of value.
    void setShort(const std::string& name, short value);

    /// The value as a 32-bit unsigned number.
    /// @throws std::runtime_error for a missing name, or what NumberParser::parseUInt throws.
    unsigned int getUInt(const std::string& name) const;
    /// The value as a 32-bit unsigned number; defaultValue when it is missing or is none.
    unsigned int getUInt(const std::string& name, unsigned int defaultValue) const;
    /// Stores the decimal text of value.
    void setUInt(const std::string& name, unsigned int value);

    /// The value as a 32-bit unsigned number.
    /// @throws std::runtime_error for a missing name, or what NumberParser::parseULong throws.
    unsigned long getULong(const std::string& name) const;
    /// The value as a 32-bit unsigned number; defaultValue when it is missing or is none.
    unsigned long getULong(const std::string& name, unsigned long defaultValue) const;
    /// Stores the decimal text of the low 32 bits of value.
    void setULong(const std::string& name, unsigned long value);

    /// The value as a 16-bit unsigned number.
    /// @throws std::runtime_error for a missing name, or what NumberParser::parseUInt16 throws.
    unsigned short getUShort(const std::string& name) const;
    /// The value as a 16-bit unsigned number; defaultValue when it is missing or is none.
    unsigned short getUShort(const std::string& name, unsigned short defaultValue) const;
    /// Stores the decimal text of value.
    void setUShort(const std::string& name, unsigned short value);

    /// The stored text.
    /// @throws std::runtime_error "key 'NAME' not found in nvCollection" for a missing name.
    std::string getString(const std::string& name) const;
    /// The stored text, even when it is empty; the default only for a missing name.
    std::string getString(const std::string& name, const std::string& defaultValue) const;
    /// Stores value as it is, replacing an earlier value of that name.
    void setString(const std::string& name, const std::string& value);

    /// Adds the pairs of text; a later pair replaces an earlier value of the same name.
    ///
    /// A final piece without nvSeparator adds nothing. An empty pairSeparator cuts
    /// nothing: the whole text is one piece, which adds at most one pair. Any text is
    /// accepted; reports nothing.
    void load(const std::string& text, const std::string& pairSeparator, const std::string& nvSeparator);
    /// The entries in name order as name, nvSeparator, value, joined by pairSeparator.
    /// Names and values end at a zero byte.
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
