// SerialIO over pseudo-terminal pairs, where the test needs the terminal's Linux side:
// paths that are no serial device, queues filled through the terminal, and the line's
// settings read back from it.
#include "serial_peer.h"

#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "support/failure_of.h"
#include "support/recording_channel.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

using namespace ovo::io;
using std::chrono::milliseconds;

namespace {

struct TermiosPair : testing::Test {
    SerialPeer peer;
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

// A write into full queues waits up to its total, for ever without one or past the clock's range; the device drains
// after 300 ms.
TEST_F(TermiosPair, WriteTimeOuts)
{
    const struct {
        SerialTimeouts timeouts;
        bool whole;
    } cases[] = {{{0, 0, 0, 0, maxDword}, true},
                 {{0, 0, 0, maxDword, maxDword}, true},
                 {{0, 0, 0, 200, 0}, false},
                 {{0, 0, 0, 0, 0}, true}};
    termios raw; // a line-editing master would drop what does not fit instead of holding it back
    ASSERT_EQ(::tcgetattr(peer.master(), &raw), 0);
    ::cfmakeraw(&raw);
    ASSERT_EQ(::tcsetattr(peer.master(), TCSANOW, &raw), 0);
    for (const auto& c : cases) {
        SerialIO port(peer.config(c.timeouts));
        ASSERT_EQ(::fcntl(peer.terminal(), F_SETFL, O_NONBLOCK), 0);
        std::size_t queued = 0; // until the kernel, moving bytes between its buffers, takes no more
        for (std::size_t before = 1; queued != before; std::this_thread::sleep_for(milliseconds(20)))
            for (ssize_t n = (before = queued, 0); (n = ::write(peer.terminal(), "filler", 6)) > 0;)
                queued += static_cast<std::size_t>(n);
        std::thread device([&] {
            std::this_thread::sleep_for(milliseconds(300));
            std::vector<char> drained(1 << 16);
            pollfd device{peer.master(), POLLIN, 0};
            for (std::size_t got = 0; c.whole && got < queued + 3000 && ::poll(&device, 1, 2000) == 1;)
                got += static_cast<std::size_t>(std::max<ssize_t>(0, ::read(peer.master(), drained.data(), drained.size())));
        });
        const std::vector<unsigned char> bytes(3000, 'w');
        EXPECT_EQ(port.send(bytes.data(), 3000) == 3000, c.whole);
        device.join();
        port.purge();
    }
}

// The kernel forces 8 data bits and no parity enable on a pseudo-terminal: the scripted suite checks those.
TEST_F(TermiosPair, ConfigureReachesTheLine)
{
    SerialIO port(peer.config({0, 0, 0, 0, 0}));
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
        port.config() = SerialConfig::fromString(std::string(step.text) + ";device=" + peer.portName());
        port.configure();
        ASSERT_EQ(::tcgetattr(peer.terminal(), &line), 0);
        EXPECT_EQ(cfgetospeed(&line), step.speed) << step.text;
        EXPECT_EQ(line.c_cflag & (PARODD | CSTOPB | CRTSCTS), step.cflags) << step.text;
        EXPECT_EQ(line.c_iflag & (IXON | IXOFF), step.iflags) << step.text;
    }
}
