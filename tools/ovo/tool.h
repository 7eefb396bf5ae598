// What the subcommands of the ovo tool share: logging, hex in and out, and the end of
// the loops that run until interrupted.
#ifndef OVO_TOOLS_OVO_TOOL_H
#define OVO_TOOLS_OVO_TOOL_H

#include "command_line.h"
#include "tool_platform.h"

#include <ovo/logger/logger.h>

#include <string>
#include <vector>

namespace ovo_tool {

using Bytes = std::vector<unsigned char>;

// Each subcommand takes the words after its name and gives the exit status.
int readersCommand(const std::vector<std::string>& args);
int portsCommand(const std::vector<std::string>& args);
int apduCommand(const std::vector<std::string>& args);
int serialCommand(const std::vector<std::string>& args);
int channelCommand(const std::vector<std::string>& args);
int objectsCommand(const std::vector<std::string>& args);
int hexdumpCommand(const std::vector<std::string>& args);
int scriptCommand(const std::vector<std::string>& args);
int demoCommand(const std::vector<std::string>& args);
// ovo readers --watch, with --json or not; ends with Ctrl-C only.
int watchReaders(bool json);
// One command line of the tool, the subcommand first; gives its exit status. A failure
// is one line on standard error, after the location of the line when it has one.
int runCommandLine(const std::vector<std::string>& words, const std::string& location = std::string());

// The logger of the subcommand, at the level of its line: to the console (standard error,
// ConsoleFormatter) when --log-level came, to a daily file (SimpleFormatter) in the
// directory of --log-dir. Throws Failure when that directory cannot take a log.
ovo::logger::ILogger& setUpLogging(const CommandLine& line, const std::string& name);
// The path of today's log file of the directory (empty without one).
std::string logFilePath(const std::string& directory);

// Hex digits, with or without blanks between bytes: "00 A4 04 00" or "00a40400".
Bytes parseHex(const std::string& text);
// "00 A4 04 00", as the library's traces show bytes.
std::string hex(const Bytes& bytes);

// The library's dump of the bytes, 16 a line, each line after its offset in hex.
void printDump(const unsigned char* data, std::size_t size, unsigned long long offset);

// The short meaning of a status word of ISO/IEC 7816-4.
std::string statusMeaning(unsigned char sw1, unsigned char sw2);

} // namespace ovo_tool

#endif
