// A sysfs tree as the kernel lays out serial ports, built under a directory: a USB
// adapter, two modems (one with two ports), an adapter whose strings end in blanks, a
// UART, a reserved ttyS and a device without hardware; with the udev links to them (a
// USB port has two by-path links, usb- and usbv2-, which no directory need list in order).
#ifndef OVO_TESTS_SUPPORT_SYSFS_TREE_H
#define OVO_TESTS_SUPPORT_SYSFS_TREE_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace ovo_test {

inline const std::string usbBus = "sys/devices/pci0000:00/0000:00:14.0/usb1/";

// A directory with its attribute files ("name=text;..."), or with "-> " a symbolic link and its target.
inline const std::vector<std::pair<std::string, std::string>> sysfsMachine = {
    {usbBus + "1-2", "idVendor=0403;idProduct=6001;serial=A50285BI;manufacturer=FTDI;product=FT232R USB UART"},
    {usbBus + "1-2/1-2:1.0", "bInterfaceNumber=00;interface=FT232R serial"},
    {usbBus + "1-2/1-2:1.0/ttyUSB0/driver", "-> ../../../../../../../bus/usb-serial/drivers/ftdi_sio"},
    {usbBus + "1-2/1-2:1.0/ttyUSB0/tty/ttyUSB0/device", "-> ../../../ttyUSB0"},
    {"sys/class/tty/ttyUSB0", "-> ../../devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/ttyUSB0/tty/ttyUSB0"},
    {"dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0", "-> ../../ttyUSB0"},
    {"dev/serial/by-path/pci-0000:00:14.0-usb-0:2:1.0-port0", "-> ../../ttyUSB0"},
    {"dev/serial/by-path/pci-0000:00:14.0-usbv2-0:2:1.0-port0", "-> ../../ttyUSB0"},
    // A modem without a serial number or an interface name.
    {usbBus + "1-3", "idVendor=1546;idProduct=01a8;manufacturer=u-blox AG;product=u-blox GNSS receiver"},
    {usbBus + "1-3/1-3:1.0", "bInterfaceNumber=00"},
    {usbBus + "1-3/1-3:1.0/driver", "-> ../../../../../../bus/usb/drivers/cdc_acm"},
    {usbBus + "1-3/1-3:1.0/tty/ttyACM0/device", "-> ../../../1-3:1.0"},
    {"sys/class/tty/ttyACM0", "-> ../../devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/tty/ttyACM0"},
    {"dev/serial/by-id/usb-u-blox_AG_u-blox_GNSS_receiver-if00", "-> ../../ttyACM0"},
    {"dev/serial/by-path/pci-0000:00:14.0-usbv2-0:3:1.0", "-> ../../ttyACM0"},
    {"dev/serial/by-path/pci-0000:00:14.0-usb-0:3:1.0", "-> ../../ttyACM0"},
    // A modem with two ports, each on an interface of its own name.
    {usbBus + "1-4", "idVendor=1546;idProduct=1102;manufacturer=u-blox AG;product=LTE modem"},
    {usbBus + "1-4/1-4:1.0", "bInterfaceNumber=00;interface=AT commands"},
    {usbBus + "1-4/1-4:1.0/tty/ttyACM9/device", "-> ../../../1-4:1.0"},
    {"sys/class/tty/ttyACM9", "-> ../../devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.0/tty/ttyACM9"},
    {usbBus + "1-4/1-4:1.2", "bInterfaceNumber=02;interface=GNSS data"},
    {usbBus + "1-4/1-4:1.2/tty/ttyACM10/device", "-> ../../../1-4:1.2"},
    {"sys/class/tty/ttyACM10", "-> ../../devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.2/tty/ttyACM10"},
    // An adapter whose strings end in blanks.
    {usbBus + "1-5",
     "idVendor=067b;idProduct=2303;manufacturer=Prolific Technology Inc. ;product=USB-Serial Controller  "},
    {usbBus + "1-5/1-5:1.0", "bInterfaceNumber=00"},
    {usbBus + "1-5/1-5:1.0/ttyUSB10/tty/ttyUSB10/device", "-> ../../../ttyUSB10"},
    {"sys/class/tty/ttyUSB10", "-> ../../devices/pci0000:00/0000:00:14.0/usb1/1-5/1-5:1.0/ttyUSB10/tty/ttyUSB10"},
    // A UART, one reserved for a UART that is not there, and a device without hardware.
    {"sys/devices/pnp0/00:00/00:00:0/00:00:0.0/driver", "-> ../../../../../bus/serial-base/drivers/port"},
    {"sys/devices/pnp0/00:00/00:00:0/00:00:0.0/tty/ttyS0", "type=8"},
    {"sys/devices/pnp0/00:00/00:00:0/00:00:0.0/tty/ttyS0/device", "-> ../../../00:00:0.0"},
    {"sys/class/tty/ttyS0", "-> ../../devices/pnp0/00:00/00:00:0/00:00:0.0/tty/ttyS0"},
    {"sys/devices/platform/serial8250/tty/ttyS1", "type=0"},
    {"sys/devices/platform/serial8250/tty/ttyS1/device", "-> ../../../serial8250"},
    {"sys/class/tty/ttyS1", "-> ../../devices/platform/serial8250/tty/ttyS1"},
    {"sys/devices/virtual/tty/ptmx", "dev=5:2"},
    {"sys/class/tty/ptmx", "-> ../../devices/virtual/tty/ptmx"},
};

inline void buildSysfsTree(const std::filesystem::path& root)
{
    namespace fs = std::filesystem;
    for (const auto& [path, text] : sysfsMachine) {
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

} // namespace ovo_test

#endif
