#include "platform/posix/serial_speed.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace ovo {
namespace posix {

namespace {

struct StandardSpeed {
    unsigned int bitsPerSecond;
    tcflag_t code;
};

// The rates termios names; every other rate goes as BOTHER with the number itself.
const StandardSpeed standardSpeeds[] = {
    {50, B50},         {75, B75},           {110, B110},         {134, B134},         {150, B150},
    {200, B200},       {300, B300},         {600, B600},         {1200, B1200},       {1800, B1800},
    {2400, B2400},     {4800, B4800},       {9600, B9600},       {19200, B19200},     {38400, B38400},
    {57600, B57600},   {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000}, {921600, B921600},   {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000},
    {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000}, {3500000, B3500000}, {4000000, B4000000},
};

} // namespace

bool setLineSpeed(int descriptor, unsigned int bitsPerSecond)
{
    struct termios2 settings;
    if (::ioctl(descriptor, TCGETS2, &settings) != 0)
        return false;
    tcflag_t code = BOTHER;
    for (const StandardSpeed& speed : standardSpeeds)
        if (speed.bitsPerSecond == bitsPerSecond)
            code = speed.code;
    settings.c_cflag &= ~(CBAUD | (CBAUD << IBSHIFT));
    settings.c_cflag |= code | (code << IBSHIFT);
    settings.c_ispeed = bitsPerSecond;
    settings.c_ospeed = bitsPerSecond;
    return ::ioctl(descriptor, TCSETS2, &settings) == 0;
}

unsigned int lineSpeed(int descriptor)
{
    struct termios2 settings;
    return ::ioctl(descriptor, TCGETS2, &settings) == 0 ? settings.c_ospeed : 0;
}

} // namespace posix
} // namespace ovo
