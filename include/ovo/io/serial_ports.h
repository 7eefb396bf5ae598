/// @file
/// The machine's serial ports and what is behind each: a USB adapter's identity, so that
/// the same adapter is found again after re-plugging, and the paths that stay the same.
#ifndef OVO_IO_SERIAL_PORTS_H
#define OVO_IO_SERIAL_PORTS_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace io {

/// One port. Every field but the name is empty where the system does not tell it.
struct SerialPortInfo {
    /// As SerialConfig::setDeviceName takes it: ttyUSB0, COM3.
    std::string deviceName;
    /// The product's name ("product - interface" for each port of a USB device with
    /// several, where the interfaces have names), or what kind of port it is.
    std::string description;
    /// The USB vendor id, four lower-case hex digits: "0403".
    std::string vendorId;
    /// The USB product id, four lower-case hex digits: "6001".
    std::string productId;
    /// The USB device's serial number.
    std::string serialNumber;
    /// The USB device's maker, as the device names it.
    std::string manufacturer;
    /// The USB device's product name, as the device names it.
    std::string product;
    /// The USB interface, two hex digits: "00".
    std::string interfaceNumber;
    /// The USB interface's own name, where it has one.
    std::string interfaceName;
    /// Paths that name this device whatever order it was found in (on Linux the links
    /// in /dev/serial/by-id, then /dev/serial/by-path); each is a device name too.
    std::vector<std::string> stablePaths;
};

/// The ports that exist now, by name in natural order (ttyS2 before ttyS10). Ports the
/// kernel only reserves and pseudo-terminals are left out.
///
/// Reports nothing: the list is empty when the system cannot be asked. Safe from any thread.
OVO_API std::vector<SerialPortInfo> listSerialPorts();

} // namespace io
} // namespace ovo

#endif
