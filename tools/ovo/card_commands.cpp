// ovo readers, ovo apdu: the PC/SC readers and the cards in them.
#include "tool.h"

#include <ovo/io/apdu.h>
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/strings.h>

#include <algorithm>
#include <iostream>

namespace ovo_tool {
namespace {

const char readersHelp[] =
    "usage: ovo readers [OPTIONS]\n"
    "Lists the PC/SC readers, whether a card is present, and its ATR.\n"
    "example: ovo readers\n";

const char apduHelp[] =
    "usage: ovo apdu [--reader=NAME] [OPTIONS] HEX...\n"
    "Sends each command unit in order to the card (the first reader without --reader)\n"
    "and prints the response and the meaning of its status word. Exit status 0 only when\n"
    "every response was a success (90 00 or 61 xx).\n"
    "examples: ovo apdu 00A4040C023F00\n"
    "          ovo apdu --reader='Virtual PCD 00 00' '00 A4 00 0C 02 3F 00' '00 B0 00 00 10'\n";

std::vector<std::string> readers()
{
    std::vector<std::string> names = ovo::io::enumeratePCSCDevices();
    if (names.empty())
        throw Failure("no PC/SC reader found (is the PC/SC service, pcscd, running?)");
    return names;
}

std::string chooseReader(const std::string& wanted)
{
    const std::vector<std::string> names = readers();
    if (wanted.empty())
        return names.front();
    if (std::find(names.begin(), names.end(), wanted) != names.end())
        return wanted;
    std::string known;
    for (const std::string& name : names)
        known += (known.empty() ? "'" : ", '") + name + "'";
    throw Failure("no reader '" + wanted + "'; the readers are " + known);
}

bool successful(const ovo::io::apdu& response)
{
    return response.isSuccess() || response.sw1() == 0x61;
}

} // namespace

int readersCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    line.parse(args);
    if (line.printedHelp(readersHelp))
        return 0;
    line.expectNoWords("ovo readers");
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.readers");
    for (const std::string& name : readers()) {
        ovo::io::pcsc reader(name, log);
        if (!reader.isCardPresented()) {
            std::cout << name << ": no card\n";
            continue;
        }
        Bytes atr;
        reader.connect();
        reader.cardStatus(atr);
        reader.disconnect();
        std::cout << name << ": card, ATR " << hex(atr) << '\n';
    }
    return 0;
}

int apduCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string readerName;
    line.addText("reader", "the reader's name (see ovo readers)", readerName);
    line.parse(args);
    if (line.printedHelp(apduHelp))
        return 0;
    if (line.words().empty())
        throw UsageError("ovo apdu needs at least one command unit in hex; see ovo apdu --help");
    std::vector<Bytes> commands;
    for (const std::string& word : line.words()) {
        commands.push_back(parseHex(word));
        if (commands.back().size() < 4)
            throw UsageError("a command unit has at least 4 bytes (CLA INS P1 P2): '" + word + "'");
    }
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.apdu");
    const std::string name = chooseReader(readerName);
    ovo::io::pcsc reader(name, log);
    if (!reader.isCardPresented())
        throw Failure("no card in '" + name + "'");
    reader.connect();
    bool allSucceeded = true;
    for (const Bytes& command : commands) {
        const ovo::io::apdu response =
            reader.exchange(ovo::io::apdu::fromBuffer(command.data(), static_cast<unsigned int>(command.size())));
        const Bytes bytes(response.raw(), response.raw() + response.size());
        std::cout << "-> " << hex(command) << "\n<- " << hex(bytes) << "  "
                  << ovo::format("%02X%02X", response.sw1(), response.sw2()) << ": "
                  << statusMeaning(response.sw1(), response.sw2()) << '\n';
        allSucceeded = allSucceeded && successful(response);
    }
    reader.disconnect();
    if (!allSucceeded)
        throw Failure("a response was no success");
    return 0;
}

} // namespace ovo_tool
