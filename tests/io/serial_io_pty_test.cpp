// SerialIO over pseudo-terminal pairs: the test holds the master side and plays the device.
#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "support/failure_of.h"
#include "support/recording_channel.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

using namespace ovo::io;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

const unsigned int maxDword = 0xFFFFFFFFu;

class PtyPair : public testing::Test {
protected:
    void SetUp() override
    {
        char name[256] = {};
        ASSERT_EQ(::openpty(&master, &slave, name, nullptr, nullptr), 0);
        slaveName = name;
        logger.setLevel(1);
    }
    void TearDown() override { ::close(master), ::close(slave); }

    SerialConfig config(const SerialTimeouts& timeouts) const
    {
        SerialConfig c = SerialConfig::fromString("device=" + slaveName);
        c.setCommTimeouts(timeouts);
        return c;
    }
    void deviceSends(const std::string& bytes) const
    {
        ASSERT_EQ(::write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    int master = -1, slave = -1;
    std::string slaveName;
    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add("serial", channel);
};

} // namespace

// No terminal is opened: refused by the open when no character device (a FIFO would block), else by GetCommState.
TEST(SerialIO, WhatIsNoSerialDeviceIsNotOpened)
{
    ovo_test::TempDir dir;
    const std::string fifo = (dir.path() / "fifo").string();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const struct {
        std::string name, what, info;
    } cases[] = {{"ttyOVO_NONE", "can't open 'ttyOVO_NONE'. error = 2", "openDevice( 'ttyOVO_NONE' ) failed: 2"},
                 {fifo, "can't open '" + fifo + "'. error = 5", "openDevice( '" + fifo + "' ) failed: 5"},
                 {"/dev/null", "::GetCommState( '/dev/null' ) failed. error = 1", "openDevice( '/dev/null' ) OK"}};
    for (const auto& c : cases) {
        auto channel = std::make_shared<ovo_test::RecordingChannel>();
        EXPECT_EQ(ovo_test::failureOf([&] {
                      SerialIO port(SerialConfig::fromString("device=" + c.name),
                                    ovo::logger::add("serial.none", channel));
                  }),
                  c.what);
        EXPECT_EQ(channel->messages(), std::vector<std::string>{c.info});
    }
}

// How long a read of `asked` bytes waits, by its time-outs: the device sends `sent` bytes after `delay` ms.
TEST_F(PtyPair, ReadTimeOuts)
{
    const struct {
        const char* rule;
        SerialTimeouts timeouts;
        unsigned int asked, sent, delay, got, atLeast, atMost;
    } cases[] = {
        {"interval after the last byte, then the total", {50, 200, 0, 0, 0}, 10, 4, 0, 4, 240, 600},
        {"total with nothing to read", {0, 100, 0, 0, 0}, 4, 0, 0, 0, 95, 400},
        {"MAXDWORD interval, zero totals: at once", {maxDword, 0, 0, 0, 0}, 8, 0, 0, 0, 0, 50},
        {"first byte or constant", {maxDword, 200, maxDword, 0, 0}, 10, 2, 100, 2, 280, 700},
        {"all zero: until the request is met", {0, 0, 0, 0, 0}, 3000, 3000, 300, 3000, 290, 1500},
        {"a total at the clock's range", {0, 1854, 3074457345u, 0, 0}, 3000, 3000, 300, 3000, 290, 1500},
        {"a total past the clock's range", {0, 0, maxDword, 0, 0}, 3000, 3000, 300, 3000, 290, 1500},
        {"the largest total", {0, maxDword, maxDword, 0, 0}, 3000, 3000, 300, 3000, 290, 1500},
    };
    for (const auto& c : cases) {
        SerialIO port(config(c.timeouts));
        std::thread device([&] {
            std::this_thread::sleep_for(milliseconds(c.delay));
            deviceSends(std::string(c.sent, 'x'));
        });
        std::vector<unsigned char> buffer(c.asked);
        const auto start = Clock::now();
        EXPECT_EQ(port.recv(buffer.data(), c.asked), c.got) << c.rule;
        const auto took = Clock::now() - start;
        device.join();
        EXPECT_GE(took, milliseconds(c.atLeast)) << c.rule;
        EXPECT_LE(took, milliseconds(c.atMost)) << c.rule;
        port.purge();
    }
}

// A write into full queues waits up to its total, for ever past the clock's range; the device drains after 300 ms.
TEST_F(PtyPair, WriteTimeOuts)
{
    const struct {
        SerialTimeouts timeouts;
        bool whole;
    } cases[] = {{{0, 0, 0, 0, maxDword}, true}, {{0, 0, 0, maxDword, maxDword}, true}, {{0, 0, 0, 200, 0}, false}};
    termios raw; // a line-editing master would drop what does not fit instead of holding it back
    ASSERT_EQ(::tcgetattr(master, &raw), 0);
    ::cfmakeraw(&raw);
    ASSERT_EQ(::tcsetattr(master, TCSANOW, &raw), 0);
    for (const auto& c : cases) {
        SerialIO port(config(c.timeouts));
        ASSERT_EQ(::fcntl(slave, F_SETFL, O_NONBLOCK), 0);
        std::size_t queued = 0; // until the kernel, moving bytes between its buffers, takes no more
        for (std::size_t before = 1; queued != before; std::this_thread::sleep_for(milliseconds(20)))
            for (ssize_t n = (before = queued, 0); (n = ::write(slave, "filler", 6)) > 0;)
                queued += static_cast<std::size_t>(n);
        std::thread device([&] {
            std::this_thread::sleep_for(milliseconds(300));
            std::vector<char> drained(1 << 16);
            pollfd peer{master, POLLIN, 0};
            for (std::size_t got = 0; c.whole && got < queued + 3000 && ::poll(&peer, 1, 2000) == 1;)
                got += static_cast<std::size_t>(std::max<ssize_t>(0, ::read(master, drained.data(), drained.size())));
        });
        const std::vector<unsigned char> bytes(3000, 'w');
        EXPECT_EQ(port.send(bytes.data(), 3000) == 3000, c.whole);
        device.join();
        port.purge();
    }
}

TEST_F(PtyPair, OpensExclusivelyTransfersInAttemptsAndPurges)
{
    SerialIO port(config({40, 300, 0, 0, 0}), logger);
    EXPECT_THROW(SerialIO second(config({0, 0, 0, 0, 0})), std::runtime_error);
    EXPECT_EQ(port.send(reinterpret_cast<const unsigned char*>("\x02\x10\x03"), 3), 3u);
    char received[4] = {};
    ASSERT_EQ(::read(master, received, 4), 3);
    std::thread device([&] {
        deviceSends("ABCD");
        std::this_thread::sleep_for(milliseconds(150)); // past the interval: a second attempt
        deviceSends("EFGHIJ");
    });
    unsigned char buffer[10] = {};
    EXPECT_EQ(port.recv(buffer, 10), 10u);
    device.join();
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 10), "ABCDEFGHIJ");
    EXPECT_EQ(channel->messages(),
              (std::vector<std::string>{
                  "openDevice( '" + slaveName + "' ) OK",
                  "send -> [ 3 ]: \n02 10 03" + std::string(40, ' ') + "| ..." + std::string(13, ' '),
                  "recv <- [ 4 of 10 ]: \n41 42 43 44" + std::string(37, ' ') + "| ABCD" + std::string(12, ' '),
                  "recv <- [ 6 ]: \n45 46 47 48 49 4A" + std::string(31, ' ') + "| EFGHIJ" + std::string(10, ' ')}));
    logger.setLevel(0); // no transfer traces
    deviceSends("0123456789");
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_EQ(port.recv(buffer, 2), 2u);
    EXPECT_EQ(port.available(), 8u);
    port.purge();
    EXPECT_EQ(port.available(), 0u);
    EXPECT_EQ(port.recv(buffer, 10), 0u);
    EXPECT_EQ(channel->messages().size(), 4u);
}

