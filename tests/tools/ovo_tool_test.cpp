// The ovo tool as a user runs it: its words, its output and its exit status, against
// files, a pseudo-terminal pair, a real message channel, the virtual card, and (as root)
// file systems, a sysfs tree and a PC/SC service of the test's own in private namespaces.
#include "support/log_file_name.h"
#include "support/process.h"
#include "support/sysfs_tree.h"
#include "support/temp_dir.h"
#include "support/virtual_card.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/strings.h>

#include <PCSC/winscard.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <tuple>

namespace {

using std::chrono::milliseconds;

struct ToolRun {
    int status;
    std::string out, err;
    bool operator==(const ToolRun& o) const { return std::tie(status, out, err) == std::tie(o.status, o.out, o.err); }
    friend void PrintTo(const ToolRun& r, std::ostream* os) { *os << r.status << " | " << r.out << " | " << r.err; }
};

class OvoToolTest : public ::testing::Test {
protected:
    ToolRun ovo(const std::vector<std::string>& args) { return ovoThrough("", args); }

    // The tool in a private mount namespace, after the shell commands of `setup` (root only).
    ToolRun ovoAfter(const std::string& setup, const std::vector<std::string>& args)
    {
        return ovoThrough("unshare -m --propagation private sh -c '" + setup + " && exec \"$0\" \"$@\"' ", args);
    }

    // The tool started by the launcher's words.
    ToolRun ovoThrough(const std::string& launcher, const std::vector<std::string>& args)
    {
        std::string command = "timeout -s KILL 30 " + launcher + "\"" + ovo_test::siblingProgram("ovo") + "\"";
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
        const std::regex usage("^usage: ovo " + name + "[^]*\n  --log-level=N  [^]*\n  --log-dir=DIR  ");
        EXPECT_TRUE(own.status == 0 && std::regex_search(own.out, usage)) << own.out;
        // Each value says what it is; the options between the tool's own processes stay hidden.
        EXPECT_EQ(std::regex_search(own.out, std::regex("--(?!text=)[a-z-]+=TEXT|answer-on")), false) << own.out;
    }
    EXPECT_EQ(ovo({}).status, 2);
    EXPECT_EQ(ovo({"bogus"}), (ToolRun{2, "", "ovo: unknown subcommand 'bogus'; see ovo --help\n"}));
}

TEST_F(OvoToolTest, MistakesGiveStatus2AndFailuresStatus1WithOneLineThatSaysWhy)
{
    const std::string ch = "ovoheld-" + std::to_string(getpid()), tty = "--port=device=ttyS0";
    ovo::ipc::MessageChannel channel(ch, 4600);
    const std::string none = path("none"), directory = path("");
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
        {{"hexdump", none}, 1, "cannot open '" + none + "': No such file or directory"},
        {{"script", directory}, 1, "cannot read '" + directory + "': Is a directory"},
        {{"hexdump", "--log-dir=/dev/null", "/dev/null"}, 1, "cannot log into '/dev/null': Not a directory"},
        {{"serial", "--port=device=ovo_nosuch", "send", "01"}, 1, "no such serial device: /dev/ovo_nosuch"},
        {{"serial", "--port=device=/dev/null", "recv", "1"}, 1, "/dev/null is not a serial device (not a terminal)"},
        {{"hexdump", "--log-dir=" + none, "/dev/null"}, 1, "cannot log into '" + none + "': No such file or directory"},
        {{"channel", "c", "--size= 5000", "count"}, 2, "--size is a number from 4113 to 2147483647, not ' 5000'"},
        {{"serial", "send", "01", "--port"}, 2, "--port needs its value: --port=SETTINGS"},
        {{"channel", ch, "send", "1", "01"},
         1,
         "channel '" + ch + "' exists with a smaller size; pass --size=4600 or less"},
        {{"channel", ch, "--size=4600", "recv", "9"}, 1, "no message with identifier 9"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ovo(c.args), (ToolRun{c.status, "", "ovo " + c.args[0] + ": " + c.message + "\n"}));
}

TEST_F(OvoToolTest, HexdumpAndAScriptThatRunsItsLinesUntilOneFailsAndRefusesALineNoWordCanTake)
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

