#include <ovo/strings.h>

namespace ovo {
namespace ByteOrder {

unsigned short reorder16(unsigned short value)
{
    return static_cast<unsigned short>((value >> 8) | (value << 8));
}

unsigned int reorder32(unsigned int value)
{
    return (value >> 24) | ((value >> 8) & 0x0000FF00u) | ((value << 8) & 0x00FF0000u) | (value << 24);
}

} // namespace ByteOrder
} // namespace ovo
