#include "command_line.h"

#include <ovo/number_parser.h>
#include <ovo/strings.h>

#include <iostream>

namespace ovo_tool {
namespace {

class TextValue : public ovo::ProgramOptions::IOptionValue {
public:
    TextValue(std::string& value, bool* given) : value_(value), given_(given) {}
    bool setValue(const std::string& text) override
    {
        value_ = text;
        if (given_ != nullptr)
            *given_ = true;
        return true;
    }

private:
    std::string& value_;
    bool* given_;
};

class NumberValue : public ovo::ProgramOptions::IOptionValue {
public:
    NumberValue(std::string name, long& value, long min, long max, bool* given)
        : name_(std::move(name)), value_(value), min_(min), max_(max), given_(given)
    {
    }
    bool setValue(const std::string& text) override
    {
        value_ = static_cast<long>(number("--" + name_, text, min_, max_));
        if (given_ != nullptr)
            *given_ = true;
        return true;
    }

private:
    std::string name_;
    long& value_;
    long min_;
    long max_;
    bool* given_;
};

class FlagValue : public ovo::ProgramOptions::IOptionValue {
public:
    explicit FlagValue(bool& value) : value_(value) {}
    bool setValue(const std::string&) override { return value_ = true; }

private:
    bool& value_;
};

} // namespace

long long number(const std::string& what, const std::string& text, long long min, long long max)
{
    long long value = 0;
    // The parser takes the empty text for 0; here it is no number.
    const bool parsed = !text.empty() && ovo::NumberParser::tryParseInt64(text, value);
    if (!parsed || value < min || value > max)
        throw UsageError(ovo::format("%s is a number from %lld to %lld, not '%s'", what.c_str(), min, max, text.c_str()));
    return value;
}

CommandLine::CommandLine()
{
    values_.emplace_back(new FlagValue(help_));
    processor_.add("h", "help", "show this help", values_.back().get());
    addNumber("log-level", "logs to the console too: 0 what happens, 1 the traffic too", logLevel_, 0, 1,
              &logLevelGiven_);
    addText("log-dir", "also log into a daily file in DIR", logDirectory_);
}

void CommandLine::addText(const std::string& name, const std::string& description, std::string& value, bool* given)
{
    values_.emplace_back(new TextValue(value, given));
    processor_.add("", name, description, values_.back().get());
    helpLines_.push_back("  --" + name + "=TEXT  " + description);
}

void CommandLine::addFlag(const std::string& name, const std::string& description, bool& value)
{
    values_.emplace_back(new FlagValue(value));
    processor_.add("", name, description, values_.back().get());
    helpLines_.push_back("  --" + name + "  " + description);
}

void CommandLine::addNumber(const std::string& name, const std::string& description, long& value, long min, long max,
                            bool* given)
{
    values_.emplace_back(new NumberValue(name, value, min, max, given));
    processor_.add("", name, description, values_.back().get());
    helpLines_.push_back("  --" + name + "=N  " + description);
}

void CommandLine::parse(const std::vector<std::string>& words)
{
    for (const std::string& word : words) {
        const bool option = word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9');
        if (!option) {
            words_.push_back(word);
            continue;
        }
        // One word at a time, so that a word that names no option is found out.
        if (processor_.process(std::vector<std::string>{"ovo", word}) != 1)
            throw UsageError("unknown option '" + word + "'");
    }
}

bool CommandLine::printedHelp(const char* usage) const
{
    if (help_)
        std::cout << usage << optionsHelp();
    return help_;
}

void CommandLine::expectNoWords(const std::string& subcommand) const
{
    if (!words_.empty())
        throw UsageError(subcommand + " takes no words; see " + subcommand + " --help");
}

std::string CommandLine::optionsHelp() const
{
    std::string text;
    for (const std::string& line : helpLines_)
        text += line + "\n";
    return text + "  -h, --help  show this help\n";
}

} // namespace ovo_tool
