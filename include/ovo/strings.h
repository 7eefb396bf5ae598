// Text helpers: printf-style formatting, equality tests, case conversion, splitting,
// command-line splitting and byte swaps. All text is a string of bytes; a byte is a
// character. Nothing here holds state, so every function may run in any thread.
#ifndef OVO_STRINGS_H
#define OVO_STRINGS_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {

#if defined(__GNUC__)
#  define OVO_PRINTF_FORMAT(fmtIndex, firstArg) __attribute__((format(printf, fmtIndex, firstArg)))
#else
#  define OVO_PRINTF_FORMAT(fmtIndex, firstArg)
#endif

// Text that the printf family makes of fmt and the arguments, of any length.
// A format that yields nothing (or that the formatter rejects) gives the empty string.
OVO_API std::string format(const char* fmt, ...) OVO_PRINTF_FORMAT(1, 2);

// Equality tests: true when equal. They are no orderings.
OVO_API bool compare(const std::string& a, const std::string& b);
OVO_API bool icompare(const std::string& a, const std::string& b);

// Byte-wise case conversion in the process's current locale.
OVO_API std::string toLower(const std::string& text);
OVO_API std::string& toLowerInPlace(std::string& text);
OVO_API std::string toUpper(const std::string& text);
OVO_API std::string& toUpperInPlace(std::string& text);

// Cuts text at every occurrence of delimiter (one whole string of exact bytes).
// With skipEmpty the empty pieces are dropped. An empty delimiter throws
// std::invalid_argument: it would be found at the same place forever.
OVO_API std::vector<std::string> SplitString(const std::string& text, const std::string& delimiter,
                                             bool skipEmpty);

// Cuts one line of command text into words. The blank (0x20) is the only separator and
// the double quote, as the first character of a word, the only quote; there are no escapes.
// Every blank after the first of a run yields an empty word.
OVO_API std::vector<std::string> SplitCommandLine(const std::string& text);

namespace ByteOrder {
// Always swap, whatever the byte order of the machine.
OVO_API unsigned short reorder16(unsigned short value);
OVO_API unsigned int reorder32(unsigned int value);
} // namespace ByteOrder

} // namespace ovo

#endif
