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
    "its one line on standard error starts with FILE:LINE:.\n"
    "example of a script:\n"
    "  # the master file, then 16 bytes of the current file\n"
    "  apdu \"00 A4 00 0C 02 3F 00\"\n"
    "  apdu --log-level=1 \"00 B0 00 00 10\"\n";

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
    for (std::string text; in.readLine(text);) {
        ++number;
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
