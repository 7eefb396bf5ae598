// ovo serial: send to a serial device, receive from it, or watch its traffic.
#include "tool.h"

#include <ovo/io/serial_config.h>
#include <ovo/io/serial_io.h>
#include <ovo/number_parser.h>

#include <iostream>

namespace ovo_tool {
namespace {

const char serialHelp[] =
    "usage: ovo serial --port=SETTINGS [--timeout=MS] [OPTIONS] send HEX | recv N | monitor\n"
    "SETTINGS is the serial configuration's text form, e.g. \"device=ttyUSB0;baud=9600;data=8;\n"
    "parity=none;stop=1\" (device: a name under /dev, or an absolute path).\n"
    "  send HEX   sends the bytes\n"
    "  recv N     waits up to the time-out (1000 ms) for N bytes and prints them; exit status\n"
    "             1 when fewer came\n"
    "  monitor    prints what arrives as a dump until interrupted (Ctrl-C)\n"
    "examples: ovo serial --port='device=ttyUSB0;baud=115200' send '02 41 03'\n"
    "          ovo serial --port='device=/dev/pts/3' --timeout=500 recv 3\n";

} // namespace

int serialCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string port;
    long timeout = 1000;
    line.addText("port", "the port's settings (device=...;baud=...;...)", port);
    line.addNumber("timeout", "milliseconds a transfer may take (default 1000)", timeout);
    line.parse(args);
    if (line.printedHelp(serialHelp))
        return 0;
    const std::vector<std::string>& words = line.words();
    const std::string action = words.empty() ? std::string() : words[0];
    const bool known = (action == "send" || action == "recv") ? words.size() == 2 : action == "monitor" && words.size() == 1;
    if (!known)
        throw UsageError("ovo serial needs send HEX, recv N or monitor; see ovo serial --help");
    if (timeout < 0)
        throw UsageError("--timeout takes milliseconds, 0 or more");
    ovo::io::SerialConfig config;
    try {
        config = ovo::io::SerialConfig::fromString(port);
    } catch (const std::exception& error) {
        throw UsageError("bad --port settings '" + port + "': " + error.what());
    }
    if (config.deviceName().empty())
        throw UsageError("--port needs device=NAME; see ovo serial --help");
    const unsigned int limit = static_cast<unsigned int>(timeout);
    // monitor: whatever came within 100 ms of quiet; the others: the time-out as a total.
    config.setCommTimeouts(action == "monitor" ? ovo::io::SerialTimeouts{50, 100, 0, limit, 0}
                                               : ovo::io::SerialTimeouts{0, limit, 0, limit, 0});
    config.setBuffersSize({4096, 4096});
    Bytes bytes = action == "send" ? parseHex(words[1]) : Bytes();
    unsigned int wanted = 0;
    if (action == "recv") {
        try {
            wanted = ovo::NumberParser::parseUInt32(words[1]);
        } catch (const std::exception&) {
            throw UsageError("recv takes a number of bytes, not '" + words[1] + "'");
        }
    }
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.serial");
    std::unique_ptr<ovo::io::SerialIO> device;
    try {
        device.reset(new ovo::io::SerialIO(config, log));
    } catch (const std::exception& error) {
        throw Failure(error.what());
    }
    if (action == "send") {
        const unsigned int sent = device->send(bytes.data(), static_cast<unsigned int>(bytes.size()));
        std::cout << "sent " << sent << " of " << bytes.size() << " bytes\n";
        return sent == bytes.size() ? 0 : 1;
    }
    if (action == "recv") {
        bytes.resize(wanted);
        bytes.resize(device->recv(bytes.data(), wanted));
        std::cout << (bytes.empty() ? std::string("(nothing)") : hex(bytes)) << '\n';
        if (bytes.size() != wanted)
            std::cerr << "ovo: received " << bytes.size() << " of " << wanted << " bytes\n";
        return bytes.size() == wanted ? 0 : 1;
    }
    watchInterrupts();
    unsigned long long offset = 0;
    Bytes chunk(256);
    while (!interrupted()) {
        const unsigned int count = device->recv(chunk.data(), static_cast<unsigned int>(chunk.size()));
        if (count == 0)
            continue;
        printDump(chunk.data(), count, offset);
        offset += count;
        std::cout.flush();
    }
    return 0;
}

} // namespace ovo_tool
