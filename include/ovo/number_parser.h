/// @file
/// Strict text-to-number conversion on top of the strtol family.
#ifndef OVO_NUMBER_PARSER_H
#define OVO_NUMBER_PARSER_H

#include <ovo/export.h>

#include <string>

namespace ovo {
/// Strict conversion of text into numbers and booleans.
///
/// A text is a number only when the conversion consumes all of it: leading white space
/// and one sign are accepted, trailing bytes of any kind (white space, a zero byte) are a
/// bad format. The empty text is 0. Integers are decimal but for parseOct and parseHex
/// (an optional "0x"). `long` and `unsigned long` are 32-bit values here on every
/// platform, whatever width the compiler gives them.
///
/// parse... throws on failure:
/// | failure      | integers and parseBool                             | floats                                       |
/// |--------------|----------------------------------------------------|----------------------------------------------|
/// | bad format   | std::logic_error "NumebrParser - bad format"       | std::runtime_error "NumebrParser - bad format" |
/// | out of range | std::range_error "NumberParser - out of range"     | std::runtime_error "NumberParser - out of range" |
///
/// tryParse... never throws and stores the value only on success; tryParseLongLong and
/// tryParseULongLong are the exception and store whatever the conversion gave.
///
/// The functions hold no state and may run in any number of threads at once; they follow
/// the process's current locale.
namespace NumberParser {

/// @name Signed integers, throwing
/// @{

/// The number in text, within the range of the result type (8, 16, 32 or 64 bits).
/// @throws std::logic_error "NumebrParser - bad format", std::range_error
///         "NumberParser - out of range".
OVO_API signed char parseInt8(const std::string& text);
OVO_API short parseInt16(const std::string& text);
OVO_API short parseShort(const std::string& text);
OVO_API int parseInt32(const std::string& text);
OVO_API int parseInt(const std::string& text);
OVO_API long parseLong(const std::string& text);
OVO_API long long parseInt64(const std::string& text);
OVO_API long long parseLongLong(const std::string& text);
/// @}

/// @name Unsigned integers, throwing
/// @{

/// The number in text, within the range of the unsigned type of that width (8, 16, 32
/// or 64 bits). A minus sign negates in that type, as strtoul does ("-1" is 4294967295
/// for 32 bits).
/// @throws std::logic_error "NumebrParser - bad format", std::range_error
///         "NumberParser - out of range".
OVO_API unsigned char parseUInt8(const std::string& text);
OVO_API unsigned short parseUInt16(const std::string& text);
/// The three below keep a signed result type: a value above the signed limit
/// arrives with its bits unchanged as a negative number.
OVO_API short parseUShort(const std::string& text);
OVO_API unsigned int parseUInt32(const std::string& text);
OVO_API int parseUInt(const std::string& text);
OVO_API long parseULong(const std::string& text);
OVO_API unsigned long long parseUInt64(const std::string& text);
OVO_API unsigned long long parseULongLong(const std::string& text);
/// @}

/// @name Octal and hexadecimal, throwing
/// @{

/// The number in text in base 8 or 16, 0 to 4294967295.
/// @throws std::logic_error "NumebrParser - bad format", std::range_error
///         "NumberParser - out of range".
OVO_API unsigned long parseOct(const std::string& text);
OVO_API unsigned long parseHex(const std::string& text);
/// @}

/// @name Floating point, throwing
/// @{

/// The number in text, as strtof, strtod and strtold read it (exponents included).
/// @throws std::runtime_error "NumebrParser - bad format", or "NumberParser - out of
///         range" for an overflow or underflow.
OVO_API float parseFloat(const std::string& text);
OVO_API double parseDouble(const std::string& text);
OVO_API long double parseLongDouble(const std::string& text);
/// @}

/// A number (non-zero is true), or "true"/"yes"/"on", "false"/"no"/"off" in any case.
/// @throws std::logic_error "NumebrParser - bad format" for anything else, a number
///         beyond 32 bits included.
OVO_API bool parseBool(const std::string& text);

/// @name Signed integers, not throwing
/// @{

/// Stores the number in text into value when it is one within the range of value's type.
/// @return false, with value untouched, for a bad format or a number out of range.
OVO_API bool tryParseInt8(const std::string& text, signed char& value);
OVO_API bool tryParseInt16(const std::string& text, short& value);
OVO_API bool tryParseShort(const std::string& text, short& value);
OVO_API bool tryParseInt32(const std::string& text, int& value);
OVO_API bool tryParseInt(const std::string& text, int& value);
OVO_API bool tryParseLong(const std::string& text, long& value);
OVO_API bool tryParseInt64(const std::string& text, long long& value);
/// Stores the number in text into value, also when it fails: value then holds what the
/// conversion gave (12 for "12abc").
/// @return false for a bad format or a number out of range.
OVO_API bool tryParseLongLong(const std::string& text, long long& value);
/// @}

/// @name Unsigned integers, not throwing
/// @{

/// Stores the number in text into value when it is one within the range of value's type.
/// @return false, with value untouched, for a bad format or a number out of range.
OVO_API bool tryParseUInt8(const std::string& text, unsigned char& value);
OVO_API bool tryParseUInt16(const std::string& text, unsigned short& value);
OVO_API bool tryParseUShort(const std::string& text, unsigned short& value);
OVO_API bool tryParseUInt32(const std::string& text, unsigned int& value);
OVO_API bool tryParseUInt(const std::string& text, unsigned int& value);
OVO_API bool tryParseULong(const std::string& text, unsigned long& value);
OVO_API bool tryParseUInt64(const std::string& text, unsigned long long& value);
/// Stores the number in text into value, also when it fails: value then holds what the
/// conversion gave (12 for "12abc").
/// @return false for a bad format or a number out of range.
OVO_API bool tryParseULongLong(const std::string& text, unsigned long long& value);
/// @}

/// @name Octal and hexadecimal, not throwing
/// @{

/// Stores the number in text, in base 8 or 16, into value when it is one of 0 to 4294967295.
/// @return false, with value untouched, for a bad format or a number out of range.
OVO_API bool tryParseOct(const std::string& text, unsigned long& value);
OVO_API bool tryParseHex(const std::string& text, unsigned long& value);
/// @}

/// @name Floating point, not throwing
/// @{

/// Stores the number in text into value when it is one within the range of value's type.
/// @return false, with value untouched, for a bad format or an overflow or underflow.
OVO_API bool tryParseFloat(const std::string& text, float& value);
OVO_API bool tryParseDouble(const std::string& text, double& value);
OVO_API bool tryParseLongDouble(const std::string& text, long double& value);
/// @}

/// Stores the truth of text into value, as parseBool reads it.
/// @return false, with value untouched, when text is neither a 32-bit number nor one of
///         the words.
OVO_API bool tryParseBool(const std::string& text, bool& value);

} // namespace NumberParser
} // namespace ovo

#endif
