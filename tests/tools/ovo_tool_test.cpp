// The ovo tool as a user runs it: its words, its output and its exit status, against
// files, a pseudo-terminal pair, a real message channel and the virtual card.
#include "support/log_file_name.h"
#include "support/process.h"
#include "support/temp_dir.h"
#include "support/virtual_card.h"

#include <ovo/io/serial_ports.h>
#include <ovo/ipc/message_channel.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <map>
#include <pty.h>
#include <regex>
#include <sstream>
#include <tuple>

namespace {

using std::chrono::milliseconds;

struct ToolRun {
    int status;
    std::string out, err;
    bool operator==(const ToolRun& o) const { return std::tie(status, out, err) == std::tie(o.status, o.out, o.err); }
    friend void PrintTo(const ToolRun& r, std::ostream* os) { *os << r.status << " | " << r.out << " | " << r.err; }
};

// The string and true/false values of each key of flat JSON objects, in order, escapes as they stand.
std::map<std::string, std::vector<std::string>> jsonValues(const std::string& text)
{
    static const std::regex pair("\"(\\w+)\":(?:\"((?:[^\"\\\\]|\\\\.)*)\"|(true|false))");
    std::map<std::string, std::vector<std::string>> values;
    for (std::sregex_iterator match(text.begin(), text.end(), pair), end; match != end; ++match)
        values[(*match)[1]].push_back((*match)[2].matched ? (*match)[2].str() : (*match)[3].str());
    return values;
}

class OvoToolTest : public ::testing::Test {
protected:
    ToolRun ovo(const std::vector<std::string>& args)
    {
        std::string command = "timeout -s KILL 30 \"" + ovo_test::siblingProgram("ovo") + "\""; // a hang fails
        for (const std::string& arg : args)
            command += " '" + arg + "'";
        const std::string out = path("out"), err = path("err");
        const int status = std::system((command + " >" + out + " 2>" + err + " </dev/null").c_str());
        return ToolRun{WIFEXITED(status) ? WEXITSTATUS(status) : -1, ovo_test::readFile(out), ovo_test::readFile(err)};
    }

    std::string path(const std::string& name) const { return (dir_.path() / name).string(); }

    // A pseudo-terminal pair in raw mode, closed after the test: the test plays the device
    // on peer_, the tool opens the name given; peer_ stays out of the tool's processes.
    std::string openPty()
    {
        char name[256] = {};
        termios raw = {};
        cfmakeraw(&raw);
        EXPECT_EQ(openpty(&peer_, &port_, name, &raw, nullptr), 0);
        fcntl(peer_, F_SETFD, FD_CLOEXEC);
        return name;
    }
    void TearDown() override { close(peer_), close(port_); }

    // Waits up to the limit for the text to show in the file (the card process starts slowly).
    static bool shows(const std::string& file, const std::string& text, milliseconds limit = std::chrono::seconds(20))
    {
        return ovo_test::waitUntil([&] { return ovo_test::readFile(file).find(text) != std::string::npos; }, limit,
                                   milliseconds(10));
    }

