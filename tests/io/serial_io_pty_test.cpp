// SerialIO on the POSIX layer over pseudo-terminal pairs: the test holds the master side
// and plays the device.
#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <termios.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ovo::io;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

class PtyPair : public testing::Test {
protected:
    void SetUp() override
    {
        char name[256] = {};
        ASSERT_EQ(::openpty(&master, &slave, name, nullptr, nullptr), 0);
        slaveName = name;
        const std::string loggerName =
            std::string("serial.") + testing::UnitTest::GetInstance()->current_test_info()->name();
        logger = &ovo::logger::add(loggerName, channel);
        logger->setLevel(1);
    }
    void TearDown() override
    {
        if (master >= 0)
            ::close(master);
        ::close(slave);
    }

    SerialConfig config(unsigned int interval, unsigned int constant) const
    {
        SerialConfig c;
        c.setDeviceName(slaveName);
        c.setCommTimeouts({interval, constant, 0, 0, 0});
        c.setBuffersSize({4096, 4096});
        return c;
    }

    void deviceSends(const std::string& bytes) const
    {
        ASSERT_EQ(::write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    std::vector<std::string> titles() const
    {
        std::vector<std::string> result;
        for (const std::string& message : channel->messages())
            result.push_back(message.substr(0, message.find('\n')));
        return result;
    }

    int master = -1;
    int slave = -1;
    std::string slaveName;
    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger* logger = nullptr;
};

} // namespace

TEST_F(PtyPair, OpenReportsToInfo)
{
    SerialIO port(config(0, 0), *logger);
    EXPECT_EQ(channel->messages(), std::vector<std::string>{"openDevice( '" + slaveName + "' ) OK"});
}

TEST(SerialIO, MissingDeviceGivesTheSameCodeInBothMessages)
{
    auto channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add("serial.missing", channel);
    SerialConfig config;
    config.setDeviceName("ttyOVO_NONE");
    try {
        SerialIO port(config, logger);
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "can't open 'ttyOVO_NONE'. error = 2");
    }
    EXPECT_EQ(channel->messages(), std::vector<std::string>{"openDevice( 'ttyOVO_NONE' ) failed: 2"});
}

TEST(SerialIO, DeviceThatIsNoTerminalFailsInGetCommState)
{
    SerialConfig config;
    config.setDeviceName("/dev/null");
    try {
        SerialIO port(config);
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "::GetCommState( '/dev/null' ) failed. error = 1");
    }
}

TEST_F(PtyPair, SecondOpenIsRefused)
{
    SerialIO first(config(0, 0));
    EXPECT_THROW(SerialIO second(config(0, 0)), std::runtime_error);
}

TEST_F(PtyPair, ReadInSeveralAttemptsTracesEach)
{
    SerialIO port(config(40, 0), *logger);
    std::thread device([&] {
        deviceSends("ABCD");
        std::this_thread::sleep_for(milliseconds(150));
        deviceSends("EFGHIJ");
    });
    unsigned char buffer[10] = {};
    EXPECT_EQ(port.recv(buffer, 10), 10u);
    device.join();
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 10), "ABCDEFGHIJ");
    EXPECT_EQ(titles(), (std::vector<std::string>{"openDevice( '" + slaveName + "' ) OK", "recv <- [ 4 of 10 ]: ",
                                                  "recv <- [ 6 ]: "}));
    ASSERT_EQ(channel->messages().size(), 3u);
    EXPECT_EQ(channel->messages()[1], "recv <- [ 4 of 10 ]: \n41 42 43 44" + std::string(37, ' ') + "| ABCD" +
                                          std::string(12, ' '));
}

TEST_F(PtyPair, IntervalAndTotalTimeOutsEndAShortRead)
{
    SerialIO port(config(50, 200), *logger);
    deviceSends("1234");
    unsigned char buffer[10] = {};
    const auto start = Clock::now();
    // The first attempt ends 50 ms after the last byte, the second after its 200 ms.
    EXPECT_EQ(port.recv(buffer, 10), 4u);
    const auto took = Clock::now() - start;
    EXPECT_GE(took, milliseconds(240));
    EXPECT_LE(took, milliseconds(600));
    EXPECT_EQ(titles().back(), "recv <- [ 4 of 10 ]: ");
}

TEST_F(PtyPair, TotalTimeOutWithNothingToRead)
{
    SerialIO port(config(0, 100), *logger);
    unsigned char buffer[4] = {};
    const auto start = Clock::now();
    EXPECT_EQ(port.recv(buffer, 4), 0u);
    const auto took = Clock::now() - start;
    EXPECT_GE(took, milliseconds(95));
    EXPECT_LE(took, milliseconds(400));
    EXPECT_EQ(channel->messages().size(), 1u) << "no trace for an attempt that brought nothing";
}

