// ovo ports: the serial ports, what is behind each, and the path that finds it again.
#include "json.h"
#include "shown_text.h"
#include "tool.h"

#include <ovo/io/serial_ports.h>

#include <algorithm>
#include <iostream>

namespace ovo_tool {
namespace {

const char portsHelp[] =
    "usage: ovo ports [--json] [OPTIONS]\n"
    "Lists the serial ports: name, description, USB vendor:product, serial number and the\n"
    "stable path, which names the same adapter after re-plugging and can stand as the\n"
    "device of a serial setting (ovo serial --port=device=PATH). A device with several\n"
    "ports describes each as \"product - interface\". Control characters and bytes that\n"
    "are no UTF-8 show as \\xHH in the table; in JSON a byte that is no UTF-8 becomes\n"
    "U+FFFD.\n"
    "examples: ovo ports\n"
    "          ovo ports --json\n";

std::string usbIds(const ovo::io::SerialPortInfo& port)
{
    return port.vendorId.empty() ? std::string() : port.vendorId + ":" + port.productId;
}

std::string firstStablePath(const ovo::io::SerialPortInfo& port)
{
    return port.stablePaths.empty() ? std::string() : port.stablePaths.front();
}

void printTable(const std::vector<ovo::io::SerialPortInfo>& ports)
{
    std::vector<std::vector<std::string>> rows{{"NAME", "DESCRIPTION", "VID:PID", "SERIAL", "STABLE PATH"}};
    for (const ovo::io::SerialPortInfo& port : ports)
        rows.push_back({printable(port.deviceName), printable(port.description), printable(usbIds(port)),
                        printable(port.serialNumber), printable(firstStablePath(port))});
    std::vector<std::size_t> widths(rows[0].size(), 0);
    for (const auto& row : rows)
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], columns(row[column]));
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column)
            line += row[column] + std::string(widths[column] + 2 - columns(row[column]), ' ');
        std::cout << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
    }
}

void printJson(const std::vector<ovo::io::SerialPortInfo>& ports)
{
    std::string document = "[";
    for (const ovo::io::SerialPortInfo& port : ports) {
        document += document.size() > 1 ? ",\n " : "";
        document += "{\"name\":" + jsonString(port.deviceName) + ",\"description\":" + jsonString(port.description) +
                    ",\"vendorId\":" + jsonString(port.vendorId) + ",\"productId\":" + jsonString(port.productId) +
                    ",\"serialNumber\":" + jsonString(port.serialNumber) +
                    ",\"manufacturer\":" + jsonString(port.manufacturer) + ",\"product\":" + jsonString(port.product) +
                    ",\"interfaceNumber\":" + jsonString(port.interfaceNumber) +
                    ",\"interfaceName\":" + jsonString(port.interfaceName) +
                    ",\"stablePaths\":" + jsonArray(port.stablePaths) + "}";
    }
    std::cout << document << "]\n";
}

} // namespace

int portsCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    bool json = false;
    line.addFlag("json", "one JSON document: an array of the ports", json);
    line.parse(args);
    if (line.printedHelp(portsHelp))
        return 0;
    line.expectNoWords("ovo ports");
    setUpLogging(line, "ovo.ports");
    const std::vector<ovo::io::SerialPortInfo> ports = ovo::io::listSerialPorts();
    if (json)
        printJson(ports);
    else
        printTable(ports);
    return 0;
}

} // namespace ovo_tool