    ovo_test::TempDir dir_;
    int peer_ = -1, port_ = -1;
};

TEST_F(OvoToolTest, HelpNamesEverySubcommandAndEachHasItsOwn)
{
    const ToolRun help = ovo({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const std::string name : {"readers", "apdu", "serial", "channel", "hexdump", "script", "demo", "ports"}) {
        EXPECT_NE(help.out.find("  " + name), std::string::npos) << name;
        const ToolRun own = ovo({name, "--help"});
        EXPECT_TRUE(own.status == 0 && own.out.rfind("usage: ovo " + name, 0) == 0 &&
                    own.out.find("--log-level=N") != std::string::npos)
            << own.out;
    }
    EXPECT_EQ(ovo({}).status, 2);
    EXPECT_EQ(ovo({"bogus"}), (ToolRun{2, "", "ovo: unknown subcommand 'bogus'; see ovo --help\n"}));
}

TEST_F(OvoToolTest, MistakesGiveStatus2AndFailuresStatus1WithOneLineThatSaysWhy)
{
    const std::string ch = "ovoheld-" + std::to_string(getpid()), tty = "--port=device=ttyS0";
    ovo::ipc::MessageChannel channel(ch, 4600);
    const std::string missing = path("missing"), directory = path("");
    const struct {
        std::vector<std::string> args;
        int status;
        std::string message; // after "ovo SUBCOMMAND: "
    } cases[] = {
        {{"apdu", "00A400"}, 2, "a command unit has at least 4 bytes (CLA INS P1 P2): '00A400'"},
        {{"apdu"}, 2, "ovo apdu needs at least one command unit in hex; see ovo apdu --help"},
        {{"serial", "send", "01"}, 2, "--port needs device=NAME; see ovo serial --help"},
        {{"serial", tty, "recv", "0"}, 2, "the count of recv is a number from 1 to 4294967295, not '0'"},
        {{"serial", tty, "--timeout=-1", "recv", "1"}, 2, "--timeout is a number from 0 to 2147483647, not '-1'"},
        {{"serial", tty + ";parity=odd2", "recv", "1"}, 2, "bad --port setting 'parity=odd2'; see ovo serial --help"},
        {{"serial", tty, "listen"}, 2, "ovo serial needs send HEX, recv N or monitor; see ovo serial --help"},
        {{"channel", "c", "send", "0", "01"}, 2, "a message identifier is a number from 1 to 4294967295, not '0'"},
        {{"channel", "c", "recv", "x"}, 2, "a message identifier is a number from 0 to 4294967295, not 'x'"},
        {{"channel", "c", "--size=4112", "count"}, 2, "--size is a number from 4113 to 2147483647, not '4112'"},
        {{"channel", "a\\b", "count"}, 2, "a channel name has no backslash: 'a\\b'"},
        {{"hexdump", "a", "b"}, 2, "ovo hexdump takes one file at most; see ovo hexdump --help"},
        {{"hexdump", missing}, 1, "cannot open '" + missing + "': No such file or directory"},
        {{"script", directory}, 1, "cannot read '" + directory + "': Is a directory"},
        {{"hexdump", "--log-dir=/dev/null", "/dev/null"}, 1, "cannot log into '/dev/null': Not a directory"},
        {{"serial", "--port=device=ovo_nosuch", "send", "01"}, 1, "no such serial device: /dev/ovo_nosuch"},
        {{"serial", "--port=device=/dev/null", "recv", "1"}, 1, "/dev/null is not a serial device: Incorrect function"},
        {{"channel", ch, "send", "1", "01"},
         1,
         "channel '" + ch + "' exists with a smaller size; pass --size=4600 or less"},
        {{"channel", ch, "--size=4600", "recv", "9"}, 1, "no message with identifier 9"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ovo(c.args), (ToolRun{c.status, "", "ovo " + c.args[0] + ": " + c.message + "\n"}));
}

TEST_F(OvoToolTest, HexdumpAndAScriptThatRunsItsLinesUntilOneFails)
{
    std::ofstream(path("data"), std::ios::binary) << "ABCDEFGHIJKLMNOP\x01\x02Z";
    const std::string dump = "00000000  41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 | ABCDEFGHIJKLMNOP\n"
                             "00000010  01 02 5A                                        | ..Z             \n";
    EXPECT_EQ(ovo({"hexdump", path("data")}), (ToolRun{0, dump, ""}));

    std::ofstream(path("script")) << "# two dumps\n\nhexdump  \"" << path("data") << "\"\r\nhexdump " << path("data")
                                  << "\napdu 0G\nhexdump " << path("data") << "\n";
    EXPECT_EQ(ovo({"script", path("script")}), // the line after the failing one does not run
              (ToolRun{2, dump + dump, path("script") + ":5: ovo apdu: bad hex '0G': invalid hex char 'G'\n"}));
    std::ofstream(path("nested")) << "script " << path("script") << "\n";
    EXPECT_EQ(ovo({"script", path("nested")}).status, 2);
}

TEST_F(OvoToolTest, ChannelMessagesGoBothWaysAndAreWatchedUntilInterrupted)
{
    const std::string name = "ovotool-" + std::to_string(getpid());
    ovo::ipc::MessageChannel channel(name, 65536); // the channel lives while this object does
    EXPECT_EQ(ovo({"channel", name, "send", "7", "01 02 FF"}), (ToolRun{0, "sent 3 bytes with identifier 7\n", ""}));
    const ToolRun logged = ovo({"channel", name, "send", "8", "--text=card in", "--log-level=1"});
    EXPECT_NE(logged.err.find("sent 8: 63 61 72 64 20 69 6E"), std::string::npos); // the console shows the log
    EXPECT_EQ(ovo({"channel", name, "count"}).out, "2\n");
    EXPECT_EQ(ovo({"channel", name, "recv", "8"}).out, "63 61 72 64 20 69 6E  \"card in\"\n");
    EXPECT_EQ(ovo({"channel", name, "recv"}).out, "01 02 FF\n");
    char hi[] = "hi";
    ASSERT_TRUE(channel.send(9, hi, 2));
    EXPECT_EQ(ovo({"channel", name, "recv", "9"}), (ToolRun{0, "68 69  \"hi\"\n", ""}));

    ovo_test::ChildProcess watcher("ovo", {"channel", name, "watch"}, path("watch"));
    ASSERT_TRUE(channel.send(3, hi, 2));
    EXPECT_TRUE(shows(path("watch"), "68 69  \"hi\"\n"));
    EXPECT_EQ(watcher.interrupt(), 0);
    EXPECT_EQ(channel.inQueue(), 0u);
}

TEST_F(OvoToolTest, SerialMonitorShowsTrafficUntilThePeerGoes)
{
    ovo_test::ChildProcess monitor("ovo", {"serial", "--port=device=" + openPty(), "monitor"}, path("monitor"));
    bool shown = false;
    for (int attempt = 0; attempt < 5 && !shown; ++attempt) { // bytes sent before the port opened may go
        ASSERT_EQ(write(peer_, "\x02OK\x03", 4), 4);
        shown = shows(path("monitor"), " 02 4F 4B 03 ", std::chrono::seconds(1));
    }
    EXPECT_EQ(ovo_test::readFile(path("monitor")).rfind("00000000  02 4F 4B 03 ", 0), 0u) << shown;
    std::this_thread::sleep_for(milliseconds(300)); // quiet times are no failure
    ASSERT_EQ(write(peer_, "\x06", 1), 1);
    EXPECT_TRUE(shows(path("monitor"), " 06 ")) << ovo_test::readFile(path("monitor"));
    close(peer_); // the peer goes away: the monitor ends, as a failure, before the interrupt
    peer_ = -1;
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_EQ(monitor.interrupt(), 1);
}

TEST_F(OvoToolTest, SerialTransfersEndWithinTheTimeoutOfTheWholeCommand)
{
    const std::string name = openPty(), settings = "--port=device=" + name + ";baud=9600";
    // The console stays quiet; the log file has what the library said.
    const ToolRun sent = ovo({"serial", settings, "--log-dir=" + path(""), "send", "41 42 43"});
    EXPECT_EQ(sent, (ToolRun{0, "sent 3 of 3 bytes\n", ""}));
    const std::string log = ovo_test::readFile(path(ovo_test::todaysLogFile("ovo")));
    EXPECT_NE(log.find("openDevice( '" + name + "' ) OK"), std::string::npos);
    char got[3] = {};
    EXPECT_TRUE(read(peer_, got, 3) == 3 && std::string(got, 3) == "ABC");

    std::string many41;
    for (int i = 0; i < 4096; ++i)
        many41 += "41 ";
    const struct {
        std::string arrived;
        std::vector<std::string> words;
        int status;
        std::string out, err; // err after "ovo serial: "
        long least, most;     // milliseconds
    } cases[] = {
        {"\x01\x02", {"--timeout=2000", "recv", "2"}, 0, "01 02\n", "", 0, 1500},
        {"\x05", {"--timeout=1000", "recv", "2"}, 1, "05\n", "received 1 of 2 bytes", 950, 1700},
        {"", {"--timeout=0", "recv", "1"}, 1, "(nothing)\n", "received 0 of 1 bytes", 0, 1000},
        {"", {"--timeout=10", "recv", "4000000000"}, 1, "(nothing)\n", "received 0 of 4000000000 bytes", 0, 1000},
        {std::string(5000, 'A'), {"recv", "4097"}, 0, many41 + "41\n", "", 0, 1500}, // in pieces
    };
    for (const auto& c : cases) {
        ASSERT_EQ(write(peer_, c.arrived.data(), c.arrived.size()), static_cast<ssize_t>(c.arrived.size()));
        std::vector<std::string> words{"serial", settings};
        words.insert(words.end(), c.words.begin(), c.words.end());
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(ovo(words), (ToolRun{c.status, c.out, c.err.empty() ? "" : "ovo serial: " + c.err + "\n"}));
        const long took = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start).count();
        EXPECT_TRUE(took >= c.least && took <= c.most) << took << " ms";
    }

    // A peer that does not read takes what fits, and --timeout=0 waits for nothing more.
    const ToolRun run = ovo({"serial", settings, "--timeout=0", "send", std::string(120000, '7')});
    const std::string took = run.out.substr(5, run.out.find(' ', 5) - 5) + " of 60000 bytes\n";
    EXPECT_EQ(run, (ToolRun{1, "sent " + took, "ovo serial: the device took " + took}));
}

TEST_F(OvoToolTest, PortsAsATableAndAsJsonShowWhatTheLibraryFinds)
{
    const std::string json = ovo({"ports", "--json"}).out;
    EXPECT_TRUE(json.front() == '[' && json.substr(json.size() - 2) == "]\n") << json;
    auto values = jsonValues(json);
    std::istringstream table(ovo({"ports"}).out);
    std::string header, line;
    std::getline(table, header);
    std::size_t i = 0;
    for (const ovo::io::SerialPortInfo& port : ovo::io::listSerialPorts()) {
        EXPECT_EQ(values["name"].at(i) + "|" + values["description"].at(i), port.deviceName + "|" + port.description);
        ASSERT_TRUE(std::getline(table, line));
        EXPECT_EQ(line.rfind(port.deviceName + " ", 0), 0u) << line;
        const std::size_t column = header.find("DESCRIPTION");
        EXPECT_EQ(line.find(port.description, port.deviceName.size()), column) << line;
        ++i;
    }
    EXPECT_EQ(values["name"].size(), i);
    EXPECT_FALSE(std::getline(table, line));
}

// Needs pcscd with the virtual reader; the virtual card starts here and the last test stops it.
class OvoToolCardTest : public OvoToolTest {
protected:
    static void SetUpTestSuite()
    {
        if (ovo_test::readerListed()) {
            card.reset(new ovo_test::VirtualCard);
            cardReady = ovo_test::waitForCard(true, std::chrono::seconds(15));
        }
    }
    static void TearDownTestSuite() { card.reset(); }
    void SetUp() override
    {
        OVO_SKIP_WITHOUT_VIRTUAL_READER();
        ASSERT_TRUE(cardReady);
    }

    static inline std::unique_ptr<ovo_test::VirtualCard> card;
    static inline bool cardReady = false;
    const std::string reader = ovo_test::readerName, atr = "3B 95 13 81 01 80 73 FF 01 00 0B";
};

TEST_F(OvoToolCardTest, ReadersShowTheCardAndApduSucceedsOnlyWhenAllResponsesDo)
{
    const ToolRun readers = ovo({"readers"});
    EXPECT_EQ(readers.status, 0);
    EXPECT_EQ(readers.out.rfind(reader + ": card, ATR " + atr + "\n", 0), 0u) << readers.out;
    auto json = jsonValues(ovo({"readers", "--json"}).out);
    EXPECT_EQ(json["reader"].at(0) + " " + json["card"].at(0) + " " + json["atr"].at(0), reader + " true " + atr);
    const std::string select = "-> 00 A4 00 0C 02 3F 00\n<- 90 00  9000: success\n";
    EXPECT_EQ(ovo({"apdu", "00 A4 00 0C 02 3F 00"}), (ToolRun{0, select, ""}));
    const ToolRun run = ovo({"apdu", "--reader=Virtual PCD 00 00", "00A4000C021234", "00B0000010", "00A4000C023F00"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("<- 6A 82  6A82: file or application not found\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("<- 69 86  6986: command not allowed (no current EF)\n"), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "ovo apdu: a response was no success\n");
    const std::string noReader = ovo({"apdu", "--reader=Nowhere", "00A4000C023F00"}).err;
    EXPECT_EQ(noReader.rfind("ovo apdu: no reader 'Nowhere'; the readers are 'Virtual PCD 00 00'", 0), 0u);
}

TEST_F(OvoToolCardTest, TheDemoRunsEveryPartAndSaysWhereTheLogIs)
{
    const ToolRun run = ovo({"demo", "--log-dir=" + path("")});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("card: ok, channel: ok, serial: ok"), std::string::npos) << run.out;
    const std::string logLine = run.out.substr(run.out.find("the log file is ") + 16);
    const std::string log = ovo_test::readFile(logLine.substr(0, logLine.find('\n')));
    EXPECT_EQ(log.rfind("# ovo tool log\n", 0), 0u) << log;
    EXPECT_NE(log.find("-> 00 A4 00 0C 02 3F 00"), std::string::npos) << log;
}

TEST_F(OvoToolCardTest, ReadersWatchShowsWhatIsThereAndTheCardGoing)
{
    ovo_test::ChildProcess watch("ovo", {"readers", "--watch"}, path("watch"));
    ovo_test::ChildProcess jsonWatch("ovo", {"readers", "--watch", "--json"}, path("watch.json"));
    const std::string jsonReader = "\",\"reader\":\"" + reader;
    EXPECT_TRUE(shows(path("watch"), " card inserted: " + reader + ", ATR " + atr + "\n"));
    EXPECT_TRUE(shows(path("watch.json"), "\"event\":\"card inserted" + jsonReader + "\",\"atr\":\"" + atr + "\"}\n"));
    card.reset();
    EXPECT_TRUE(shows(path("watch"), " card removed: "));
    EXPECT_TRUE(shows(path("watch.json"), "\"event\":\"card removed\""));
    EXPECT_EQ(watch.interrupt(), 0);
    EXPECT_EQ(jsonWatch.interrupt(), 0);
    // Each line with the time: the text from the hour on, the JSON whole.
    const std::string time = "\\d\\d:\\d\\d:\\d\\d\\.\\d{3}", date = "\\{\"time\":\"\\d{4}-\\d\\d-\\d\\dT";
    const std::regex text("(^|\n)" + time + " card removed: " + reader + "\n");
    const std::regex json("(^|\n)" + date + time + "\",\"event\":\"card removed" + jsonReader + "\"\\}\n");
    EXPECT_TRUE(std::regex_search(ovo_test::readFile(path("watch")), text));
    EXPECT_TRUE(std::regex_search(ovo_test::readFile(path("watch.json")), json));
}

} // namespace