    // A NUL byte would cut every text made of the line short, and a line has a limit.
    std::ofstream(path("nul"), std::ios::binary) << std::string("hexdump /dev/null\napdu \"00 A4\0 G\"\n", 32);
    EXPECT_EQ(ovo({"script", path("nul")}),
              (ToolRun{2, "", "ovo script: line 2 holds a NUL byte (column 12); no word of ovo can\n"}));
    // A comment a byte over the limit, after one that fits with its line feed.
    const std::size_t limit = 16 * 1024 * 1024;
    std::ofstream(path("long"), std::ios::binary)
        << "#" << std::string(limit - 1, 'x') << "\n#" << std::string(limit, 'y');
    EXPECT_EQ(ovo({"script", path("long")}), (ToolRun{2, "", "ovo script: line 2 is longer than 16777216 bytes\n"}));
}

// "--port SETTINGS" as people type it does what "--port=SETTINGS" does.
TEST_F(OvoToolTest, OptionsTakeTheirValueAfterEqualsOrAsTheNextWord)
{
    std::ofstream(path("data")) << "AB";
    const std::vector<std::vector<std::string>> pairs[] = {
        {{"serial", "--port=device=ovo_nosuch", "--timeout=5", "send", "01"},
         {"serial", "--port", "device=ovo_nosuch", "--timeout", "5", "send", "01"}},
        {{"hexdump", "--log-dir=" + path(""), "--log-level=0", path("data")},
         {"hexdump", "--log-dir", path(""), "--log-level", "0", path("data")}},
    };
    for (const auto& forms : pairs) {
        const ToolRun joined = ovo(forms[0]);
        EXPECT_NE(joined.status, 2) << joined.err; // no mistake in the words either way
        EXPECT_EQ(ovo(forms[1]), joined) << forms[0][0];
    }
    EXPECT_NE(ovo_test::readFile(path(ovo_test::todaysLogFile("ovo"))).find("reading " + path("data")),
              std::string::npos);
}

TEST_F(OvoToolTest, ChannelMessagesGoBothWaysAndAreWatchedUntilInterrupted)
{
    const std::string name = "ovotool-" + std::to_string(getpid());
    ovo::ipc::MessageChannel channel(name, 65536); // the channel lives while this object does
    EXPECT_EQ(ovo({"channel", name, "send", "7", "01 02 FF"}), (ToolRun{0, "sent 3 bytes with identifier 7\n", ""}));
    const ToolRun logged = ovo({"channel", name, "send", "8", "--text=card in", "--log-level=1"});
    EXPECT_NE(logged.err.find("sent 8: 63 61 72 64 20 69 6E"), std::string::npos); // the console shows the log
    EXPECT_EQ(ovo({"channel", name, "count"}), (ToolRun{0, "2\n", ""}));
    EXPECT_EQ(ovo({"channel", name, "recv", "8"}), (ToolRun{0, "63 61 72 64 20 69 6E  \"card in\"\n", ""}));
    EXPECT_EQ(ovo({"channel", name, "recv"}), (ToolRun{0, "01 02 FF\n", ""}));
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
    EXPECT_EQ(ovo({"serial", settings, "--log-dir=" + path(""), "send", "41 42 43"}),
              (ToolRun{0, "sent 3 of 3 bytes\n", ""}));
    const std::string log = ovo_test::readFile(path(ovo_test::todaysLogFile("ovo")));
    EXPECT_NE(log.find("openDevice( '" + name + "' ) OK"), std::string::npos);
    char got[3] = {};
    EXPECT_TRUE(read(peer_, got, 3) == 3 && std::string(got, 3) == "ABC");

    const std::string many41 = std::regex_replace(std::string(4096, 'A'), std::regex("A"), "41 ");
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

    // A peer that does not read takes what fits, and --timeout=0 waits for nothing more:
    // the count the tool tells is what the peer finds.
    const ToolRun run = ovo({"serial", settings, "--timeout=0", "send", std::string(120000, '7')});
    std::size_t arrived = 0;
    char piece[4096];
    ssize_t count = 0; // until 300 ms of quiet
    for (pollfd ready{peer_, POLLIN, 0}; poll(&ready, 1, 300) == 1 && (count = read(peer_, piece, sizeof piece)) > 0;)
        arrived += static_cast<std::size_t>(count);
    const std::string took = std::to_string(arrived) + " of 60000 bytes\n";
    EXPECT_TRUE(arrived > 0 && arrived < 60000) << arrived;
    EXPECT_EQ(run, (ToolRun{1, "sent " + took, "ovo serial: the device took " + took}));
}

