// Which devices a caller could open. Neither function reports a failure.
#ifndef OVO_IO_ENUMERATION_H
#define OVO_IO_ENUMERATION_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace io {

// A serial device, by the name that SerialConfig::setDeviceName takes.
struct SerialDeviceData {
    std::string deviceName;
};

// The reader names the PC/SC service knows (blanks kept), in its order; empty when there
// are none or the service cannot be asked. Each call has a service context of its own.
OVO_API std::vector<std::string> enumeratePCSCDevices();
// Always empty: serial ports are not enumerated.
OVO_API std::vector<SerialDeviceData> enumerateSerialDevices();

} // namespace io
} // namespace ovo

#endif
