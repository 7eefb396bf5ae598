// The serial ports as the device installation API knows them: the present devices of the
// Ports class, each with its COM name in its device key. The USB identity is read from
// the instance id: USB\VID_0403&PID_6001\A50285BI.
#include "platform/serial_ports.h"

#include <windows.h>
#include <setupapi.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace ovo {
namespace platform {

namespace {

// GUID_DEVCLASS_PORTS, spelled out so that no GUID library is needed.
const GUID portsClass = {0x4D36E978, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

std::string property(HDEVINFO devices, SP_DEVINFO_DATA& device, DWORD which)
{
    char text[512] = {};
    if (!SetupDiGetDeviceRegistryPropertyA(devices, &device, which, nullptr, reinterpret_cast<BYTE*>(text),
                                           sizeof text - 1, nullptr))
        return std::string();
    return text;
}

std::string portName(HDEVINFO devices, SP_DEVINFO_DATA& device)
{
    const HKEY key = SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
    if (key == INVALID_HANDLE_VALUE)
        return std::string();
    char name[256] = {};
    DWORD size = sizeof name - 1, type = 0;
    const LONG read = RegQueryValueExA(key, "PortName", nullptr, &type, reinterpret_cast<BYTE*>(name), &size);
    RegCloseKey(key);
    return read == ERROR_SUCCESS && type == REG_SZ ? name : std::string();
}

// The hex digits after a marker of the instance id ("VID_", "MI_"), in lower case as
// sysfs gives them; empty without the marker.
std::string hexAfter(const std::string& instance, const char* marker, std::size_t digits)
{
    const std::size_t at = instance.find(marker);
    if (at == std::string::npos)
        return std::string();
    std::string hex = instance.substr(at + std::strlen(marker), digits);
    std::transform(hex.begin(), hex.end(), hex.begin(), [](unsigned char c) { return std::tolower(c); });
    return hex;
}

void readUsbIdentity(const std::string& instance, io::SerialPortInfo& port)
{
    port.vendorId = hexAfter(instance, "VID_", 4);
    port.productId = hexAfter(instance, "PID_", 4);
    port.interfaceNumber = hexAfter(instance, "MI_", 2);
    // The last part is the device's serial number, unless Windows made one up (with '&').
    const std::string last = instance.substr(instance.rfind('\\') + 1);
    if (instance.compare(0, 4, "USB\\") == 0 && last.find('&') == std::string::npos)
        port.serialNumber = last;
}

} // namespace

std::vector<io::SerialPortInfo> systemSerialPorts()
{
    std::vector<io::SerialPortInfo> ports;
    const HDEVINFO devices = SetupDiGetClassDevsA(&portsClass, nullptr, nullptr, DIGCF_PRESENT);
    if (devices == INVALID_HANDLE_VALUE)
        return ports;
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof device;
    for (DWORD index = 0; SetupDiEnumDeviceInfo(devices, index, &device); ++index) {
        io::SerialPortInfo port;
        port.deviceName = portName(devices, device);
        if (port.deviceName.compare(0, 3, "COM") != 0)
            continue; // printer ports share the class
        port.description = property(devices, device, SPDRP_FRIENDLYNAME);
        port.manufacturer = property(devices, device, SPDRP_MFG);
        port.product = property(devices, device, SPDRP_DEVICEDESC);
        char instance[512] = {};
        if (SetupDiGetDeviceInstanceIdA(devices, &device, instance, sizeof instance, nullptr))
            readUsbIdentity(instance, port);
        ports.push_back(std::move(port));
    }
    SetupDiDestroyDeviceInfoList(devices);
    return ports;
}

} // namespace platform
} // namespace ovo
