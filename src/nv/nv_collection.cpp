#include <ovo/nv_collection.h>
#include <ovo/number_formatter.h>
#include <ovo/number_parser.h>
#include <ovo/strings.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace ovo {

namespace {

using Entries = std::map<std::string, std::string>;

// A read with default: the converter writes value only when the text converts.
template <typename T>
T readOr(const Entries& entries, const std::string& name, T value, bool (*tryParse)(const std::string&, T&))
{
    const auto found = entries.find(name);
    if (found != entries.end())
        tryParse(found->second, value);
    return value;
}

} // namespace

nvCollection::nvCollection() = default;

nvCollection::nvCollection(const std::string& text, const std::string& pairSeparator, const std::string& nvSeparator)
{
    load(text, pairSeparator, nvSeparator);
}

nvCollection::nvCollection(const nvCollection& other) = default;

nvCollection::nvCollection(nvCollection&& other) noexcept : entries_(std::move(other.entries_))
{
    other.entries_.clear();
}

nvCollection::~nvCollection() = default;

nvCollection& nvCollection::operator=(const nvCollection& other)
{
    if (this != &other)
        entries_ = other.entries_;
    return *this;
}

nvCollection& nvCollection::operator=(nvCollection&& other) noexcept
{
    if (this != &other) {
        entries_ = std::move(other.entries_);
        other.entries_.clear();
    }
    return *this;
}

unsigned int nvCollection::size() const { return static_cast<unsigned int>(entries_.size()); }

bool nvCollection::has(const std::string& name) const { return entries_.count(name) != 0; }

nvCollection::const_iterator nvCollection::begin() const { return entries_.begin(); }

nvCollection::const_iterator nvCollection::end() const { return entries_.end(); }

std::string nvCollection::getRaw(const std::string& name) const
{
    const auto found = entries_.find(name);
    if (found == entries_.end())
        throw std::runtime_error(ovo::format("key '%s' not found in nvCollection", name.c_str()));
    return found->second;
}

void nvCollection::setRaw(const std::string& name, const std::string& value) { entries_[name] = value; }

bool nvCollection::getBool(const std::string& name) const { return NumberParser::parseBool(getRaw(name)); }
bool nvCollection::getBool(const std::string& name, bool defaultValue) const
{
    return readOr(entries_, name, defaultValue, NumberParser::tryParseBool);
}
void nvCollection::setBool(const std::string& name, bool value) { setRaw(name, NumberFormatter::formatBool(value)); }

int nvCollection::getInt(const std::string& name) const { return NumberParser::parseInt(getRaw(name)); }
int nvCollection::getInt(const std::string& name, int defaultValue) const
{
    return readOr(entries_, name, defaultValue, NumberParser::tryParseInt);
}
void nvCollection::setInt(const std::string& name, int value) { setRaw(name, std::to_string(value)); }

long nvCollection::getLong(const std::string& name) const { return NumberParser::parseLong(getRaw(name)); }
long nvCollection::getLong(const std::string& name, long defaultValue) const
{
    return readOr(entries_, name, defaultValue, NumberParser::tryParseLong);
}
void nvCollection::setLong(const std::string& name, long value) { setInt(name, static_cast<std::int32_t>(value)); }

short nvCollection::getShort(const std::string& name) const { return NumberParser::parseInt16(getRaw(name)); }
short nvCollection::getShort(const std::string& name, short defaultValue) const
{
    return readOr(entries_, name, defaultValue, NumberParser::tryParseInt16);
}
void nvCollection::setShort(const std::string& name, short value) { setRaw(name, std::to_string(int{value})); }

unsigned int nvCollection::getUInt(const std::string& name) const
{
    return static_cast<unsigned int>(NumberParser::parseUInt(getRaw(name)));
}
unsigned int nvCollection::getUInt(const std::string& name, unsigned int defaultValue) const
{
    return readOr(entries_, name, defaultValue, NumberParser::tryParseUInt);
}
void nvCollection::setUInt(const std::string& name, unsigned int value) { setRaw(name, std::to_string(value)); }

unsigned long nvCollection::getULong(const std::string& name) const
{
    // parseULong hands the 32 bits over as a signed long.
    return static_cast<std::uint32_t>(NumberParser::parseULong(getRaw(name)));
}
unsigned long nvCollection::getULong(const std::string& name, unsigned long defaultValue) const
{
    return readOr(entries_, name, defaultValue, NumberParser::tryParseULong);
}
void nvCollection::setULong(const std::string& name, unsigned long value)
{
    setUInt(name, static_cast<std::uint32_t>(value));
}

unsigned short nvCollection::getUShort(const std::string& name) const
{
    return NumberParser::parseUInt16(getRaw(name));
}
unsigned short nvCollection::getUShort(const std::string& name, unsigned short defaultValue) const
{
    return readOr(entries_, name, defaultValue, NumberParser::tryParseUInt16);
}
void nvCollection::setUShort(const std::string& name, unsigned short value)
{
    setRaw(name, std::to_string(unsigned{value}));
}

std::string nvCollection::getString(const std::string& name) const { return getRaw(name); }
std::string nvCollection::getString(const std::string& name, const std::string& defaultValue) const
{
    const auto found = entries_.find(name);
    return found == entries_.end() ? defaultValue : found->second;
}
void nvCollection::setString(const std::string& name, const std::string& value) { setRaw(name, value); }

} // namespace ovo
