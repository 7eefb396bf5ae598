/// @file
/// Text helpers: printf-style formatting, equality tests, case conversion, splitting,
/// command-line splitting and byte swaps.
#ifndef OVO_STRINGS_H
#define OVO_STRINGS_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {

/// Lets the compiler check the arguments of a printf-style function against its format.
#if defined(__GNUC__)
#  define OVO_PRINTF_FORMAT(fmtIndex, firstArg) __attribute__((format(printf, fmtIndex, firstArg)))
#else
#  define OVO_PRINTF_FORMAT(fmtIndex, firstArg)
#endif

/// Text that the printf family makes of fmt and the arguments, of any length.
///
/// All text is a string of bytes; a byte is a character, and a zero byte that the format
/// produces stays in the result. Nothing here holds state, so this and every other
/// function of this header may run in any thread.
/// @return the text; the empty string for a format that yields nothing or that the
///         formatter rejects.
/// @throws std::length_error "string too long" when the text cannot be written after it
///         was measured.
OVO_API std::string format(const char* fmt, ...) OVO_PRINTF_FORMAT(1, 2);

/// Whether a and b hold the same bytes. An equality test, no ordering; reports nothing.
OVO_API bool compare(const std::string& a, const std::string& b);
/// Whether a and b are equal when case is ignored, byte by byte in the process's current
/// locale. An equality test, no ordering; reports nothing.
OVO_API bool icompare(const std::string& a, const std::string& b);

/// A copy of text with each byte in lower case, by the process's current locale.
OVO_API std::string toLower(const std::string& text);
/// Turns each byte of text to lower case, by the process's current locale.
/// @return text itself.
OVO_API std::string& toLowerInPlace(std::string& text);
/// A copy of text with each byte in upper case, by the process's current locale.
OVO_API std::string toUpper(const std::string& text);
/// Turns each byte of text to upper case, by the process's current locale.
/// @return text itself.
OVO_API std::string& toUpperInPlace(std::string& text);

/// Cuts text at every occurrence of delimiter (one whole string of exact bytes).
///
/// n occurrences give n + 1 pieces; with skipEmpty the empty ones are dropped.
/// @throws std::invalid_argument for an empty delimiter: it would be found at the same
///         place forever.
OVO_API std::vector<std::string> SplitString(const std::string& text, const std::string& delimiter,
                                             bool skipEmpty);

/// Cuts one line of command text into words.
///
/// The blank (0x20) is the only separator and the double quote, as the first character of
/// a word, the only quote; there are no escapes. Every blank after the first of a run
/// yields an empty word. Any text is accepted; reports nothing.
OVO_API std::vector<std::string> SplitCommandLine(const std::string& text);

/// Byte swaps of 16-bit and 32-bit values. The functions hold no state and may run in any
/// thread.
namespace ByteOrder {
/// value with its two bytes swapped, whatever the byte order of the machine.
OVO_API unsigned short reorder16(unsigned short value);
/// value with its four bytes in reverse order, whatever the byte order of the machine.
OVO_API unsigned int reorder32(unsigned int value);
} // namespace ByteOrder

} // namespace ovo

#endif
