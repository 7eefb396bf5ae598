// The serial ports as sysfs shows them: every /sys/class/tty entry whose `device` link
// leads to hardware. A USB adapter's identity lies in the directories above that device
// (the interface, then the USB device); a UART has a `type`, 0 for a port the kernel only
// reserves. Pseudo-terminals and consoles have no device at all.
// A USB device with several ports (a two-port adapter, a modem with a port for commands
// and one for data) shows each as "product - interface", where the interfaces have names.
#include "platform/serial_ports.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace ovo {
namespace platform {

namespace {

// The first line of an attribute file without trailing blanks (USB strings often end in
// some); empty when there is none.
std::string attribute(const fs::path& file)
{
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line.erase(line.find_last_not_of(" \t") + 1);
}

// The nearest directory from `start` upwards that has the attribute `marker`, not above
// `top`; empty when there is none.
fs::path nearestWith(const fs::path& start, const char* marker, const fs::path& top)
{
    std::error_code ignored;
    for (fs::path dir = start; dir != top && dir.has_relative_path(); dir = dir.parent_path())
        if (fs::exists(dir / marker, ignored))
            return dir;
    return {};
}

// The kernel's UART type numbers, as it names them in its own reports.
std::string uartDescription(const std::string& type)
{
    static const char* const names[] = {"8250", "16450", "16550", "16550A", "Cirrus", "16650", "16650V2", "16750"};
    const int number = std::atoi(type.c_str());
    if (number >= 1 && number <= 8)
        return std::string(names[number - 1]) + " UART";
    return "UART";
}

// The links of ROOT/dev/serial/KIND that lead to the device, as /dev/serial/KIND/LINK.
std::vector<std::string> linksTo(const fs::path& root, const std::string& kind, const std::string& deviceName)
{
    std::vector<std::string> links;
    std::error_code ignored;
    for (const fs::directory_entry& link : fs::directory_iterator(root / "dev/serial" / kind, ignored))
        if (fs::read_symlink(link.path(), ignored).filename() == deviceName)
            links.push_back("/dev/serial/" + kind + "/" + link.path().filename().string());
    std::sort(links.begin(), links.end());
    return links;
}

// Fills in the USB identity; gives the USB device's directory (empty for other ports).
fs::path readUsbIdentity(const fs::path& device, const fs::path& top, io::SerialPortInfo& port)
{
    const fs::path usbInterface = nearestWith(device, "bInterfaceNumber", top);
    if (!usbInterface.empty()) {
        port.interfaceNumber = attribute(usbInterface / "bInterfaceNumber");
        port.interfaceName = attribute(usbInterface / "interface");
    }
    const fs::path usbDevice = nearestWith(device, "idVendor", top);
    if (usbDevice.empty())
        return usbDevice;
    port.vendorId = attribute(usbDevice / "idVendor");
    port.productId = attribute(usbDevice / "idProduct");
    port.serialNumber = attribute(usbDevice / "serial");
    port.manufacturer = attribute(usbDevice / "manufacturer");
    port.product = attribute(usbDevice / "product");
    return usbDevice;
}

} // namespace

std::vector<io::SerialPortInfo> sysfsSerialPorts(const std::string& root)
{
    std::vector<io::SerialPortInfo> ports;
    std::vector<fs::path> usbDevices; // of each port
    std::error_code failed;
    const fs::path top = fs::weakly_canonical(fs::path(root) / "sys/devices", failed);
    for (const fs::directory_entry& tty : fs::directory_iterator(fs::path(root) / "sys/class/tty", failed)) {
        std::error_code ignored;
        const fs::path device = fs::canonical(tty.path() / "device", ignored);
        if (device.empty())
            continue;
        const bool isUart = fs::exists(tty.path() / "type", ignored);
        const std::string type = attribute(tty.path() / "type");
        if (isUart && type == "0")
            continue;
        io::SerialPortInfo port;
        port.deviceName = tty.path().filename().string();
        usbDevices.push_back(readUsbIdentity(device, top, port));
        if (!port.product.empty())
            port.description = port.product;
        else if (!port.interfaceName.empty())
            port.description = port.interfaceName;
        else if (isUart)
            port.description = uartDescription(type);
        else
            port.description = fs::read_symlink(device / "driver", ignored).filename().string();
        for (const char* kind : {"by-id", "by-path"}) {
            const std::vector<std::string> links = linksTo(root, kind, port.deviceName);
            port.stablePaths.insert(port.stablePaths.end(), links.begin(), links.end());
        }
        ports.push_back(std::move(port));
    }
    for (std::size_t i = 0; i < ports.size(); ++i) {
        const bool several =
            !usbDevices[i].empty() && std::count(usbDevices.begin(), usbDevices.end(), usbDevices[i]) > 1;
        if (several && !ports[i].product.empty() && !ports[i].interfaceName.empty())
            ports[i].description = ports[i].product + " - " + ports[i].interfaceName;
    }
    return ports;
}

std::vector<io::SerialPortInfo> systemSerialPorts() { return sysfsSerialPorts("/"); }

} // namespace platform
} // namespace ovo
