// Strict text-to-number conversion on top of the strtol family.
//
// A text is a number only when the conversion consumes all of it: leading white space
// and one sign are accepted, trailing bytes of any kind (white space, a zero byte) are a
// bad format. The empty text is 0. `long` and `unsigned long` are 32-bit values here on
// every platform, whatever width the compiler gives them.
//
// parse... throws on failure:
//   bad format    std::logic_error "NumebrParser - bad format"   (floats: std::runtime_error)
//   out of range  std::range_error "NumberParser - out of range" (floats: std::runtime_error)
// tryParse... never throws and stores the value only on success; tryParseLongLong and
// tryParseULongLong are the exception and store whatever the conversion gave.
#ifndef OVO_NUMBER_PARSER_H
#define OVO_NUMBER_PARSER_H

#include <ovo/export.h>

#include <string>

namespace ovo {
namespace NumberParser {

OVO_API signed char parseInt8(const std::string& text);
OVO_API short parseInt16(const std::string& text);
OVO_API short parseShort(const std::string& text);
OVO_API int parseInt32(const std::string& text);
OVO_API int parseInt(const std::string& text);
OVO_API long parseLong(const std::string& text);
OVO_API long long parseInt64(const std::string& text);
OVO_API long long parseLongLong(const std::string& text);

OVO_API unsigned char parseUInt8(const std::string& text);
OVO_API unsigned short parseUInt16(const std::string& text);
// The three below keep a signed result type: a value above the signed limit
// arrives with its bits unchanged as a negative number.
OVO_API short parseUShort(const std::string& text);
OVO_API unsigned int parseUInt32(const std::string& text);
OVO_API int parseUInt(const std::string& text);
OVO_API long parseULong(const std::string& text);
OVO_API unsigned long long parseUInt64(const std::string& text);
OVO_API unsigned long long parseULongLong(const std::string& text);

OVO_API unsigned long parseOct(const std::string& text);
OVO_API unsigned long parseHex(const std::string& text);

OVO_API float parseFloat(const std::string& text);
OVO_API double parseDouble(const std::string& text);
OVO_API long double parseLongDouble(const std::string& text);

// A number (non-zero is true), or "true"/"yes"/"on", "false"/"no"/"off" in any case.
OVO_API bool parseBool(const std::string& text);

OVO_API bool tryParseInt8(const std::string& text, signed char& value);
OVO_API bool tryParseInt16(const std::string& text, short& value);
OVO_API bool tryParseShort(const std::string& text, short& value);
OVO_API bool tryParseInt32(const std::string& text, int& value);
OVO_API bool tryParseInt(const std::string& text, int& value);
OVO_API bool tryParseLong(const std::string& text, long& value);
OVO_API bool tryParseInt64(const std::string& text, long long& value);
OVO_API bool tryParseLongLong(const std::string& text, long long& value);

OVO_API bool tryParseUInt8(const std::string& text, unsigned char& value);
OVO_API bool tryParseUInt16(const std::string& text, unsigned short& value);
OVO_API bool tryParseUShort(const std::string& text, unsigned short& value);
OVO_API bool tryParseUInt32(const std::string& text, unsigned int& value);
OVO_API bool tryParseUInt(const std::string& text, unsigned int& value);
OVO_API bool tryParseULong(const std::string& text, unsigned long& value);
OVO_API bool tryParseUInt64(const std::string& text, unsigned long long& value);
OVO_API bool tryParseULongLong(const std::string& text, unsigned long long& value);

OVO_API bool tryParseOct(const std::string& text, unsigned long& value);
OVO_API bool tryParseHex(const std::string& text, unsigned long& value);

OVO_API bool tryParseFloat(const std::string& text, float& value);
OVO_API bool tryParseDouble(const std::string& text, double& value);
OVO_API bool tryParseLongDouble(const std::string& text, long double& value);

OVO_API bool tryParseBool(const std::string& text, bool& value);

} // namespace NumberParser
} // namespace ovo

#endif
