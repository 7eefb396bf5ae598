// The serial port list from sysfs trees as the kernel lays out a USB adapter, a modem, a UART and a reserved ttyS.
#include "platform/serial_ports.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

using ovo::io::SerialPortInfo;
namespace fs = std::filesystem;

const std::string usb = "sys/devices/pci0000:00/0000:00:14.0/usb1/";
const std::string ftdi = usb + "1-2/1-2:1.0/ttyUSB0/";
const std::string modem = usb + "1-3/1-3:1.0/";
const std::string uart = "sys/devices/pnp0/00:00/00:00:0/00:00:0.0/";

// A directory with its attribute files ("name=text;..."), or with "-> " a symbolic link and its target.
const std::vector<std::pair<std::string, std::string>> machine = {
    {usb + "1-2", "idVendor=0403;idProduct=6001;serial=A50285BI;manufacturer=FTDI;product=FT232R USB UART"},
    {usb + "1-2/1-2:1.0", "bInterfaceNumber=00;interface=FT232R serial"},
    {ftdi + "driver", "-> ../../../../../../../bus/usb-serial/drivers/ftdi_sio"},
    {ftdi + "tty/ttyUSB0/device", "-> ../../../ttyUSB0"},
    {"sys/class/tty/ttyUSB0", "-> ../../devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/ttyUSB0/tty/ttyUSB0"},
    {"dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0", "-> ../../ttyUSB0"},
    {"dev/serial/by-path/pci-0000:00:14.0-usb-0:2:1.0-port0", "-> ../../ttyUSB0"},
    // A modem without a serial number or an interface name.
    {usb + "1-3", "idVendor=1546;idProduct=01a8;manufacturer=u-blox AG;product=u-blox GNSS receiver"},
    {modem, "bInterfaceNumber=00"},
    {modem + "driver", "-> ../../../../../../bus/usb/drivers/cdc_acm"},
    {modem + "tty/ttyACM0/device", "-> ../../../1-3:1.0"},
    {"sys/class/tty/ttyACM0", "-> ../../devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/tty/ttyACM0"},
    {"dev/serial/by-id/usb-u-blox_AG_u-blox_GNSS_receiver-if00", "-> ../../ttyACM0"},
    {uart + "driver", "-> ../../../../../bus/serial-base/drivers/port"},
    {uart + "tty/ttyS0", "type=4"},
    {uart + "tty/ttyS0/device", "-> ../../../00:00:0.0"},
    {"sys/class/tty/ttyS0", "-> ../../devices/pnp0/00:00/00:00:0/00:00:0.0/tty/ttyS0"},
    // Reserved for a UART that is not there, and a device without hardware.
    {"sys/devices/platform/serial8250/tty/ttyS1", "type=0"},
    {"sys/devices/platform/serial8250/tty/ttyS1/device", "-> ../../../serial8250"},
    {"sys/class/tty/ttyS1", "-> ../../devices/platform/serial8250/tty/ttyS1"},
    {"sys/devices/virtual/tty/ptmx", "dev=5:2"},
    {"sys/class/tty/ptmx", "-> ../../devices/virtual/tty/ptmx"},
};

void build(const fs::path& root)
{
    for (const auto& [path, text] : machine) {
        fs::create_directories((root / path).parent_path());
        if (text.rfind("-> ", 0) == 0) {
            fs::create_directory_symlink(text.substr(3), root / path);
            continue;
        }
        fs::create_directories(root / path);
        std::istringstream attributes(text);
        for (std::string name, value; std::getline(attributes, name, '=') && std::getline(attributes, value, ';');)
            std::ofstream(root / path / name) << value << '\n';
    }
}

// Every field of a port, '|' between them, the stable paths last.
std::string fields(const SerialPortInfo& port)
{
    std::string text = port.deviceName + "|" + port.description + "|" + port.vendorId + "|" + port.productId + "|" +
                       port.serialNumber + "|" + port.manufacturer + "|" + port.product + "|" + port.interfaceNumber +
                       "|" + port.interfaceName;
    for (const std::string& path : port.stablePaths)
        text += "|" + path;
    return text;
}

std::vector<std::string> portsUnder(const fs::path& root)
{
    std::vector<std::string> ports;
    for (const SerialPortInfo& port : ovo::platform::sysfsSerialPorts(root.string()))
        ports.push_back(fields(port));
    std::sort(ports.begin(), ports.end());
    return ports;
}

TEST(SerialPorts, SysfsTreeGivesThePortsWithHardwareAndEveryKnownField)
{
    ovo_test::TempDir root;
    build(root.path());
    EXPECT_EQ(portsUnder(root.path()),
              (std::vector<std::string>{
                  "ttyACM0|u-blox GNSS receiver|1546|01a8||u-blox AG|u-blox GNSS receiver|00||"
                  "/dev/serial/by-id/usb-u-blox_AG_u-blox_GNSS_receiver-if00",
                  "ttyS0|16550A UART|||||||",
                  "ttyUSB0|FT232R USB UART|0403|6001|A50285BI|FTDI|FT232R USB UART|00|FT232R serial|"
                  "/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0|"
                  "/dev/serial/by-path/pci-0000:00:14.0-usb-0:2:1.0-port0",
              }));
    // Without names the description falls back to the interface's, then to the driver's.
    fs::remove(root.path() / usb / "1-2/product");
    EXPECT_EQ(portsUnder(root.path())[2].substr(0, 40), "ttyUSB0|FT232R serial|0403|6001|A50285BI");
    fs::remove(root.path() / usb / "1-2/1-2:1.0/interface");
    EXPECT_EQ(portsUnder(root.path())[2].substr(0, 26), "ttyUSB0|ftdi_sio|0403|6001");
    EXPECT_TRUE(portsUnder(root.path() / "nothing").empty());
}

} // namespace
