// The serial port list from sysfs trees as the kernel lays out USB adapters, modems, a UART and a reserved ttyS.
#include "platform/serial_ports.h"
#include "support/sysfs_tree.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using ovo::io::SerialPortInfo;
namespace fs = std::filesystem;

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
    ovo_test::buildSysfsTree(root.path());
    EXPECT_EQ(portsUnder(root.path()),
              (std::vector<std::string>{
                  "ttyACM0|u-blox GNSS receiver|1546|01a8||u-blox AG|u-blox GNSS receiver|00||"
                  "/dev/serial/by-id/usb-u-blox_AG_u-blox_GNSS_receiver-if00|"
                  "/dev/serial/by-path/pci-0000:00:14.0-usb-0:3:1.0|/dev/serial/by-path/pci-0000:00:14.0-usbv2-0:3:1.0",
                  "ttyACM10|LTE modem - GNSS data|1546|1102||u-blox AG|LTE modem|02|GNSS data",
                  "ttyACM9|LTE modem - AT commands|1546|1102||u-blox AG|LTE modem|00|AT commands",
                  "ttyS0|16750 UART|||||||",
                  "ttyUSB0|FT232R USB UART|0403|6001|A50285BI|FTDI|FT232R USB UART|00|FT232R serial|"
                  "/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0|"
                  "/dev/serial/by-path/pci-0000:00:14.0-usb-0:2:1.0-port0|"
                  "/dev/serial/by-path/pci-0000:00:14.0-usbv2-0:2:1.0-port0",
                  "ttyUSB10|USB-Serial Controller|067b|2303||Prolific Technology Inc.|USB-Serial Controller|00|",
              }));
    // Without names the description falls back to the interface's, then to the driver's.
    fs::remove(root.path() / ovo_test::usbBus / "1-2/product");
    EXPECT_EQ(portsUnder(root.path())[4].substr(0, 40), "ttyUSB0|FT232R serial|0403|6001|A50285BI");
    fs::remove(root.path() / ovo_test::usbBus / "1-2/1-2:1.0/interface");
    EXPECT_EQ(portsUnder(root.path())[4].substr(0, 26), "ttyUSB0|ftdi_sio|0403|6001");
    EXPECT_TRUE(portsUnder(root.path() / "nothing").empty());
}

} // namespace
