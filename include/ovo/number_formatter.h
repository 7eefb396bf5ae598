// Byte buffers to text and back: one-line hex, the multi-line dump, BCD digits.
// Every function allocates its result once, at its final size.
#ifndef OVO_NUMBER_FORMATTER_H
#define OVO_NUMBER_FORMATTER_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace NumberFormatter {

// Two hex digits a byte: "12ab" / "12AB".
OVO_API std::string buffer2stringL(const void* data, unsigned int size);
OVO_API std::string buffer2stringU(const void* data, unsigned int size);
// Two hex digits and a blank a byte, the last byte too: "12 ab " / "12 AB ".
OVO_API std::string buffer2stringL2(const void* data, unsigned int size);
OVO_API std::string buffer2stringU2(const void* data, unsigned int size);

// '0' + high nibble, '0' + low nibble for each byte, then one zero byte that counts
// in the length (2 * size + 1 characters). Nibbles above 9 are not checked.
OVO_API std::string bcd2string(const void* data, unsigned int size);

// "yes" or "no".
OVO_API std::string formatBool(bool value);

// Dump of bytesPerLine bytes a line: hex pairs, "| ", the printable bytes (others as
// '.'), every line padded to the same width, line feeds between lines and none at the
// end. Throws std::out_of_range "invalid string position" for size 0 and
// std::invalid_argument for bytesPerLine below 1.
OVO_API std::string formatBuffer(const void* data, unsigned int size, int bytesPerLine);

// Bytes of a text of hex digits (either case, nothing else, an odd text reads as if
// it had a leading 0). Throws std::runtime_error "invalid hex char 'c'" at the first
// other character.
OVO_API std::vector<unsigned char> string2buffer(const std::string& text);

} // namespace NumberFormatter
} // namespace ovo

#endif
