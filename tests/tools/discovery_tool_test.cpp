// ovo ports and ovo readers as scripts and people use them: the JSON read back, and the
// watch seeing the virtual card come and go.
#include <ovo/io/serial_ports.h>

#include "support/child_process.h"
#include "support/temp_dir.h"
#include "support/virtual_card.h"

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <regex>
#include <sstream>

namespace {

// The values of a JSON text by their paths ("0.name", "0.stablePaths.1"): objects,
// arrays, strings, true and false, as the tool writes them. Throws on anything else.
class FlatJson {
public:
    explicit FlatJson(const std::string& text) : text_(text)
    {
        read("");
        if (blank(), at_ != text_.size())
            throw std::runtime_error("text after the JSON value");
    }
    std::map<std::string, std::string> values;

private:
    void read(const std::string& path)
    {
        const std::string prefix = path.empty() ? "" : path + ".";
        int index = 0;
        if (take('{')) {
            if (take('}'))
                return;
            do {
                const std::string key = string();
                expect(':');
                read(prefix + key);
            } while (take(','));
            expect('}');
        } else if (take('[')) {
            if (take(']'))
                return;
            do
                read(prefix + std::to_string(index++));
            while (take(','));
            expect(']');
        } else if (text_.compare(at_, 4, "true") == 0 || text_.compare(at_, 5, "false") == 0) {
            values[path] = text_[at_] == 't' ? "true" : "false";
            at_ += values[path].size();
        } else {
            values[path] = string();
        }
    }
    std::string string()
    {
        expect('"');
        std::string text;
        for (char c; (c = text_.at(at_++)) != '"'; text += c) {
            if (static_cast<unsigned char>(c) < 0x20)
                throw std::runtime_error("a control character in a string");
            if (c != '\\')
                continue;
            c = text_.at(at_++);
            if (c == 'u') {
                c = static_cast<char>(std::stoi(text_.substr(at_, 4), nullptr, 16));
                at_ += 4;
            } else if (c == 'n' || c == 'r' || c == 't') {
                c = c == 'n' ? '\n' : c == 'r' ? '\r' : '\t';
            }
        }
        return text;
    }
    void blank()
    {
        while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])))
            ++at_;
    }
    bool take(char c)
    {
        blank();
        return at_ < text_.size() && text_[at_] == c && ++at_;
    }
    void expect(char c)
    {
        if (!take(c))
            throw std::runtime_error(std::string("no '") + c + "' at " + std::to_string(at_));
    }
    std::string text_;
    std::size_t at_ = 0;
};

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
    const std::vector<ovo::io::SerialPortInfo> ports = ovo::io::listSerialPorts();
    std::map<std::string, std::string> json = FlatJson(ovo("ports --json")).values;
    std::istringstream table(ovo("ports"));
    std::string line;
    std::getline(table, line);
    EXPECT_EQ(line.substr(0, 4), "NAME");
    for (std::size_t i = 0; i < ports.size(); ++i) {
        const std::string at = std::to_string(i) + ".";
        EXPECT_EQ(json[at + "name"], ports[i].deviceName);
        EXPECT_EQ(json[at + "description"], ports[i].description);
        EXPECT_EQ(json[at + "vendorId"] + json[at + "serialNumber"], ports[i].vendorId + ports[i].serialNumber);
        EXPECT_EQ(json.count(at + "stablePaths.0"), ports[i].stablePaths.size() > 0 ? 1u : 0u);
        ASSERT_TRUE(std::getline(table, line));
        EXPECT_EQ(line.substr(0, ports[i].deviceName.size() + 1), ports[i].deviceName + " ");
    }
    EXPECT_EQ(json.count(std::to_string(ports.size()) + ".name"), 0u);
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
        std::map<std::string, std::string> readers = FlatJson(ovo("readers --json")).values;
        EXPECT_EQ(readers["0.reader"], reader);
        EXPECT_EQ(readers["0.card"], "true");
        EXPECT_EQ(readers["0.atr"], atr);
    }
    EXPECT_TRUE(shows(path("watch"), " card removed: " + reader + "\n"));
    EXPECT_TRUE(shows(path("watch.json"), "\"card removed\""));
    EXPECT_EQ(watch.interrupt(), 0);
    EXPECT_EQ(jsonWatch.interrupt(), 0);

    std::istringstream lines(ovo_test::readFile(path("watch")));
    for (std::string line; std::getline(lines, line);)
        EXPECT_TRUE(std::regex_match(line, std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d [a-z ]+: .+"))) << line;
    std::istringstream objects(ovo_test::readFile(path("watch.json")));
    std::vector<std::string> events;
    for (std::string line; std::getline(objects, line);) {
        std::map<std::string, std::string> event = FlatJson(line).values;
        EXPECT_EQ(event["time"].size(), 23u) << line;
        if (event["reader"] == reader)
            events.push_back(event["event"] + " " + event["atr"]);
    }
    EXPECT_EQ(events, (std::vector<std::string>{"reader added ", "card inserted " + atr, "card removed "}));
}

} // namespace
