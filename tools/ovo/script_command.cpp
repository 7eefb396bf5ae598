// ovo script: command lines of the tool from a file or standard input, one a line.
#include "input_file.h"
#include "tool.h"

#include <ovo/strings.h>

#include <algorithm>

namespace ovo_tool {
namespace {

const char scriptHelp[] =
    "usage: ovo script [OPTIONS] [FILE]\n"
    "Runs the ovo command lines of FILE (standard input without one, or with -) in order,\n"
    "one a line, without the word ovo. Blank lines and lines that start with # are\n"
    "skipped. Words are separated by blanks; a word that starts with a double quote runs\n"
    "to the next one. The first line that fails ends the script with its exit status;\n"
    "its one line on standard error starts with FILE:LINE:. A line is at most 16777216\n"
    "bytes (16 MiB) long and holds no NUL byte; a script that breaks either ends with\n"
    "status 2.\n"
    "examples: ovo script personalise.ovo\n"
    "          printf 'apdu \"00 A4 00 0C 02 3F 00\"\\napdu \"00 B0 00 00 10\"\\n' | ovo script\n";

const std::size_t longestLine = 16 * 1024 * 1024;

} // namespace

int scriptCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    line.parse(args);
    if (line.printedHelp(scriptHelp))
        return 0;
    if (line.words().size() > 1)
        throw UsageError("ovo script takes one file at most; see ovo script --help");
    InputFile in(line.words().empty() ? "-" : line.words()[0]);
    int number = 0;
    for (std::string text; in.readLine(text, longestLine);) {
        ++number;
        if (text.size() > longestLine)
            throw UsageError(
                ovo::format("line %d is longer than %llu bytes", number, static_cast<unsigned long long>(longestLine)));
        const std::size_t zero = text.find('\0');
        if (zero != std::string::npos)
            throw UsageError(ovo::format("line %d holds a NUL byte (column %llu); no word of ovo can", number,
                                         static_cast<unsigned long long>(zero + 1)));
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        std::vector<std::string> words = ovo::SplitCommandLine(text);
        words.erase(std::remove(words.begin(), words.end(), std::string()), words.end()); // runs of blanks
        if (words.empty() || words[0][0] == '#')
            continue;
        if (words[0] == "script")
            throw UsageError(ovo::format("line %d: a script does not run scripts", number));
        // The failing line says what went wrong itself, behind where it stands.
        const int status = runCommandLine(words, ovo::format("%s:%d: ", in.name().c_str(), number));
        if (status != 0)
            return status;
    }
    return 0;
}

} // namespace ovo_tool
