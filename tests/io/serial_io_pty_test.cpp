// SerialIO over a real line, a pseudo-terminal, whose device end the test plays (see serial_peer.h): on Linux, and
// as a Windows program under Wine through a COM port. (What waits and its purge: the Python package's case.)
#include "serial_peer.h"

#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <thread>

using namespace ovo::io;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

class PtyPair : public testing::Test {
protected:
    void SetUp() override { logger.setLevel(1); }

    SerialPeer peer;
    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add("serial", channel);
};

} // namespace

// How long a read of `asked` bytes waits, by its time-outs: the device sends `sent` bytes after `delay` ms.
TEST_F(PtyPair, ReadTimeOuts)
{
    const struct {
        const char* rule;
        SerialTimeouts timeouts;
        unsigned int asked, sent, delay, got, atLeast, atMost;
        const char* wine = nullptr; // how Wine differs, where it does
    } cases[] = {
        {"interval after the last byte, then the total", {50, 200, 0, 0, 0}, 10, 4, 0, 4, 240, 600},
        {"the total before a longer interval", {2000, 200, 0, 0, 0}, 10, 4, 0, 4, 390, 1500},
        {"total with nothing to read", {0, 100, 0, 0, 0}, 4, 0, 0, 0, 95, 400},
        {"MAXDWORD interval, zero totals: at once", {maxDword, 0, 0, 0, 0}, 8, 0, 0, 0, 0, 50},
        {"first byte or constant", {maxDword, 200, maxDword, 0, 0}, 10, 2, 100, 2, 280, 700},
        {"first byte, then the constant", {maxDword, 1000, maxDword, 0, 0}, 10, 2, 100, 2, 1050, 1800,
         "Wine's read goes on past the first byte to the constant; Windows returns with it"},
        {"all zero: until the request is met", {0, 0, 0, 0, 0}, 3000, 3000, 300, 3000, 290, 1500},
        {"a total a second short of the clock's range", {0, 854, 3074457345u, 0, 0}, 3000, 3000, 300, 3000, 290, 1500},
        {"multiplier x bytes past 32 bits", {0, 0, 2147483648u, 0, 0}, 2, 2, 300, 2, 290, 1500,
         "Wine works multiplier x bytes out in 32 bits, which wrap to 0 here: it returns at once; Windows waits"},
        {"a total past the clock's range", {0, 0, maxDword, 0, 0}, 3000, 3000, 300, 3000, 290, 1500,
         "Wine returns at once with nothing for a total constant of MAXDWORD alone; Windows waits its total"},
        {"the largest total", {0, maxDword, maxDword, 0, 0}, 3000, 3000, 300, 3000, 290, 1500},
    };
    std::string wineDifferences;
    for (const auto& c : cases) {
        if (c.wine != nullptr && SerialPeer::underWine()) {
            wineDifferences += std::string(c.rule) + ": " + c.wine + ". ";
            continue;
        }
        SerialIO port(peer.config(c.timeouts));
        std::thread device(
            [&] { std::this_thread::sleep_for(milliseconds(c.delay)), peer.send(std::string(c.sent, 'x')); });
        std::vector<unsigned char> buffer(c.asked);
        const auto start = Clock::now();
        EXPECT_EQ(port.recv(buffer.data(), c.asked), c.got) << c.rule;
        const auto took = Clock::now() - start;
        device.join();
        EXPECT_GE(took, milliseconds(c.atLeast)) << c.rule;
        EXPECT_LE(took, milliseconds(c.atMost)) << c.rule;
        port.purge();
    }
    if (!wineDifferences.empty())
        GTEST_SKIP() << wineDifferences;
}

TEST_F(PtyPair, OpensExclusivelyAndTransfersInAttempts)
{
    SerialIO port(peer.config({40, 300, 0, 0, 0}), logger);
    if (!SerialPeer::underWine()) { // see the end
        EXPECT_THROW(SerialIO second(peer.config({0, 0, 0, 0, 0})), std::runtime_error);
    }
    EXPECT_EQ(port.send(reinterpret_cast<const unsigned char*>("\x02\x10\x03"), 3), 3u);
    EXPECT_EQ(peer.receive(4), "\x02\x10\x03");
    std::thread device([&] {
        peer.send("ABCD");
        std::this_thread::sleep_for(milliseconds(150)); // past the interval: a second attempt
        peer.send("EFGHIJ");
    });
    unsigned char buffer[10] = {};
    EXPECT_EQ(port.recv(buffer, 10), 10u);
    device.join();
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 10), "ABCDEFGHIJ");
    EXPECT_EQ(channel->messages(),
              (std::vector<std::string>{
                  "openDevice( '" + peer.portName() + "' ) OK",
                  "send -> [ 3 ]: \n02 10 03" + std::string(40, ' ') + "| ..." + std::string(13, ' '),
                  "recv <- [ 4 of 10 ]: \n41 42 43 44" + std::string(37, ' ') + "| ABCD" + std::string(12, ' '),
                  "recv <- [ 6 ]: \n45 46 47 48 49 4A" + std::string(31, ' ') + "| EFGHIJ" + std::string(10, ' ')}));
    if (SerialPeer::underWine())
        GTEST_SKIP() << "exclusive open: Wine opens a port a second time, which Windows refuses (ERROR_ACCESS_DENIED)";
}

TEST_F(PtyPair, VanishedDeviceGivesShortCountsNotAHang)
{
    if (SerialPeer::underWine())
        GTEST_SKIP() << "Wine's read keeps waiting on a terminal whose device end closed: a hang-up never ends it";
    SerialIO port(peer.config({0, 0, 0, 0, 0})); // all zero: a read would wait for every byte
    peer.send("ab");
    std::thread device([&] { std::this_thread::sleep_for(milliseconds(50)), peer.goAway(); });
    unsigned char buffer[10] = {};
    EXPECT_EQ(port.recv(buffer, 10), 2u);
    device.join();
    EXPECT_EQ(port.recv(buffer, 10), 0u);
    EXPECT_EQ(port.send(buffer, 4), 0u);
}
