// The subcommands of the ovo tool, the general help, and one command line run with its
// failure told in one line.
#include "shown_text.h"
#include "system_words.h"
#include "tool.h"

#include <ovo/version.h>

#include <iostream>

namespace {

struct Subcommand {
    const char* name;
    int (*run)(const std::vector<std::string>&);
    const char* summary;
};

const Subcommand subcommands[] = {
    {"readers", ovo_tool::readersCommand, "the PC/SC readers, their cards and ATRs"},
    {"apdu", ovo_tool::apduCommand, "send command units to a card and read the status words"},
    {"ports", ovo_tool::portsCommand, "the serial ports, their USB identity and stable paths"},
    {"serial", ovo_tool::serialCommand, "send, receive or monitor bytes on a serial device"},
    {"channel", ovo_tool::channelCommand, "send, receive, watch or count messages of a channel"},
    {"objects", ovo_tool::objectsCommand, "list this user's named objects, or clean the stale ones"},
    {"hexdump", ovo_tool::hexdumpCommand, "show a file or standard input as hex and text"},
    {"script", ovo_tool::scriptCommand, "run ovo command lines from a file or standard input"},
    {"demo", ovo_tool::demoCommand, "run a card command, a channel and a serial exchange for real"},
};

int usage(std::ostream& out)
{
    out << "usage: ovo SUBCOMMAND [OPTIONS] [WORDS...]\n\nsubcommands:\n";
    for (const Subcommand& subcommand : subcommands)
        out << "  " << subcommand.name << std::string(10 - std::string(subcommand.name).size(), ' ')
            << subcommand.summary << '\n';
    out << "\novo --version tells the tool's version and that of the library it runs with.\n"
           "Every subcommand takes --help, --log-level=N (the log on standard error: 0 what\n"
           "happens, 1 the traffic too) and --log-dir=DIR (a daily log file there). An option's\n"
           "value follows '=' or comes as the next word (--port=SETTINGS, --port SETTINGS).\n"
           "Exit status: 0 done, 1 failed, 2 a mistake in the words; a failure says why in one\n"
           "line.\n"
           "examples: ovo readers\n"
           "          ovo apdu '00 A4 00 0C 02 3F 00'\n"
           "          ovo serial --port='device=ttyUSB0;baud=9600' recv 4\n"
           "          ovo channel reader-events watch\n"
           "          ovo script personalise.ovo\n";
    return 0;
}

} // namespace

namespace ovo_tool {

int runCommandLine(const std::vector<std::string>& words, const std::string& location)
{
    if (words.empty() || words[0] == "--help" || words[0] == "-h" || words[0] == "help")
        return words.empty() ? (usage(std::cerr), 2) : usage(std::cout);
    // The headers the tool was built with and the library that runs: they differ after a
    // mixed install.
    if (words[0] == "--version") {
        std::cout << "ovo " << OVO_VERSION_STRING << ", library " << ovo::libraryVersion() << '\n';
        return 0;
    }
    for (const Subcommand& subcommand : subcommands) {
        if (words[0] != subcommand.name)
            continue;
        const std::string prefix = location + "ovo " + subcommand.name + ": ";
        try {
            return subcommand.run(std::vector<std::string>(words.begin() + 1, words.end()));
        } catch (const UsageError& error) {
            std::cerr << printable(prefix + error.what()) << '\n';
            return 2;
        } catch (const std::exception& error) {
            const std::string pcsc = pcscWords(error.what()); // one wording of the service's codes
            std::cerr << printable(prefix + (pcsc.empty() ? error.what() : pcsc)) << '\n';
            return 1;
        }
    }
    std::cerr << printable(location + "ovo: unknown subcommand '" + words[0] + "'; see ovo --help") << '\n';
    return 2;
}

} // namespace ovo_tool
