// Line speed as a plain number of bits per second, standard or not, where the kernel
// allows it (termios2 on Linux). Kept apart: its kernel header and <termios.h> collide.
#ifndef OVO_SRC_PLATFORM_POSIX_SERIAL_SPEED_H
#define OVO_SRC_PLATFORM_POSIX_SERIAL_SPEED_H

namespace ovo {
namespace posix {

// False with errno set when the device refuses.
bool setLineSpeed(int descriptor, unsigned int bitsPerSecond);
// 0 when it cannot be read.
unsigned int lineSpeed(int descriptor);

} // namespace posix
} // namespace ovo

#endif
