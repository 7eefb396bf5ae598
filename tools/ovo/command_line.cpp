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
    // The library's parser takes leading white space, a plus sign, and the empty text for 0:
    // none of them is a number here.
    const std::size_t digits = text.rfind('-', 0) == 0 ? 1 : 0;
    long long value = 0;
    const bool parsed = text.size() > digits && text.find_first_not_of("0123456789", digits) == std::string::npos &&
                        ovo::NumberParser::tryParseInt64(text, value);
    if (!parsed || value < min || value > max)
        throw UsageError(ovo::format("%s is a number from %lld to %lld, not '%s'", what.c_str(), min, max, text.c_str()));
    return value;
}

CommandLine::CommandLine()
{
    values_.emplace_back(new FlagValue(help_));
    processor_.add("h", "help", "show this help", values_.back().get());
    addNumber("log-level", "N", "logs to the console too: 0 what happens, 1 the traffic too", logLevel_, 0, 1,
              &logLevelGiven_);
    addText("log-dir", "DIR", "also log into a daily file in DIR", logDirectory_);
}

void CommandLine::add(const std::string& name, const std::string& placeholder, const std::string& description,
                      ovo::ProgramOptions::IOptionValue* value)
{
    values_.emplace_back(value);
    processor_.add("", name, description, value);
    if (!placeholder.empty())
        placeholders_["--" + name] = placeholder;
    if (!description.empty())
        helpLines_.push_back("  --" + name + (placeholder.empty() ? "" : "=" + placeholder) + "  " + description);
}

void CommandLine::addText(const std::string& name, const std::string& placeholder, const std::string& description,
                          std::string& value, bool* given)
{
    add(name, placeholder, description, new TextValue(value, given));
}

void CommandLine::addFlag(const std::string& name, const std::string& description, bool& value)
{
    add(name, "", description, new FlagValue(value));
}

void CommandLine::addNumber(const std::string& name, const std::string& placeholder, const std::string& description,
                            long& value, long min, long max, bool* given)
{
    add(name, placeholder, description, new NumberValue(name, value, min, max, given));
}

void CommandLine::addInternal(const std::string& name, std::string& value)
{
    add(name, "VALUE", "", new TextValue(value, nullptr));
}

void CommandLine::parse(const std::vector<std::string>& words)
{
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string word = words[i];
        const bool option = word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9');
        if (!option) {
            words_.push_back(word);
            continue;
        }
        // "--port SETTINGS" as people type it: the next word is the value.
        const auto placeholder = placeholders_.find(word);
        if (placeholder != placeholders_.end()) {
            if (i + 1 == words.size())
                throw UsageError(word + " needs its value: " + word + "=" + placeholder->second);
            word += "=" + words[++i];
        }
        // One word at a time, so that a word that names no option is found out.
        if (processor_.process(std::vector<std::string>{"ovo", word}) != 1)
            throw UsageError("unknown option '" + word + "'");
    }
}

bool CommandLine::printedHelp(const char* help) const
{
    if (!help_)
        return false;
    const std::string text = help;
    const std::size_t examples = text.find("examples: ");
    std::cout << text.substr(0, examples) << "options:\n";
    for (const std::string& line : helpLines_)
        std::cout << line << '\n';
    std::cout << "  -h, --help  show this help\n" << (examples == std::string::npos ? "" : text.substr(examples));
    return true;
}

void CommandLine::expectNoWords(const std::string& subcommand) const
{
    if (!words_.empty())
        throw UsageError(subcommand + " takes no words; see " + subcommand + " --help");
}

} // namespace ovo_tool
