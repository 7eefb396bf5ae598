/// @file
/// Byte buffers to text and back: one-line hex, the multi-line dump, BCD digits.
#ifndef OVO_NUMBER_FORMATTER_H
#define OVO_NUMBER_FORMATTER_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
/// Byte buffers to text and back: one-line hex, the multi-line dump, BCD digits.
///
/// Every function allocates its result once, at its final size. The functions hold no
/// state and may run in any number of threads at once.
namespace NumberFormatter {

/// Two lower-case hex digits a byte: "12ab". Reports nothing; size 0 gives "".
OVO_API std::string buffer2stringL(const void* data, unsigned int size);
/// Two upper-case hex digits a byte: "12AB". Reports nothing; size 0 gives "".
OVO_API std::string buffer2stringU(const void* data, unsigned int size);
/// Two lower-case hex digits and a blank a byte, the last byte too: "12 ab ".
/// Reports nothing; size 0 gives "".
OVO_API std::string buffer2stringL2(const void* data, unsigned int size);
/// Two upper-case hex digits and a blank a byte, the last byte too: "12 AB ".
/// Reports nothing; size 0 gives "".
OVO_API std::string buffer2stringU2(const void* data, unsigned int size);

/// '0' + high nibble, '0' + low nibble for each byte, then one zero byte that counts
/// in the length (2 * size + 1 characters). Nibbles above 9 are not checked.
OVO_API std::string bcd2string(const void* data, unsigned int size);

/// "yes" or "no".
OVO_API std::string formatBool(bool value);

/// Dump of bytesPerLine bytes a line: hex pairs, "| ", the printable bytes (others as
/// '.'), every line padded to the same width, line feeds between lines and none at the
/// end.
/// @throws std::out_of_range "invalid string position" for size 0.
/// @throws std::invalid_argument for bytesPerLine below 1.
/// @throws std::length_error when the dump would not fit in memory.
OVO_API std::string formatBuffer(const void* data, unsigned int size, int bytesPerLine);

/// Bytes of a text of hex digits (either case, nothing else, an odd text reads as if
/// it had a leading 0).
/// @throws std::runtime_error "invalid hex char 'c'" at the first other character c.
OVO_API std::vector<unsigned char> string2buffer(const std::string& text);

} // namespace NumberFormatter
} // namespace ovo

#endif