// The kernel forces 8 data bits and no parity enable on a pseudo-terminal: the scripted suite checks those.
TEST_F(PtyPair, ConfigureReachesTheLine)
{
    SerialIO port(config({0, 0, 0, 0, 0}));
    const struct {
        const char* text;
        speed_t speed;
        tcflag_t cflags, iflags;
    } steps[] = {
        {"baud=19200;parity=odd;stop=2;flow=hardware", B19200, PARODD | CSTOPB | CRTSCTS, 0},
        {"parity=even;stop=1;flow=software", B19200, 0, IXON | IXOFF}, // no baud: the speed stays
        {"flow=off;baud=115200", B115200, 0, 0},
    };
    termios line;
    for (const auto& step : steps) {
        port.config() = SerialConfig::fromString(std::string(step.text) + ";device=" + slaveName);
        port.configure();
        ASSERT_EQ(::tcgetattr(slave, &line), 0);
        EXPECT_EQ(cfgetospeed(&line), step.speed) << step.text;
        EXPECT_EQ(line.c_cflag & (PARODD | CSTOPB | CRTSCTS), step.cflags) << step.text;
        EXPECT_EQ(line.c_iflag & (IXON | IXOFF), step.iflags) << step.text;
    }
}

TEST_F(PtyPair, VanishedDeviceGivesShortCountsNotAHang)
{
    SerialIO port(config({0, 0, 0, 0, 0})); // all zero: a read would wait for every byte
    deviceSends("ab");
    std::thread device([&] { std::this_thread::sleep_for(milliseconds(50)), ::close(master), master = -1; });
    unsigned char buffer[10] = {};
    EXPECT_EQ(port.recv(buffer, 10), 2u);
    device.join();
    EXPECT_EQ(port.recv(buffer, 10), 0u);
    EXPECT_EQ(port.send(buffer, 4), 0u);
}
