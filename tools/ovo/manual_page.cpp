// Makes the manual page of ovo from the texts of its --help, so that the two cannot
// disagree: ovo_manual_page TEMPLATE OUTPUT. The template is the page in roff with
// @VERSION@, @DESCRIPTION@, @COMMANDS@, @OPTIONS@ and @EXAMPLES@ where the help goes.
#include "tool.h"

#include <ovo/version.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

// What a command line of the tool prints on standard output.
std::string printed(const std::vector<std::string>& words)
{
    std::ostringstream text;
    std::streambuf* const console = std::cout.rdbuf(text.rdbuf());
    ovo_tool::runCommandLine(words);
    std::cout.rdbuf(console);
    return text.str();
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> all;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        all.push_back(line);
    return all;
}

// Text as roff shows it literally: backslashes and minus signs escaped, no line taken
// for a request.
std::string roff(const std::string& text)
{
    std::string escaped = text.empty() || (text[0] != '.' && text[0] != '\'') ? "" : "\\&";
    for (const char c : text)
        escaped += c == '\\' ? std::string("\\e") : c == '-' ? std::string("\\-") : std::string(1, c);
    return escaped;
}

// "--port=SETTINGS" in bold with the value in italics.
std::string optionTerm(const std::string& option)
{
    const std::size_t equals = option.find('=');
    if (equals == std::string::npos)
        return "\\fB" + roff(option) + "\\fR";
    return "\\fB" + roff(option.substr(0, equals)) + "\\fR=\\fI" + roff(option.substr(equals + 1)) + "\\fR";
}

// The parts of one help text, in the form that CommandLine::printedHelp gives it.
struct HelpText {
    std::string usage;
    std::vector<std::string> text, options, examples;
};

HelpText parse(const std::string& help)
{
    HelpText parts;
    std::vector<std::string>* part = &parts.text;
    for (const std::string& line : lines(help)) {
        if (line.rfind("usage: ", 0) == 0)
            parts.usage = line.substr(7);
        else if (parts.text.empty() && part == &parts.text && line.rfind("   ", 0) == 0)
            parts.usage += " " + line.substr(line.find_first_not_of(' ')); // the usage goes on
        else if (line == "options:")
            part = &parts.options;
        else if (line.rfind("examples: ", 0) == 0 || part == &parts.examples)
            (part = &parts.examples)->push_back(line.substr(10));
        else
            part->push_back(line);
    }
    return parts;
}

// "  ITEM  meaning": the item (up to the line's first gap of two spaces or more) and its
// meaning; an empty meaning for any other line.
std::string itemMeaning(const std::string& line, std::string& item)
{
    if (line.rfind("  ", 0) != 0 || line.size() < 3 || line[2] == ' ')
        return "";
    const std::size_t gap = line.find("  ", 3);
    const std::size_t meaning = gap == std::string::npos ? gap : line.find_first_not_of(' ', gap);
    if (meaning == std::string::npos)
        return "";
    item = line.substr(2, gap - 2);
    return line.substr(meaning);
}

// Prose as paragraphs, "  ITEM  meaning" lines as tagged paragraphs, a deeper indent
// going on with the meaning; options with their values in italics.
std::string body(const std::vector<std::string>& text, bool options)
{
    std::string page;
    bool inItems = false;
    for (const std::string& line : text) {
        std::string item;
        const std::string meaning = itemMeaning(line, item);
        if (!meaning.empty()) {
            page += ".TP\n" + (options ? optionTerm(item) : "\\fB" + roff(item) + "\\fR") + "\n" + roff(meaning) + "\n";
            inItems = true;
        } else if (line.rfind("   ", 0) == 0 && inItems) {
            page += roff(line.substr(line.find_first_not_of(' '))) + "\n";
        } else {
            page += inItems || page.empty() ? ".PP\n" : "";
            page += roff(line) + "\n";
            inItems = false;
        }
    }
    return page;
}

std::string examples(const std::vector<std::string>& commands, const char* title = "Examples:")
{
    std::string page = ".PP\n" + std::string(title) + (*title != '\0' ? "\n.PP\n" : "") + ".nf\n.RS\n";
    for (const std::string& command : commands)
        page += roff(command) + "\n";
    return page + ".RE\n.fi\n";
}

void replace(std::string& page, const std::string& marker, const std::string& text)
{
    const std::size_t at = page.find(marker);
    if (at == std::string::npos)
        throw std::runtime_error("the template has no " + marker);
    page.replace(at, marker.size(), text);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: ovo_manual_page TEMPLATE OUTPUT\n";
        return 2;
    }
    std::ifstream in(argv[1]);
    std::string page((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());

    // The general help: its list of subcommands, its prose and its examples.
    std::vector<std::string> names, prose;
    const HelpText general = parse(printed({"--help"}));
    for (const std::string& line : general.text) {
        std::string name;
        if (!itemMeaning(line, name).empty() &&
            name.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos)
            names.push_back(name);
        else if (!line.empty() && line != "subcommands:")
            prose.push_back(line);
    }
    // Each subcommand's own, with the options that every subcommand takes once below.
    std::vector<HelpText> helps;
    for (const std::string& name : names)
        helps.push_back(parse(printed({name, "--help"})));
    std::vector<std::string> common = helps.front().options;
    for (const HelpText& help : helps)
        common.erase(std::remove_if(common.begin(), common.end(),
                                    [&](const std::string& option) {
                                        return std::find(help.options.begin(), help.options.end(), option) ==
                                               help.options.end();
                                    }),
                     common.end());
    std::string commands;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const HelpText& help = helps[i];
        std::vector<std::string> own;
        for (const std::string& option : help.options)
            if (std::find(common.begin(), common.end(), option) == common.end())
                own.push_back(option);
        const std::string command = "ovo " + names[i];
        commands += ".SS " + roff(names[i]) + "\n.nf\n\\fB" + roff(command) + "\\fR" +
                    roff(help.usage.substr(command.size())) + "\n.fi\n" + body(help.text, false) +
                    (own.empty() ? "" : ".PP\nOptions:\n" + body(own, true)) + examples(help.examples);
    }
    replace(page, "@VERSION@", OVO_VERSION_STRING);
    replace(page, "@DESCRIPTION@", body(prose, false));
    replace(page, "@COMMANDS@", commands);
    replace(page, "@OPTIONS@", body(common, true));
    replace(page, "@EXAMPLES@", examples(general.examples, ""));
    std::ofstream(argv[2]) << page;
    return 0;
}
