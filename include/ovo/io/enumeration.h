/// @file
/// Which devices a caller could open.
#ifndef OVO_IO_ENUMERATION_H
#define OVO_IO_ENUMERATION_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace io {

/// A serial device, by the name that SerialConfig::setDeviceName takes.
struct SerialDeviceData {
    /// The port name, such as "COM3" or "ttyUSB0".
    std::string deviceName;
};

/// The reader names the PC/SC service knows (blanks kept), in its order.
///
/// Empty when there are none or the service cannot be asked: no failure is reported.
/// Each call has a service context of its own, so calls on different threads do not
/// disturb each other.
OVO_API std::vector<std::string> enumeratePCSCDevices();
/// Always empty: serial ports are not enumerated. Reports nothing; safe from any thread.
OVO_API std::vector<SerialDeviceData> enumerateSerialDevices();

} // namespace io
} // namespace ovo

#endif
