// ovo serial: send to a serial device, receive from it, or watch its traffic.
#include "bounded_port.h"
#include "system_words.h"
#include "tool.h"

#include <ovo/io/serial_config.h>
#include <ovo/io/serial_io.h>
#include <ovo/strings.h>

#include <chrono>
#include <iostream>

namespace ovo_tool {
namespace {

const char serialHelp[] =
    "usage: ovo serial --port=SETTINGS [--timeout=MS] [OPTIONS] send HEX | recv N | monitor\n"
    "SETTINGS is the serial configuration's text form, for example\n"
    "\"device=ttyUSB0;baud=9600;data=8;parity=none;stop=1\" (device: a name under /dev, or\n"
    "an absolute path; on Windows a port such as COM7; data: 5 to 8; parity: none, even\n"
    "or odd; stop: 1, 1.5 or 2; flow: off, software or hardware).\n"
    "  send HEX   sends the bytes\n"
    "  recv N     waits up to the time-out for N bytes and prints them; exit status 1 when\n"
    "             fewer came\n"
    "  monitor    prints what arrives as a dump until interrupted (Ctrl-C)\n"
    "--timeout bounds the whole of send and recv; --timeout=0 moves only what moves at once.\n"
    "examples: ovo serial --port='device=ttyUSB0;baud=115200' send '02 41 03'\n"
    "          ovo serial --port='device=/dev/pts/3' --timeout=500 recv 3\n";

const unsigned int quietMs = 100;

// The configuration of the text form. A setting that it does not take (a key it does not
// know, a word none of its values) would be dropped silently: a UsageError here.
ovo::io::SerialConfig portSettings(const std::string& text)
{
    ovo::io::SerialConfig config;
    try {
        config = ovo::io::SerialConfig::fromString(text);
    } catch (const std::exception&) { // the one failure of the form: a number that is none
        throw UsageError("bad --port settings '" + text + "': baud and data take decimal numbers");
    }
    const std::string taken = ";" + config.toString();
    for (const std::string& setting : ovo::SplitString(text, ";", false))
        if (!setting.empty() && taken.find(";" + setting.substr(0, setting.find('=')) + "=") == std::string::npos)
            throw UsageError("bad --port setting '" + setting + "'; see ovo serial --help");
    return config;
}

// The open device, or a Failure that says what to do about it.
std::unique_ptr<ovo::io::SerialIO> openDevice(const ovo::io::SerialConfig& config, ovo::logger::ILogger& log)
{
    try {
        return std::unique_ptr<ovo::io::SerialIO>(new ovo::io::SerialIO(config, log));
    } catch (const std::exception& error) {
        const std::string path = serialDevicePath(config.deviceName());
        const unsigned long code = errorCode(error.what());
        if (std::string(error.what()).rfind("::GetCommState", 0) == 0)
            throw Failure(path + " is not a serial device (" + systemWords(code) + ")");
        if (code == 2 || code == 3) // the file or the path not found
            throw Failure("no such serial device: " + path);
        throw Failure("cannot open " + path + ": " + systemWords(code));
    }
}

} // namespace

int serialCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string port;
    long timeout = 1000;
    line.addText("port", "SETTINGS", "the port's settings (device=...;baud=...;...)", port);
    line.addNumber("timeout", "MS", "milliseconds the whole command may take (default 1000; 0: at once)", timeout, 0,
                   0x7FFFFFFF);
    line.parse(args);
    if (line.printedHelp(serialHelp))
        return 0;
    const std::vector<std::string>& words = line.words();
    const std::string action = words.empty() ? std::string() : words[0];
    const bool known = (action == "send" || action == "recv") ? words.size() == 2 : action == "monitor" && words.size() == 1;
    if (!known)
        throw UsageError("ovo serial needs send HEX, recv N or monitor; see ovo serial --help");
    ovo::io::SerialConfig config = portSettings(port);
    if (config.deviceName().empty())
        throw UsageError("--port needs device=NAME; see ovo serial --help");
    // monitor: whatever came within 100 ms of quiet; send and recv set their own.
    config.setCommTimeouts({50, quietMs, 0, 1, 0});
    config.setBuffersSize({4096, 4096});
    const Bytes bytes = action == "send" ? parseHex(words[1]) : Bytes();
    const unsigned long long wanted = action == "recv" ? number("the count of recv", words[1], 1, 0xFFFFFFFF) : 0;
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.serial");
    const std::unique_ptr<ovo::io::SerialIO> device = openDevice(config, log);
    BoundedPort bounded(*device, std::chrono::milliseconds(timeout));
    if (action == "send") {
        const std::size_t sent = bounded.send(bytes.data(), bytes.size());
        std::cout << "sent " << sent << " of " << bytes.size() << " bytes\n";
        if (sent != bytes.size())
            throw Failure("the device took " + std::to_string(sent) + " of " + std::to_string(bytes.size()) + " bytes");
        return 0;
    }
    if (action == "recv") {
        const char* separator = "";
        const unsigned long long received = bounded.receive(wanted, [&](const unsigned char* data, std::size_t size) {
            std::cout << separator << hex(Bytes(data, data + size));
            separator = " ";
        });
        std::cout << (received == 0 ? "(nothing)\n" : "\n");
        if (received != wanted)
            throw Failure(ovo::format("received %llu of %llu bytes", received, wanted));
        return 0;
    }
    watchInterrupts();
    unsigned long long offset = 0;
    Bytes chunk(256);
    while (!interrupted()) {
        const auto start = std::chrono::steady_clock::now();
        const unsigned int count = device->recv(chunk.data(), static_cast<unsigned int>(chunk.size()));
        // Nothing, before the quiet time passed: the read failed (unplugged, or the peer closed).
        if (count == 0 && std::chrono::steady_clock::now() - start < std::chrono::milliseconds(quietMs / 2))
            throw Failure(serialDevicePath(config.deviceName()) + " went away");
        if (count == 0)
            continue;
        printDump(chunk.data(), count, offset);
        offset += count;
        std::cout.flush();
    }
    return 0;
}

} // namespace ovo_tool
