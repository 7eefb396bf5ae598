// ovo readers, ovo apdu: the PC/SC readers and the cards in them.
#include "json.h"
#include "tool.h"

#include <ovo/io/apdu.h>
#include <ovo/io/card_monitor.h>
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/strings.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iostream>

namespace ovo_tool {
namespace {

const char readersHelp[] =
    "usage: ovo readers [--watch] [--json] [OPTIONS]\n"
    "Lists the PC/SC readers, whether a card is present, and its ATR. With --watch, first\n"
    "what is there, then one line per reader added or removed and card inserted or\n"
    "removed, with the time, until Ctrl-C.\n"
    "examples: ovo readers\n"
    "          ovo readers --watch --json\n";

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
        throw Failure(std::string("no PC/SC reader found (") + pcscServiceHint + ")");
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

// The local time now to the millisecond: "2026-11-23T18:30:00.123".
std::string timestampNow()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millisecond =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    const std::tm local = localTime(seconds);
    char text[24] = {};
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return ovo::format("%s.%03d", text, static_cast<int>(millisecond));
}

// One line an event, until Ctrl-C: "18:30:00.123 card inserted: READER, ATR 3B ...", or a
// JSON object with the whole time.
int watchReaders(bool json)
{
    static const char* const kinds[] = {"reader added", "reader removed", "card inserted", "card removed"};
    watchInterrupts();
    ovo::io::CardMonitor monitor;
    ovo::io::CardEvent event;
    while (!interrupted()) {
        if (!monitor.next(event, 200)) // short waits, so that Ctrl-C is seen soon
            continue;
        const std::string time = timestampNow();
        const bool inserted = event.kind == ovo::io::CardEvent::cardInserted;
        if (json)
            std::cout << "{\"time\":" << jsonString(time) << ",\"event\":" << jsonString(kinds[event.kind])
                      << ",\"reader\":" << jsonString(event.reader)
                      << (inserted ? ",\"atr\":" + jsonString(hex(event.atr)) : std::string()) << "}" << std::endl;
        else
            std::cout << time.substr(11) << ' ' << kinds[event.kind] << ": " << event.reader
                      << (inserted ? ", ATR " + hex(event.atr) : std::string()) << std::endl;
    }
    return 0;
}

} // namespace

int readersCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    bool watch = false, json = false;
    line.addFlag("watch", "show readers and cards as they come and go, until Ctrl-C", watch);
    line.addFlag("json", "for scripts: one JSON document, with --watch one JSON object a line", json);
    line.parse(args);
    if (line.printedHelp(readersHelp))
        return 0;
    line.expectNoWords("ovo readers");
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.readers");
    if (watch)
        return watchReaders(json);
    std::string document = "[";
    for (const std::string& name : readers()) {
        ovo::io::pcsc reader(name, log);
        Bytes atr;
        const bool card = reader.isCardPresented();
        if (card) {
            reader.connect();
            reader.cardStatus(atr);
            reader.disconnect();
        }
        if (json)
            document += std::string(document.size() > 1 ? ",\n " : "") + "{\"reader\":" + jsonString(name) +
                        ",\"card\":" + (card ? "true" : "false") + ",\"atr\":" + jsonString(hex(atr)) + "}";
        else
            std::cout << name << (card ? ": card, ATR " + hex(atr) : std::string(": no card")) << '\n';
    }
    if (json)
        std::cout << document << "]\n";
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