// The sysfs tree of the library's tests in place of the machine's, with a serial number
// that is no UTF-8 and a product name with an escape sequence in it.
TEST_F(OvoToolTest, PortsAsATableAndAsJsonInNaturalOrderWithStrangeBytesMadeHarmless)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root, for private mount namespaces";
    ovo_test::buildSysfsTree(dir_.path());
    std::ofstream(path(ovo_test::usbBus + "1-2/serial")) << "A5\xE9\n";
    std::ofstream(path(ovo_test::usbBus + "1-2/product")) << "FT232R\x1B[2J\n";
    std::ofstream(path(ovo_test::usbBus + "1-5/product")) << "Contrôleur série\n"; // two characters of two bytes
    const std::string machine = "mount --bind " + path("sys") + " /sys && mount --bind " + path("dev") + " /dev";
    EXPECT_EQ(ovoAfter(machine, {"ports"}),
              (ToolRun{0,
                       "NAME      DESCRIPTION              VID:PID    SERIAL  STABLE PATH\n"
                       "ttyACM0   u-blox GNSS receiver     1546:01a8          /dev/serial/by-id/"
                       "usb-u-blox_AG_u-blox_GNSS_receiver-if00\n"
                       "ttyACM9   LTE modem - AT commands  1546:1102\n"
                       "ttyACM10  LTE modem - GNSS data    1546:1102\n"
                       "ttyS0     16750 UART\n"
                       "ttyUSB0   FT232R\\x1B[2J            0403:6001  A5\\xE9  /dev/serial/by-id/"
                       "usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0\n"
                       "ttyUSB10  Contrôleur série         067b:2303\n",
                       ""}));
    const std::string json = ovoAfter(machine, {"ports", "--json"}).out;
    const std::string ftdi = "{\"name\":\"ttyUSB0\",\"description\":\"FT232R\\u001B[2J\",\"vendorId\":\"0403\","
                             "\"productId\":\"6001\",\"serialNumber\":\"A5\\uFFFD\",\"manufacturer\":\"FTDI\","
                             "\"product\":\"FT232R\\u001B[2J\",\"interfaceNumber\":\"00\","
                             "\"interfaceName\":\"FT232R serial\",\"stablePaths\":[\"/dev/serial/by-id/usb-"
                             "FTDI_FT232R_USB_UART_A50285BI-if00-port0\",\"/dev/serial/by-path/"
                             "pci-0000:00:14.0-usb-0:2:1.0-port0\",\"/dev/serial/by-path/"
                             "pci-0000:00:14.0-usbv2-0:2:1.0-port0\"]}";
    EXPECT_NE(json.find(",\n " + ftdi + ",\n "), std::string::npos) << json;
    EXPECT_EQ(std::regex_replace(json, std::regex("\\{\"name\":\"(\\w+)\"[^\n]*"), "$1"), // the names, one a line
              "[ttyACM0\n ttyACM9\n ttyACM10\n ttyS0\n ttyUSB0\n ttyUSB10\n");
}

// A directory that passes every check of its mode and takes no file fails the command.
TEST_F(OvoToolTest, ALogDirectoryThatTakesNoFileIsAFailureNamingItAndTheReason)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root, for private mount namespaces";
    const std::string logs = path("logs");
    std::filesystem::create_directory(logs);
    const struct {
        std::string setup, directory, reason;
    } cases[] = {
        {"mount -t tmpfs -o nr_inodes=1 tmpfs " + logs, logs, "No space left on device"}, // no free inode
        {"mount -t tmpfs -o size=4k tmpfs " + logs + " && (head -c 8192 /dev/zero >" + logs +
             "/full 2>/dev/null; true)",
         logs, "No space left on device"}, // no free block
        {"mount -t tmpfs -o ro tmpfs " + logs, logs, "Read-only file system"},
        {"true", "/proc", "No such file or directory"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ovoAfter(c.setup, {"hexdump", "--log-dir=" + c.directory, "/dev/null"}),
                  (ToolRun{1, "", "ovo hexdump: cannot log into '" + c.directory + "': " + c.reason + "\n"}));
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
    const std::string reader = ovo_test::readerName, emptyReader = "Virtual PCD 00 01";
    const std::string atr = "3B 95 13 81 01 80 73 FF 01 00 0B";
};

