#include <ovo/io/serial_ports.h>

#include "platform/serial_ports.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace ovo {
namespace io {

namespace {

// A port name as its stem and the number it ends in (ttyUSB10: "ttyUSB", 10), so that
// names sort as a person sorts them: COM2 before COM10.
std::tuple<std::string, unsigned long, std::string> sortKey(const std::string& name)
{
    const std::size_t stemLength = name.find_last_not_of("0123456789") + 1; // 0 when all digits
    return {name.substr(0, stemLength), std::strtoul(name.c_str() + stemLength, nullptr, 10), name};
}

} // namespace

std::vector<SerialPortInfo> listSerialPorts()
{
    std::vector<SerialPortInfo> ports = platform::systemSerialPorts();
    std::sort(ports.begin(), ports.end(), [](const SerialPortInfo& a, const SerialPortInfo& b) {
        return sortKey(a.deviceName) < sortKey(b.deviceName);
    });
    return ports;
}

} // namespace io
} // namespace ovo