TEST_F(PtyPair, MaxIntervalWithZeroTotalsReturnsAtOnce)
{
    SerialIO port(config(0xFFFFFFFFu, 0));
    unsigned char buffer[8] = {};
    const auto start = Clock::now();
    EXPECT_EQ(port.recv(buffer, 8), 0u);
    EXPECT_LE(Clock::now() - start, milliseconds(50));
    deviceSends("xyz");
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_EQ(port.recv(buffer, 8), 3u);
}

TEST_F(PtyPair, SendTracesAndArrives)
{
    SerialIO port(config(0, 100), *logger);
    const unsigned char bytes[] = {0x02, 0x10, 0x03};
    EXPECT_EQ(port.send(bytes, 3), 3u);
    EXPECT_EQ(port.send(bytes, 0), 0u);
    char received[3] = {};
    ASSERT_EQ(::read(master, received, 3), 3);
    EXPECT_EQ(std::string(received, 3), std::string("\x02\x10\x03", 3));
    EXPECT_EQ(titles().back(), "send -> [ 3 ]: ");
    EXPECT_EQ(channel->messages().size(), 2u);
}

TEST_F(PtyPair, LevelZeroShowsTheOpenOnly)
{
    logger->setLevel(0);
    SerialIO port(config(0, 50), *logger);
    deviceSends("ab");
    unsigned char buffer[2];
    EXPECT_EQ(port.recv(buffer, 2), 2u);
    EXPECT_EQ(channel->messages().size(), 1u);
}

TEST_F(PtyPair, AvailableCountsAndPurgeDiscards)
{
    SerialIO port(config(0, 50));
    EXPECT_EQ(port.available(), 0u);
    deviceSends("0123456789");
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_EQ(port.available(), 10u);
    port.purge();
    EXPECT_EQ(port.available(), 0u);
    unsigned char buffer[10];
    EXPECT_EQ(port.recv(buffer, 10), 0u);
}

// A pseudo-terminal keeps 8 data bits and no parity enable whatever it is told (the
// kernel forces them); the fake-based suite checks those fields of the DCB instead.
TEST_F(PtyPair, ConfigureReachesTheLine)
{
    SerialIO port(config(0, 0));
    termios line;
    port.config() = SerialConfig::fromString("baud=19200;data=7;parity=odd;stop=2;flow=hardware;device=" + slaveName);
    ASSERT_EQ(::tcgetattr(slave, &line), 0);
    EXPECT_NE(cfgetospeed(&line), B19200) << "nothing changes before configure";

    port.configure();
    ASSERT_EQ(::tcgetattr(slave, &line), 0);
    EXPECT_EQ(cfgetospeed(&line), B19200);
    EXPECT_NE(line.c_cflag & PARODD, 0u);
    EXPECT_NE(line.c_cflag & CSTOPB, 0u);
    EXPECT_NE(line.c_cflag & CRTSCTS, 0u);
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF), 0u);

    port.config().setFlowControl(flowSoftware);
    port.config().setParity(parityEven);
    port.config().setStopBits(stopBits1);
    port.config().setBaudRate(0); // not given: the line keeps its speed
    port.configure();
    ASSERT_EQ(::tcgetattr(slave, &line), 0);
    EXPECT_EQ(cfgetospeed(&line), B19200);
    EXPECT_EQ(line.c_cflag & CRTSCTS, 0u);
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF), static_cast<tcflag_t>(IXON | IXOFF));
    EXPECT_EQ(line.c_cflag & PARODD, 0u);
    EXPECT_EQ(line.c_cflag & CSTOPB, 0u);

    port.config().setBaudRate(115200);
    port.config().setFlowControl(flowOff);
    port.configure();
    ASSERT_EQ(::tcgetattr(slave, &line), 0);
    EXPECT_EQ(cfgetospeed(&line), B115200);
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF), 0u);
}

TEST_F(PtyPair, VanishedDeviceGivesShortCountsNotAHang)
{
    SerialIO port(config(0, 0)); // all zero: a read would wait for every byte
    std::thread device([&] {
        deviceSends("ab");
        std::this_thread::sleep_for(milliseconds(50));
        ::close(master);
        master = -1;
    });
    unsigned char buffer[10] = {};
    const auto start = Clock::now();
    EXPECT_EQ(port.recv(buffer, 10), 2u);
    device.join();
    EXPECT_LE(Clock::now() - start, milliseconds(1000));
    EXPECT_EQ(port.recv(buffer, 10), 0u);
    EXPECT_EQ(port.send(buffer, 4), 0u);
}
