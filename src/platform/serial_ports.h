// Where the serial ports come from: sysfs on Linux, the device installation API of the
// Ports class on Windows. Each platform file defines systemSerialPorts().
#ifndef OVO_SRC_PLATFORM_SERIAL_PORTS_H
#define OVO_SRC_PLATFORM_SERIAL_PORTS_H

#include <ovo/io/serial_ports.h>

#include <string>
#include <vector>

namespace ovo {
namespace platform {

// The ports of this machine, in no particular order.
std::vector<io::SerialPortInfo> systemSerialPorts();

#if !defined(_WIN32)
// The ports of the tree under `root` ("/" for this machine): ROOT/sys/class/tty and the
// links in ROOT/dev/serial.
std::vector<io::SerialPortInfo> sysfsSerialPorts(const std::string& root);
#endif

} // namespace platform
} // namespace ovo

#endif