TEST_F(OvoToolCardTest, ReadersShowTheCardAndApduSucceedsOnlyWhenAllResponsesDo)
{
    EXPECT_EQ(ovo({"readers"}), (ToolRun{0, reader + ": card, ATR " + atr + "\n" + emptyReader + ": no card\n", ""}));
    const std::string flags = "\"exclusive\":false,\"inUse\":false,\"mute\":false,\"unavailable\":false}";
    EXPECT_EQ(ovo({"readers", "--json"}).out, "[{\"reader\":\"" + reader + "\",\"card\":true,\"atr\":\"" + atr + "\"," +
                                                  flags + ",\n {\"reader\":\"" + emptyReader +
                                                  "\",\"card\":false,\"atr\":\"\"," + flags + "]\n");
    const std::string select = "-> 00 A4 00 0C 02 3F 00\n<- 90 00  9000: success\n";
    EXPECT_EQ(ovo({"apdu", "00 A4 00 0C 02 3F 00"}), (ToolRun{0, select, ""}));
    EXPECT_EQ(ovo({"apdu", "--reader=Virtual PCD 00 00", "00A4000C021234", "00B0000010", "00A4000C023F00"}),
              (ToolRun{1,
                       "-> 00 A4 00 0C 02 12 34\n<- 6A 82  6A82: file or application not found\n-> 00 B0 00 00 10\n"
                       "<- 69 86  6986: command not allowed (no current EF)\n" +
                           select,
                       "ovo apdu: a response was no success\n"}));
    EXPECT_EQ(ovo({"apdu", "--reader=Nowhere", "00A4000C023F00"}).err,
              "ovo apdu: no reader 'Nowhere'; the readers are '" + reader + "', '" + emptyReader + "'\n");
    EXPECT_EQ(ovo({"apdu", "--reader=" + emptyReader, "00A4000C023F00"}).err,
              "ovo apdu: no card in '" + emptyReader + "'\n");
}

// A card that another program holds, or that stopped answering, is listed from what the
// service knows: no connection is tried, so nothing fails and nothing waits.
TEST_F(OvoToolCardTest, ReadersListACardHeldExclusivelyOrStoppedWithoutConnectingToIt)
{
    SCARDCONTEXT context = 0;
    SCARDHANDLE holder = 0;
    DWORD protocol = 0;
    ASSERT_EQ(SCardEstablishContext(SCARD_SCOPE_USER, nullptr, nullptr, &context), SCARD_S_SUCCESS);
    ASSERT_EQ(SCardConnect(context, reader.c_str(), SCARD_SHARE_EXCLUSIVE, SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1,
                           &holder, &protocol),
              SCARD_S_SUCCESS);
    const std::string others = emptyReader + ": no card\n";
    EXPECT_EQ(ovo({"readers"}),
              (ToolRun{0, reader + ": card, ATR " + atr + ", in use by another program (exclusive)\n" + others, ""}));
    EXPECT_EQ(std::regex_replace(ovo({"readers", "--json"}).out, std::regex("[^\n]*\"exclusive\":(\\w+)[^\n]*"), "$1"),
              "true\nfalse\n");
    EXPECT_EQ(ovo({"apdu", "00A4000C023F00"}),
              (ToolRun{1, "",
                       "ovo apdu: another program holds the card exclusively; end it or wait for it "
                       "(SCard error 0x8010000B)\n"}));
    SCardDisconnect(holder, SCARD_LEAVE_CARD);
    SCardReleaseContext(context);

    card->pause();
    const ToolRun stopped = ovo({"readers"});
    card->resume();
    EXPECT_EQ(stopped, (ToolRun{0, reader + ": card, ATR " + atr + "\n" + others, ""}));
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
    EXPECT_TRUE(std::regex_search(ovo_test::readFile(path("watch")),
                                  std::regex("(^|\n)" + time + " card removed: " + reader + "\n")));
    EXPECT_TRUE(
        std::regex_search(ovo_test::readFile(path("watch.json")),
                          std::regex("(^|\n)" + date + time + "\",\"event\":\"card removed" + jsonReader + "\"\\}\n")));
}

// A world of the test's own, in which a PC/SC service comes and goes beside the suite's:
// private mounts (a /run of its own for the service's socket) and a private network (a
// loopback of its own for the virtual reader's driver).
class OvoToolServiceTest : public OvoToolTest {
protected:
    void SetUp() override
    {
        if (geteuid() != 0 || access("/usr/sbin/pcscd", X_OK) != 0)
            GTEST_SKIP() << "needs root and pcscd, for a PC/SC service of the test's own in private namespaces";
        worldProcess_.reset(
            new ovo_test::ChildProcess("/usr/bin/unshare", {"-m", "-n", "--propagation", "private", "sh", "-c",
                                                            "ip link set lo up && mount -t tmpfs tmpfs /run && "
                                                            "mkdir /run/pcscd && echo $$ >" +
                                                                path("world") + " && exec sleep 600"}));
        ASSERT_TRUE(shows(path("world"), "\n"));
        world_ = std::to_string(std::stoi(ovo_test::readFile(path("world"))));
    }

