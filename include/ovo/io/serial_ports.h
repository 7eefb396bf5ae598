// The machine's serial ports and what is behind each: a USB adapter's identity, so that
// the same adapter is found again after re-plugging, and the paths that stay the same.
#ifndef OVO_IO_SERIAL_PORTS_H
#define OVO_IO_SERIAL_PORTS_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace io {

// One port. Every field but the name is empty where the system does not tell it.
struct SerialPortInfo {
    std::string deviceName;  // as SerialConfig::setDeviceName takes it: ttyUSB0, COM3
    std::string description; // the product's name, or what kind of port it is
    std::string vendorId;    // USB ids, four hex digits each: "0403"
    std::string productId;
    std::string serialNumber; // the USB device's serial number
    std::string manufacturer;
    std::string product;
    std::string interfaceNumber; // the USB interface, two hex digits: "00"
    std::string interfaceName;
    // Paths that name this device whatever order it was found in (on Linux the links
    // in /dev/serial/by-id, then /dev/serial/by-path); each is a device name too.
    std::vector<std::string> stablePaths;
};

// The ports that exist now, by name in natural order (ttyS2 before ttyS10); empty when the
// system cannot be asked. Ports the kernel only reserves and pseudo-terminals are left out.
OVO_API std::vector<SerialPortInfo> listSerialPorts();

} // namespace io
} // namespace ovo

#endif
