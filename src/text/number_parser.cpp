#include <ovo/number_parser.h>
#include <ovo/strings.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace ovo {
namespace NumberParser {

namespace {

enum class Status { ok, badFormat, outOfRange };

const char* const badFormatText = "NumebrParser - bad format";
const char* const outOfRangeText = "NumberParser - out of range";

// Runs one standard conversion over the whole text. The end test comes first, so
// "99999999999x" is a bad format; errno is cleared right before the call, so a stale
// value left by earlier work in the thread plays no part.
template <typename Raw, typename Conversion>
Status convert(const std::string& text, Conversion conversion, Raw& raw)
{
    const char* const begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    raw = conversion(begin, &end);
    if (end != begin + text.size())
        return Status::badFormat;
    return errno == ERANGE ? Status::outOfRange : Status::ok;
}

// strtoul as it behaves where unsigned long has 32 bits: a magnitude above 2^32 - 1 is
// a range error, and a minus sign negates in 32 bits ("-1" is 4294967295). This keeps
// the 32-bit results on platforms whose unsigned long is wider.
unsigned long long strtoul32(const char* text, char** end, int base)
{
    const unsigned long long raw = std::strtoull(text, end, base);
    if (errno == ERANGE)
        return raw;
    const char* p = text;
    while (std::isspace(static_cast<unsigned char>(*p)))
        ++p;
    const unsigned long long magnitude = *p == '-' ? 0 - raw : raw;
    if (magnitude > std::numeric_limits<std::uint32_t>::max()) {
        errno = ERANGE;
        return std::numeric_limits<std::uint32_t>::max();
    }
    return raw & std::numeric_limits<std::uint32_t>::max();
}

// The common case, a sign and at most eighteen digits and nothing else, read directly:
// it is the standard subject sequence that strtol reads alike in every locale, and it
// cannot overflow 64 bits (the range test that follows decides). Every other text goes
// to strtol itself.
bool plainDecimal(const std::string& text, long long& value)
{
    const char* p = text.data();
    const char* const end = p + text.size();
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    if (p == end || end - p > 18)
        return false;
    long long magnitude = 0;
    for (; p != end; ++p) {
        const unsigned digit = static_cast<unsigned char>(*p) - static_cast<unsigned>('0');
        if (digit > 9)
            return false;
        magnitude = magnitude * 10 + digit;
    }
    value = negative ? -magnitude : magnitude;
    return true;
}

// Range is the type whose limits apply: int32_t for `long`, whatever `long` is here.
template <typename T, typename Range = T>
Status toSigned(const std::string& text, T& value)
{
    long long raw = 0;
    if (!plainDecimal(text, raw)) {
        long converted = 0;
        const Status status =
            convert(text, [](const char* b, char** e) { return std::strtol(b, e, 10); }, converted);
        if (status != Status::ok)
            return status;
        raw = converted;
    }
    if (raw < std::numeric_limits<Range>::min() || raw > std::numeric_limits<Range>::max())
        return Status::outOfRange;
    value = static_cast<T>(raw);
    return Status::ok;
}

template <typename T, typename Range = T>
Status toUnsigned(const std::string& text, T& value, int base = 10)
{
    unsigned long long raw = 0;
    const Status status = convert(text, [base](const char* b, char** e) { return strtoul32(b, e, base); }, raw);
    if (status != Status::ok)
        return status;
    if (raw > std::numeric_limits<Range>::max())
        return Status::outOfRange;
    value = static_cast<T>(raw);
    return Status::ok;
}

// Raw conversions: they store what the conversion gave, whatever the verdict.
Status toInt64(const std::string& text, long long& raw)
{
    return convert(text, [](const char* b, char** e) { return std::strtoll(b, e, 10); }, raw);
}

Status toUInt64(const std::string& text, unsigned long long& raw)
{
    return convert(text, [](const char* b, char** e) { return std::strtoull(b, e, 10); }, raw);
}

Status toFloat(const std::string& text, float& raw)
{
    return convert(text, [](const char* b, char** e) { return std::strtof(b, e); }, raw);
}

Status toDouble(const std::string& text, double& raw)
{
    return convert(text, [](const char* b, char** e) { return std::strtod(b, e); }, raw);
}

Status toLongDouble(const std::string& text, long double& raw)
{
    return convert(text, [](const char* b, char** e) { return std::strtold(b, e); }, raw);
}

// A raw conversion that touches value only on success.
template <typename T>
Status onSuccess(Status (*conversion)(const std::string&, T&), const std::string& text, T& value)
{
    T raw = 0;
    const Status status = conversion(text, raw);
    if (status == Status::ok)
        value = raw;
    return status;
}

// The failures of the integer family; the float family reports both as runtime_error.
template <typename BadFormat, typename OutOfRange, typename T>
T valueOrThrow(Status status, T value)
{
    if (status == Status::badFormat)
        throw BadFormat(badFormatText);
    if (status == Status::outOfRange)
        throw OutOfRange(outOfRangeText);
    return value;
}

template <typename T>
T integerOrThrow(Status status, T value)
{
    return valueOrThrow<std::logic_error, std::range_error>(status, value);
}

template <typename T>
T floatOrThrow(Status status, T value)
{
    return valueOrThrow<std::runtime_error, std::runtime_error>(status, value);
}

// Generates parseX (throwing) and tryParseX (storing on success) from one checked step.
#define OVO_INTEGER_PAIR(Name, Type, step)                                                                           \
    Type parse##Name(const std::string& text)                                                                        \
    {                                                                                                                \
        Type value = 0;                                                                                              \
        const Status status = step;                                                                                  \
        return integerOrThrow(status, value);                                                                        \
    }                                                                                                                \
    bool tryParse##Name(const std::string& text, Type& value) { return step == Status::ok; }

} // namespace

OVO_INTEGER_PAIR(Int8, signed char, toSigned(text, value))
OVO_INTEGER_PAIR(Int16, short, toSigned(text, value))
OVO_INTEGER_PAIR(Short, short, toSigned(text, value))
OVO_INTEGER_PAIR(Int32, int, toSigned(text, value))
OVO_INTEGER_PAIR(Int, int, toSigned(text, value))
OVO_INTEGER_PAIR(Long, long, (toSigned<long, std::int32_t>(text, value)))
OVO_INTEGER_PAIR(UInt8, unsigned char, toUnsigned(text, value))
OVO_INTEGER_PAIR(UInt16, unsigned short, toUnsigned(text, value))
OVO_INTEGER_PAIR(UInt32, unsigned int, toUnsigned(text, value))
OVO_INTEGER_PAIR(Oct, unsigned long, (toUnsigned<unsigned long, std::uint32_t>(text, value, 8)))
OVO_INTEGER_PAIR(Hex, unsigned long, (toUnsigned<unsigned long, std::uint32_t>(text, value, 16)))
OVO_INTEGER_PAIR(Int64, long long, onSuccess(toInt64, text, value))
OVO_INTEGER_PAIR(UInt64, unsigned long long, onSuccess(toUInt64, text, value))
#undef OVO_INTEGER_PAIR

// The names below differ from their row's twin in result type only ...
long long parseLongLong(const std::string& text) { return parseInt64(text); }
unsigned long long parseULongLong(const std::string& text) { return parseUInt64(text); }

// ... bit-for-bit reinterpretations as signed types of the same width ...
short parseUShort(const std::string& text) { return static_cast<short>(parseUInt16(text)); }
int parseUInt(const std::string& text) { return static_cast<int>(parseUInt32(text)); }
long parseULong(const std::string& text) { return static_cast<std::int32_t>(parseUInt32(text)); }

bool tryParseUShort(const std::string& text, unsigned short& value) { return tryParseUInt16(text, value); }
bool tryParseUInt(const std::string& text, unsigned int& value) { return tryParseUInt32(text, value); }
bool tryParseULong(const std::string& text, unsigned long& value)
{
    return toUnsigned<unsigned long, std::uint32_t>(text, value) == Status::ok;
}

// ... and for these two, a store of the conversion's result even when the text fails.
bool tryParseLongLong(const std::string& text, long long& value) { return toInt64(text, value) == Status::ok; }
bool tryParseULongLong(const std::string& text, unsigned long long& value)
{
    return toUInt64(text, value) == Status::ok;
}

float parseFloat(const std::string& text)
{
    float value = 0;
    const Status status = onSuccess(toFloat, text, value);
    return floatOrThrow(status, value);
}

double parseDouble(const std::string& text)
{
    double value = 0;
    const Status status = onSuccess(toDouble, text, value);
    return floatOrThrow(status, value);
}

long double parseLongDouble(const std::string& text)
{
    long double value = 0;
    const Status status = onSuccess(toLongDouble, text, value);
    return floatOrThrow(status, value);
}

bool tryParseFloat(const std::string& text, float& value) { return onSuccess(toFloat, text, value) == Status::ok; }
bool tryParseDouble(const std::string& text, double& value) { return onSuccess(toDouble, text, value) == Status::ok; }
bool tryParseLongDouble(const std::string& text, long double& value)
{
    return onSuccess(toLongDouble, text, value) == Status::ok;
}

bool tryParseBool(const std::string& text, bool& value)
{
    int number = 0;
    if (tryParseInt(text, number)) {
        value = number != 0;
        return true;
    }
    for (const char* word : {"true", "yes", "on"})
        if (icompare(text, word)) {
            value = true;
            return true;
        }
    for (const char* word : {"false", "no", "off"})
        if (icompare(text, word)) {
            value = false;
            return true;
        }
    return false;
}

bool parseBool(const std::string& text)
{
    bool value = false;
    if (!tryParseBool(text, value))
        throw std::logic_error(badFormatText);
    return value;
}

} // namespace NumberParser
} // namespace ovo
