// The words of one subcommand: its options (bound through the library's options
// processor) and its other words, in order. Every subcommand knows --help, --log-level=N
// and --log-dir=DIR.
#ifndef OVO_TOOLS_OVO_COMMAND_LINE_H
#define OVO_TOOLS_OVO_COMMAND_LINE_H

#include <ovo/options/options_processor.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ovo_tool {

// A mistake in the words: a one-line message, exit status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Something that did not work: a one-line message, exit status 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The decimal number of the text (digits, a minus sign before them at most), from min to
// max; UsageError "WHAT is a number from MIN to MAX, not 'TEXT'" otherwise.
long long number(const std::string& what, const std::string& text, long long min, long long max);

class CommandLine {
public:
    CommandLine();

    // --NAME=VALUE (or --NAME VALUE); `placeholder` says what VALUE is (DIR, SETTINGS, ...),
    // `given` tells whether it came.
    void addText(const std::string& name, const std::string& placeholder, const std::string& description,
                 std::string& value, bool* given = nullptr);
    // --NAME alone: sets the flag.
    void addFlag(const std::string& name, const std::string& description, bool& value);
    // --NAME=VALUE, a decimal number from min to max.
    void addNumber(const std::string& name, const std::string& placeholder, const std::string& description, long& value,
                   long min, long max, bool* given = nullptr);
    // --NAME=VALUE for the tool's own use between its processes: not in the help.
    void addInternal(const std::string& name, std::string& value);

    // Binds the options; the other words stay, in order. Throws UsageError for a word
    // that looks like an option and is none, or a value that does not fit.
    void parse(const std::vector<std::string>& words);

    const std::vector<std::string>& words() const { return words_; }
    // With --help given: prints the help and gives true. The help is "usage: ...", lines
    // of what the subcommand does (prose, and "  ITEM  meaning" lines, a deeper indent
    // going on with the meaning), then "examples: " and one command a line; the options
    // show before the examples. The manual page is made from the same text.
    bool printedHelp(const char* help) const;
    // Throws UsageError when any word is left.
    void expectNoWords(const std::string& subcommand) const;
    int logLevel() const { return static_cast<int>(logLevel_); }
    // Whether --log-level came: the console shows the log only when asked for.
    bool logLevelGiven() const { return logLevelGiven_; }
    const std::string& logDirectory() const { return logDirectory_; }

private:
    void add(const std::string& name, const std::string& placeholder, const std::string& description,
             ovo::ProgramOptions::IOptionValue* value);

    ovo::ProgramOptions::OptionsProcessor processor_;
    std::vector<std::unique_ptr<ovo::ProgramOptions::IOptionValue>> values_;
    std::vector<std::string> helpLines_;
    std::map<std::string, std::string> placeholders_; // of the options that take a value, by "--NAME"
    std::vector<std::string> words_;
    bool help_ = false;
    long logLevel_ = 0;
    bool logLevelGiven_ = false;
    std::string logDirectory_;
};

} // namespace ovo_tool

#endif
