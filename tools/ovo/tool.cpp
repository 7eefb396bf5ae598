#include "tool.h"

#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>
#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>

namespace ovo_tool {

ovo::logger::ILogger& setUpLogging(const CommandLine& line, const std::string& name)
{
    using namespace ovo::logger;
    const std::string& directory = line.logDirectory();
    // A directory that cannot take the log would lose it silently.
    const std::string reason = directory.empty() ? std::string() : unfitForLogs(directory);
    if (!reason.empty())
        throw Failure("cannot log into '" + directory + "': " + reason);
    auto both = std::make_shared<SplitLogChannel>();
    if (line.logLevelGiven()) {
        // Without --log-level the console shows only what the tool says: a failure the
        // library logs before it throws is told once, by the tool.
        auto console = std::make_shared<ConsoleLogChannel>();
        console->setFormatter(std::make_shared<ConsoleFormatter>());
        both->add(console);
    }
    if (!directory.empty()) {
        auto file = std::make_shared<FileLogChannel>(directory, "ovo");
        file->setFormatter(std::make_shared<SimpleFormatter>());
        file->setProperty(FileLogChannel::PropertyRollingHeader, "# ovo tool log\n");
        both->add(file);
    }
    // Set on every call: each line of a script has its own options.
    ILogger& logger = get(name);
    logger.setChannel(both);
    logger.setLevel(line.logLevel());
    return logger;
}

std::string logFilePath(const std::string& directory)
{
    if (directory.empty())
        return std::string();
    const std::tm local = localTime(std::time(nullptr));
    const std::string name =
        ovo::format("%04d-%02d-%02d-ovo.log", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
    return (std::filesystem::path(directory) / name).string(); // with the system's separator
}

Bytes parseHex(const std::string& text)
{
    std::string digits;
    for (char c : text)
        if (c != ' ' && c != '\t' && c != ':')
            digits += c;
    if (digits.empty() || digits.size() % 2 != 0)
        throw UsageError("bad hex '" + text + "': two digits a byte");
    try {
        return ovo::NumberFormatter::string2buffer(digits);
    } catch (const std::exception& error) {
        throw UsageError("bad hex '" + text + "': " + error.what());
    }
}

std::string hex(const Bytes& bytes)
{
    std::string text = ovo::NumberFormatter::buffer2stringU2(bytes.data(), static_cast<unsigned int>(bytes.size()));
    if (!text.empty())
        text.pop_back(); // the blank after the last byte
    return text;
}

void printDump(const unsigned char* data, std::size_t size, unsigned long long offset)
{
    if (size == 0)
        return;
    const std::string dump = ovo::NumberFormatter::formatBuffer(data, static_cast<unsigned int>(size), 16);
    for (const std::string& line : ovo::SplitString(dump, "\n", false)) {
        std::cout << ovo::format("%08llX  ", offset) << line << '\n';
        offset += 16;
    }
}

std::string statusMeaning(unsigned char sw1, unsigned char sw2)
{
    switch (sw1) {
    case 0x90:
        return sw2 == 0 ? "success" : "success (proprietary)";
    case 0x61:
        return ovo::format("more data: %u bytes to get with GET RESPONSE", sw2 == 0 ? 256u : sw2);
    case 0x62:
        return sw2 == 0x82 ? "warning: end of file reached early" : "warning: memory unchanged";
    case 0x63:
        return (sw2 & 0xF0) == 0xC0 ? ovo::format("warning: %u tries left", sw2 & 0x0F) : "warning: memory changed";
    case 0x64:
        return "execution error: memory unchanged";
    case 0x65:
        return "execution error: memory changed";
    case 0x67:
        return "wrong length";
    case 0x68:
        return "function in CLA not supported";
    case 0x69:
        switch (sw2) {
        case 0x82: return "security status not satisfied";
        case 0x83: return "authentication method blocked";
        case 0x85: return "conditions of use not satisfied";
        case 0x86: return "command not allowed (no current EF)";
        default: return "command not allowed";
        }
    case 0x6A:
        switch (sw2) {
        case 0x80: return "incorrect parameters in the data field";
        case 0x81: return "function not supported";
        case 0x82: return "file or application not found";
        case 0x83: return "record not found";
        case 0x84: return "not enough memory space in the file";
        case 0x86: return "incorrect parameters P1-P2";
        case 0x88: return "referenced data not found";
        default: return "wrong parameters P1-P2";
        }
    case 0x6B:
        return "wrong parameters P1-P2";
    case 0x6C:
        return ovo::format("wrong Le: %u bytes available", sw2 == 0 ? 256u : sw2);
    case 0x6D:
        return "instruction not supported";
    case 0x6E:
        return "class not supported";
    case 0x6F:
        return "no precise diagnosis";
    default:
        return "unknown status";
    }
}

} // namespace ovo_tool