    // The words of nsenter that run a program in the world.
    std::vector<std::string> inside(std::vector<std::string> words) const
    {
        words.insert(words.begin(), {"-t", world_, "-m", "-n"});
        return words;
    }
    ToolRun ovoInside(const std::vector<std::string>& args)
    {
        return ovoThrough("nsenter -t " + world_ + " -m -n ", args);
    }

    // The service, with the pid that a stop signal goes to; stopped at the end of the scope.
    struct Service {
        std::unique_ptr<ovo_test::ChildProcess> process;
        pid_t pid;
    };
    Service startService()
    {
        const std::string pidFile = path("service" + std::to_string(++services_));
        Service service{std::make_unique<ovo_test::ChildProcess>("/usr/bin/nsenter",
                                                                 inside({"sh", "-c",
                                                                         "rm -f /run/pcscd/* && echo $$ >" + pidFile +
                                                                             " && exec pcscd -f -a >/dev/null 2>&1"})),
                        0};
        EXPECT_TRUE(shows(pidFile, "\n"));
        service.pid = std::stoi(ovo_test::readFile(pidFile));
        return service;
    }

    // Stops the service as Ctrl-C does; one that a loaded machine holds in its shutdown for
    // ten seconds is killed: either way it is gone, as a service that stops.
    static void stopService(Service& service)
    {
        ::kill(service.pid, SIGINT);
        ovo_test::waitUntil(
            [&] {
                const std::string stat = ovo_test::readFile("/proc/" + std::to_string(service.pid) + "/stat");
                return stat.empty() || stat.find(") Z ") != std::string::npos;
            },
            std::chrono::seconds(10), milliseconds(20));
        service.process->kill();
    }

    std::unique_ptr<ovo_test::ChildProcess> worldProcess_;
    std::string world_; // its process id
    int services_ = 0;
};

TEST_F(OvoToolServiceTest, ReadersWatchWaitsOnceForTheServiceAndReportsWhatIsThereWhenItIsBack)
{
    ovo_test::ChildProcess watch("/usr/bin/nsenter", inside({ovo_test::siblingProgram("ovo"), "readers", "--watch"}),
                                 path("watch"));
    const auto reaches = [&](const std::string& text, std::size_t times) { // a text shown that many times
        return ovo_test::waitUntil(
            [&] { return ovo::SplitString(ovo_test::readFile(path("watch")), text, false).size() > times; },
            std::chrono::seconds(20), milliseconds(20));
    };
    const std::string waiting = "waiting for the service: ", added = "reader added: Virtual PCD 00 01\n";
    EXPECT_TRUE(reaches(waiting, 1));
    {
        Service first = startService();
        EXPECT_TRUE(reaches(added, 1));
        stopService(first);
    }
    EXPECT_TRUE(reaches(waiting, 2));
    std::this_thread::sleep_for(std::chrono::seconds(1)); // the watch asks again and again, and says nothing
    Service second = startService();
    EXPECT_TRUE(reaches(added, 2));
    EXPECT_EQ(watch.interrupt(), 0);

    const std::string shown =
        std::regex_replace(ovo_test::readFile(path("watch")), std::regex("(^|\n)\\d\\d:\\d\\d:\\d\\d\\.\\d{3} "), "$1");
    const std::string readers = "reader added: Virtual PCD 00 00\n" + added;
    const std::string gone = "reader removed: Virtual PCD 00 00\nreader removed: Virtual PCD 00 01\n" + waiting;
    const std::string notRunning = "the PC/SC service (pcscd) is not running; start it (SCard error 0x8010001D)\n";
    EXPECT_EQ(shown.rfind(waiting + notRunning, 0), 0u) << shown;
    // What the service's going says depends on where it found the watch.
    const std::string reason = "REASON (SCard error CODE)\n";
    EXPECT_EQ(std::regex_replace(shown, std::regex(": [^\n]+ \\(SCard error 0x8010[0-9A-F]{4}\\)\n"), ": " + reason),
              waiting + reason + readers + gone + reason + readers);
}

TEST_F(OvoToolServiceTest, ReadersEndWithinTheirBoundWhenTheServiceDoesNotAnswer)
{
    Service service = startService();
    EXPECT_TRUE(ovo_test::waitUntil([&] { return ovoInside({"readers"}).status == 0; }, std::chrono::seconds(20),
                                    milliseconds(200)));
    kill(service.pid, SIGSTOP);
    const ToolRun stopped = ovoInside({"readers"});
    kill(service.pid, SIGCONT);
    EXPECT_EQ(stopped, (ToolRun{1, "", "ovo readers: the PC/SC service (pcscd) did not answer within 5 seconds\n"}));
}

} // namespace
