// The words of one subcommand: its options (bound through the library's options
// processor) and its other words, in order. Every subcommand knows --help, --log-level=N
// and --log-dir=DIR.
#ifndef OVO_TOOLS_OVO_COMMAND_LINE_H
#define OVO_TOOLS_OVO_COMMAND_LINE_H

#include <ovo/options/options_processor.h>

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

// The decimal number of the text, from min to max; UsageError "WHAT is a number from MIN
// to MAX, not 'TEXT'" otherwise.
long long number(const std::string& what, const std::string& text, long long min, long long max);

class CommandLine {
public:
    CommandLine();

    // --NAME=TEXT; `given` tells whether it came.
    void addText(const std::string& name, const std::string& description, std::string& value, bool* given = nullptr);
    // --NAME alone: sets the flag.
    void addFlag(const std::string& name, const std::string& description, bool& value);
    // --NAME=N, a decimal number from min to max.
    void addNumber(const std::string& name, const std::string& description, long& value, long min, long max,
                   bool* given = nullptr);

    // Binds the options; the other words stay, in order. Throws UsageError for a word
    // that looks like an option and is none, or a value that does not fit.
    void parse(const std::vector<std::string>& words);

    const std::vector<std::string>& words() const { return words_; }
    // With --help given: prints the usage text and the options, and gives true.
    bool printedHelp(const char* usage) const;
    // Throws UsageError when any word is left.
    void expectNoWords(const std::string& subcommand) const;
    int logLevel() const { return static_cast<int>(logLevel_); }
    // Whether --log-level came: the console shows the log only when asked for.
    bool logLevelGiven() const { return logLevelGiven_; }
    const std::string& logDirectory() const { return logDirectory_; }
    // "  --name=VALUE  description" lines.
    std::string optionsHelp() const;

private:
    ovo::ProgramOptions::OptionsProcessor processor_;
    std::vector<std::unique_ptr<ovo::ProgramOptions::IOptionValue>> values_;
    std::vector<std::string> helpLines_;
    std::vector<std::string> words_;
    bool help_ = false;
    long logLevel_ = 0;
    bool logLevelGiven_ = false;
    std::string logDirectory_;
};

} // namespace ovo_tool

#endif
