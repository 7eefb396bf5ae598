// ovo: the library's own command-line tool, for engineers who work with card readers,
// serial devices and processes that talk through message channels.
#include "tool.h"

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
    out << "\nEvery subcommand takes --help, --log-level=N (1 traces the traffic) and\n"
           "--log-dir=DIR (a daily log file there). Exit status: 0 done, 1 failed, 2 usage.\n"
           "examples: ovo readers\n"
           "          ovo apdu '00 A4 00 0C 02 3F 00'\n"
           "          ovo serial --port='device=ttyUSB0;baud=9600' recv 4\n"
           "          ovo channel reader-events watch\n"
           "          ovo script personalise.ovo\n";
    return 0;
}

} // namespace

namespace ovo_tool {

int runCommandLine(const std::vector<std::string>& words)
{
    if (words.empty() || words[0] == "--help" || words[0] == "-h" || words[0] == "help")
        return words.empty() ? (usage(std::cerr), 2) : usage(std::cout);
    for (const Subcommand& subcommand : subcommands) {
        if (words[0] != subcommand.name)
            continue;
        try {
            return subcommand.run(std::vector<std::string>(words.begin() + 1, words.end()));
        } catch (const UsageError& error) {
            std::cerr << "ovo " << subcommand.name << ": " << error.what() << '\n';
            return 2;
        } catch (const std::exception& error) {
            std::cerr << "ovo " << subcommand.name << ": " << error.what() << '\n';
            return 1;
        }
    }
    std::cerr << "ovo: unknown subcommand '" << words[0] << "'; see ovo --help\n";
    return 2;
}

} // namespace ovo_tool

int main(int argc, char** argv)
{
    return ovo_tool::runCommandLine(std::vector<std::string>(argv + 1, argv + argc));
}
