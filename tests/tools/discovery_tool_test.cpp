// ovo ports and ovo readers as scripts and people use them: the JSON read back, and the
// watch seeing the virtual card come and go.
#include <ovo/io/serial_ports.h>

#include "support/child_process.h"
#include "support/temp_dir.h"
#include "support/virtual_card.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>

namespace {

// A minimal parse of the tool's flat JSON objects: the string and true/false values of
// each key, in order ("card": {"true", "false"}), escapes left as they stand.
std::map<std::string, std::vector<std::string>> jsonValues(const std::string& text)
{
    static const std::regex pair("\"(\\w+)\":(?:\"((?:[^\"\\\\]|\\\\.)*)\"|(true|false))");
    std::map<std::string, std::vector<std::string>> values;
    for (std::sregex_iterator match(text.begin(), text.end(), pair), end; match != end; ++match)
        values[(*match)[1]].push_back((*match)[2].matched ? (*match)[2].str() : (*match)[3].str());
    return values;
}

class DiscoveryTool : public testing::Test {
protected:
    // The standard output of the tool; its exit status must be 0.
    std::string ovo(const std::string& args)
    {
        const std::string out = path("out");
        const int status = std::system(("\"" + ovo_test::siblingProgram("ovo") + "\" " + args + " >" + out).c_str());
        EXPECT_EQ(status, 0) << args;
        return ovo_test::readFile(out);
    }
    std::string path(const std::string& name) const { return (dir_.path() / name).string(); }

    // Waits up to 20 s for the text to show in the file (the card process starts slowly).
    static bool shows(const std::string& file, const std::string& text)
    {
        for (int i = 0; i < 2000 && ovo_test::readFile(file).find(text) == std::string::npos; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return ovo_test::readFile(file).find(text) != std::string::npos;
    }

    ovo_test::TempDir dir_;
};

TEST_F(DiscoveryTool, PortsAsATableAndAsJsonShowWhatTheLibraryFinds)
{
    std::vector<std::string> names, descriptions;
    for (const ovo::io::SerialPortInfo& port : ovo::io::listSerialPorts()) {
        names.push_back(port.deviceName);
        descriptions.push_back(port.description);
    }
    const std::string json = ovo("ports --json");
    EXPECT_EQ(json.front(), '[');
    EXPECT_EQ(json.substr(json.size() - 2), "]\n");
    EXPECT_EQ(jsonValues(json)["name"], names);
    EXPECT_EQ(jsonValues(json)["description"], descriptions);
    std::istringstream table(ovo("ports"));
    std::string header, line;
    std::getline(table, header);
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_TRUE(std::getline(table, line));
        EXPECT_EQ(line.rfind(names[i] + " ", 0), 0u) << line;
        EXPECT_EQ(line.find(descriptions[i], names[i].size()), header.find("DESCRIPTION")) << line; // in its column
    }
    EXPECT_FALSE(std::getline(table, line));
}

TEST_F(DiscoveryTool, ReadersWatchSeesTheCardComeAndGo)
{
    if (!ovo_test::readerListed())
        GTEST_SKIP() << "needs pcscd with the virtual reader '" << ovo_test::readerName << "'";
    ovo_test::ChildProcess watch("ovo", {"readers", "--watch"}, path("watch"));
    ovo_test::ChildProcess jsonWatch("ovo", {"readers", "--watch", "--json"}, path("watch.json"));
    const std::string reader = ovo_test::readerName, atr = "3B 95 13 81 01 80 73 FF 01 00 0B";
    EXPECT_TRUE(shows(path("watch"), " reader added: " + reader + "\n"));
    {
        ovo_test::VirtualCard card;
        EXPECT_TRUE(shows(path("watch"), " card inserted: " + reader + ", ATR " + atr + "\n"));
        auto readers = jsonValues(ovo("readers --json"));
        EXPECT_EQ(readers["reader"].at(0) + " " + readers["card"].at(0) + " " + readers["atr"].at(0),
                  reader + " true " + atr);
    }
    EXPECT_TRUE(shows(path("watch"), " card removed: " + reader + "\n"));
    EXPECT_TRUE(shows(path("watch.json"), "\"event\":\"card removed\",\"reader\":\"" + reader + "\"}\n"));
    EXPECT_EQ(watch.interrupt(), 0);
    EXPECT_EQ(jsonWatch.interrupt(), 0);
    const std::string json = ovo_test::readFile(path("watch.json"));
    EXPECT_NE(json.find("\"event\":\"card inserted\",\"reader\":\"" + reader + "\",\"atr\":\"" + atr + "\"}\n"),
              std::string::npos);

    // Every line with the time: the text from the hour on, the JSON whole.
    const std::regex line("\\d\\d:\\d\\d:\\d\\d\\.\\d{3} [a-z ]+: .+|\\{\"time\":\"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:"
                          "\\d\\d\\.\\d{3}\",\"event\":\"[a-z ]+\",\"reader\":\"[^\"]+\"(,\"atr\":\"[0-9A-F ]+\")?\\}");
    std::istringstream lines(ovo_test::readFile(path("watch")) + json);
    for (std::string text; std::getline(lines, text);)
        EXPECT_TRUE(std::regex_match(text, line)) << text;
}

} // namespace
