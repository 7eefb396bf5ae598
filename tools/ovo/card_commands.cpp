// ovo readers, ovo apdu: the PC/SC readers and the cards in them.
#include "json.h"
#include "shown_text.h"
#include "tool.h"

#include <ovo/io/apdu.h>
#include <ovo/io/pcsc.h>
#include <ovo/io/reader_status.h>
#include <ovo/strings.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <iostream>
#include <thread>

namespace ovo_tool {
namespace {

const char readersHelp[] =
    "usage: ovo readers [--watch] [--json] [OPTIONS]\n"
    "Lists the PC/SC readers with the state of their cards and the ATRs, as the service\n"
    "reports them: a card that another program holds (exclusively or shared), a mute card\n"
    "(no answer to reset) and an unavailable reader show as such; no card is connected.\n"
    "A service that does not answer within 5 seconds ends the command with a failure.\n"
    "With --watch, first what is there, then one line per reader added or removed and\n"
    "card inserted or removed, with the time, until Ctrl-C. The watch outlives the\n"
    "service: when it stops, the watch reports its readers gone, says once that it waits,\n"
    "and reports what is there when the service is back.\n"
    "examples: ovo readers\n"
    "          ovo readers --watch --json\n";

const char apduHelp[] =
    "usage: ovo apdu [--reader=NAME] [OPTIONS] HEX...\n"
    "Sends each command unit in order to the card (the first reader without --reader)\n"
    "and prints the response and the meaning of its status word. Exit status 0 only when\n"
    "every response was a success: status word 90 xx, as the library's apdu::isSuccess()\n"
    "counts (61 xx, more data to get, is no success).\n"
    "examples: ovo apdu 00A4040C023F00\n"
    "          ovo apdu --reader='Virtual PCD 00 00' '00 A4 00 0C 02 3F 00' '00 B0 00 00 10'\n";

const std::chrono::seconds serviceBound(5);

// The readers as the service reports them. The look runs on a thread of its own, left
// behind when the service does not answer (stopped, stuck): the tool ends all the same.
std::vector<ovo::io::ReaderStatus> readers()
{
    std::packaged_task<std::vector<ovo::io::ReaderStatus>()> look(ovo::io::readerStatuses);
    std::future<std::vector<ovo::io::ReaderStatus>> answer = look.get_future();
    std::thread(std::move(look)).detach();
    if (answer.wait_for(serviceBound) != std::future_status::ready)
        throw Failure(ovo::format("%s did not answer within %lld seconds", pcscService,
                                  static_cast<long long>(serviceBound.count())));
    std::vector<ovo::io::ReaderStatus> statuses = answer.get();
    if (statuses.empty())
        throw Failure(ovo::format("%s knows no reader; plug one in", pcscService));
    return statuses;
}

ovo::io::ReaderStatus chooseReader(const std::string& wanted)
{
    const std::vector<ovo::io::ReaderStatus> statuses = readers();
    if (wanted.empty())
        return statuses.front();
    std::string known;
    for (const ovo::io::ReaderStatus& status : statuses) {
        if (status.reader == wanted)
            return status;
        known += (known.empty() ? "'" : ", '") + status.reader + "'";
    }
    throw Failure("no reader '" + wanted + "'; the readers are " + known);
}

// "card, ATR 3B ..., in use by another program (exclusive)", "no card", ...
std::string described(const ovo::io::ReaderStatus& status)
{
    if (status.unavailable)
        return "unavailable (the service cannot use it)";
    if (!status.cardPresent)
        return "no card";
    if (status.mute)
        return "card, mute (no answer to reset)";
    const char* use = status.exclusive ? ", in use by another program (exclusive)"
                      : status.inUse   ? ", in use by another program (shared)"
                                       : "";
    return "card, ATR " + hex(status.atr) + use;
}

std::string jsonObject(const ovo::io::ReaderStatus& status)
{
    const auto flag = [](bool on) { return on ? "true" : "false"; };
    return "{\"reader\":" + jsonString(status.reader) + ",\"card\":" + flag(status.cardPresent) +
           ",\"atr\":" + jsonString(hex(status.atr)) + ",\"exclusive\":" + flag(status.exclusive) +
           ",\"inUse\":" + flag(status.inUse) + ",\"mute\":" + flag(status.mute) +
           ",\"unavailable\":" + flag(status.unavailable) + "}";
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
    setUpLogging(line, "ovo.readers");
    if (watch)
        return watchReaders(json);
    std::string document = "[";
    for (const ovo::io::ReaderStatus& status : readers()) {
        if (json)
            document += std::string(document.size() > 1 ? ",\n " : "") + jsonObject(status);
        else
            std::cout << printable(status.reader) << ": " << described(status) << '\n';
    }
    if (json)
        std::cout << document << "]\n";
    return 0;
}

int apduCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string readerName;
    line.addText("reader", "NAME", "the reader's name (see ovo readers)", readerName);
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
    const ovo::io::ReaderStatus chosen = chooseReader(readerName);
    if (!chosen.cardPresent)
        throw Failure("no card in '" + chosen.reader + "'");
    ovo::io::pcsc reader(chosen.reader, log);
    reader.connect();
    bool allSucceeded = true;
    for (const Bytes& command : commands) {
        const ovo::io::apdu response =
            reader.exchange(ovo::io::apdu::fromBuffer(command.data(), static_cast<unsigned int>(command.size())));
        const Bytes bytes(response.raw(), response.raw() + response.size());
        std::cout << "-> " << hex(command) << "\n<- " << hex(bytes) << "  "
                  << ovo::format("%02X%02X", response.sw1(), response.sw2()) << ": "
                  << statusMeaning(response.sw1(), response.sw2()) << '\n';
        allSucceeded = allSucceeded && response.isSuccess();
    }
    reader.disconnect();
    if (!allSucceeded)
        throw Failure("a response was no success");
    return 0;
}

} // namespace ovo_tool
