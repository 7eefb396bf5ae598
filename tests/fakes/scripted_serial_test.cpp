// SerialIO against scripted serial calls: the exact arguments it gives the platform and
// its answers to failures that no real port produces on demand.
#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "fakes/scripted_serial.h"
#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ovo::io;
using ovo_fake::serialScript;

namespace {

// The DCB's flag word stands at byte 8; ByteSize, Parity and StopBits at 18, 19 and 20.
std::uint32_t flagsOf(const std::vector<unsigned char>& dcb)
{
    std::uint32_t flags;
    std::memcpy(&flags, dcb.data() + 8, 4);
    return flags;
}

std::uint32_t baudOf(const std::vector<unsigned char>& dcb)
{
    std::uint32_t baud;
    std::memcpy(&baud, dcb.data() + 4, 4);
    return baud;
}

void setDeviceFlags(std::uint32_t flags) { std::memcpy(serialScript().deviceDcb.data() + 8, &flags, 4); }

class ScriptedPort : public testing::Test {
protected:
    void SetUp() override
    {
        ovo_fake::resetSerialScript();
        const std::string name = std::string("fake.") + testing::UnitTest::GetInstance()->current_test_info()->name();
        logger = &ovo::logger::add(name, channel);
        logger->setLevel(1);
    }

    static SerialConfig named(const std::string& text) { return SerialConfig::fromString("device=COM3;" + text); }

    std::vector<std::string> titles() const
    {
        std::vector<std::string> result;
        for (const std::string& message : channel->messages())
            if (message.compare(0, 4, "open") != 0)
                result.push_back(message.substr(0, message.find('\n')));
        return result;
    }

    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger* logger = nullptr;
};

} // namespace

TEST_F(ScriptedPort, OpensExclusivelyAndConfiguresInOrder)
{
    SerialIO port(named(""), *logger);
    EXPECT_EQ(serialScript().openedPath, "\\\\.\\COM3");
    EXPECT_EQ(serialScript().openedAccess, 0xC0000000u);
    EXPECT_EQ(serialScript().openedShare, 0u);
    EXPECT_EQ(serialScript().openedDisposition, 3u);
    EXPECT_EQ(serialScript().openedAttributes, 0x80u);
    EXPECT_EQ(serialScript().calls,
              (std::vector<std::string>{"CreateFileA", "GetCommState", "SetCommState", "SetCommTimeouts", "SetupComm"}));
    // Nothing given: the device's own block goes back unchanged.
    ASSERT_EQ(serialScript().dcbsSet.size(), 1u);
    EXPECT_EQ(serialScript().dcbsSet[0], serialScript().deviceDcb);
    EXPECT_EQ(channel->messages(), std::vector<std::string>{"openDevice( 'COM3' ) OK"});
}

TEST_F(ScriptedPort, OpenFailureReportsTheCodeTwice)
{
    serialScript().openError = 5;
    try {
        SerialIO port(named(""), *logger);
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "can't open 'COM3'. error = 5");
    }
    EXPECT_EQ(channel->messages(), std::vector<std::string>{"openDevice( 'COM3' ) failed: 5"});
    EXPECT_EQ(serialScript().closes, 0);
}

TEST_F(ScriptedPort, GetCommStateFailureClosesTheDeviceAgain)
{
    serialScript().getStateError = 31;
    try {
        SerialIO port(named(""), *logger);
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "::GetCommState( 'COM3' ) failed. error = 31");
    }
    EXPECT_EQ(serialScript().closes, 1);
    EXPECT_TRUE(serialScript().dcbsSet.empty());
}

TEST_F(ScriptedPort, LineSettingsInTheBlock)
{
    const struct {
        const char* text;
        std::uint32_t baud;
        int byteSize, parity, stopBits;
    } cases[] = {
        {"baud=115200;data=5;parity=even;stop=1", 115200, 5, 2, 0},
        {"baud=250000;data=6;parity=odd;stop=1.5", 250000, 6, 1, 1},
        {"data=7;parity=none;stop=2", 9600, 7, 0, 2},
        {"data=8", 9600, 8, 0, 0},
    };
    for (const auto& c : cases) {
        ovo_fake::resetSerialScript();
        serialScript().deviceDcb[19] = 4; // a parity of the device's own that only a setting replaces
        SerialIO port(named(c.text));
        const std::vector<unsigned char>& dcb = serialScript().dcbsSet.at(0);
        EXPECT_EQ(baudOf(dcb), c.baud) << c.text;
        EXPECT_EQ(dcb[18], c.byteSize) << c.text;
        EXPECT_EQ(dcb[19], std::string(c.text).find("parity") == std::string::npos ? 4 : c.parity) << c.text;
        EXPECT_EQ(dcb[20], c.stopBits) << c.text;
        EXPECT_EQ(flagsOf(dcb), 0u) << "no flag changes without flow control";
    }
}

TEST_F(ScriptedPort, FlowControlMasks)
{
    const std::uint32_t deviceFlags = 0x0000C0F3u; // fBinary, fParity, DSR and DTR flags, nothing of the four
    const struct {
        FlowControl flow;
        std::uint32_t cleared, set;
    } cases[] = {{flowOff, 0x3304, 0}, {flowSoftware, 0x3004, 0x0300}, {flowHardware, 0x0300, 0x3004}};
    for (const auto& c : cases) {
        for (std::uint32_t start : {deviceFlags, deviceFlags | 0x3304u}) {
            ovo_fake::resetSerialScript();
            setDeviceFlags(start);
            SerialConfig config = named("");
            config.setFlowControl(c.flow);
            SerialIO port(config);
            EXPECT_EQ(flagsOf(serialScript().dcbsSet.at(0)), (start & ~c.cleared) | c.set) << c.flow;
        }
    }
}

TEST_F(ScriptedPort, HardwareThenOffBringsRtsControlFromThreeToZero)
{
    SerialIO port(named("flow=hardware"));
    EXPECT_EQ((flagsOf(serialScript().dcbsSet.at(0)) >> 12) & 3u, 3u);
    // The fake device keeps delivering its own block; what matters is what configure sets.
    setDeviceFlags(flagsOf(serialScript().dcbsSet.at(0)));
    port.config().setFlowControl(flowOff);
    port.configure();
    EXPECT_EQ((flagsOf(serialScript().dcbsSet.at(1)) >> 12) & 3u, 0u);
}

TEST_F(ScriptedPort, TimeOutsAndQueueSizesAlwaysGo)
{
    SerialConfig config = named("");
    config.setCommTimeouts({1, 2, 3, 4, 5});
    config.setBuffersSize({4096, 1024});
    SerialIO port(config);
    ASSERT_EQ(serialScript().timeoutsSet.size(), 1u);
    const ovo_fake::Timeouts& t = serialScript().timeoutsSet[0];
    EXPECT_EQ(t.readInterval, 1u);
    EXPECT_EQ(t.readConstant, 2u);
    EXPECT_EQ(t.readMultiplier, 3u);
    EXPECT_EQ(t.writeConstant, 4u);
    EXPECT_EQ(t.writeMultiplier, 5u);
    EXPECT_EQ(serialScript().queueSizes, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{{4096, 1024}}));
}

TEST_F(ScriptedPort, ReadAttemptsAndTheirTraces)
{
    SerialIO port(named(""), *logger);
    unsigned char buffer[16] = {};

    serialScript().reads = {{true, 1, "a"}, {true, 1, "b"}, {true, 1, "c"}};
    EXPECT_EQ(port.recv(buffer, 3), 3u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 3), "abc");
    EXPECT_EQ(serialScript().readSizes, (std::vector<std::uint32_t>{3, 2, 1}));
    EXPECT_EQ(titles(), (std::vector<std::string>{"recv <- [ 1 of 3 ]: ", "recv <- [ 1 of 2 ]: ", "recv <- [ 1 ]: "}));

    // A failure on a later attempt keeps what came before.
    serialScript().reads = {{true, 4, "WXYZ"}, {false, 0, ""}};
    EXPECT_EQ(port.recv(buffer, 10), 4u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 4), "WXYZ");
    EXPECT_EQ(titles().back(), "recv <- [ 4 of 10 ]: ");

    // A failure or nothing on the first attempt: 0 and no trace.
    const std::size_t traced = titles().size();
    serialScript().reads = {{false, 0, ""}};
    EXPECT_EQ(port.recv(buffer, 5), 0u);
    serialScript().reads = {{true, 0, ""}};
    EXPECT_EQ(port.recv(buffer, 0), 0u);
    EXPECT_EQ(serialScript().readSizes.back(), 0u) << "the call is made for size 0 too";
    EXPECT_EQ(titles().size(), traced);
}

TEST_F(ScriptedPort, SendAttemptsAndTheirTraces)
{
    SerialIO port(named(""), *logger);
    const unsigned char bytes[6] = {1, 2, 3, 4, 5, 6};
    serialScript().writes = {{true, 2, ""}, {true, 4, ""}};
    EXPECT_EQ(port.send(bytes, 6), 6u);
    EXPECT_EQ(serialScript().writeSizes, (std::vector<std::uint32_t>{6, 4}));
    EXPECT_EQ(titles(), (std::vector<std::string>{"send -> [ 2 of 6 ]: ", "send -> [ 4 ]: "}));
    EXPECT_EQ(channel->messages().back(), "send -> [ 4 ]: \n03 04 05 06" + std::string(37, ' ') + "| ...." +
                                              std::string(12, ' '));

    serialScript().writes = {{true, 3, ""}, {false, 0, ""}};
    EXPECT_EQ(port.send(bytes, 6), 3u);
}

TEST_F(ScriptedPort, AvailableAndPurge)
{
    SerialIO port(named(""));
    serialScript().inQueue = 17;
    EXPECT_EQ(port.available(), 17u);
    serialScript().statusFails = true;
    EXPECT_EQ(port.available(), 0u);
    port.purge();
    EXPECT_EQ(serialScript().purges, std::vector<std::uint32_t>{12});
}

TEST_F(ScriptedPort, ConfigChangesWaitForConfigure)
{
    SerialIO port(named("baud=9600"));
    port.config().setBaudRate(57600);
    port.config().setDeviceName("COM9"); // shows in messages only, the handle stays
    EXPECT_EQ(serialScript().dcbsSet.size(), 1u);
    port.configure();
    ASSERT_EQ(serialScript().dcbsSet.size(), 2u);
    EXPECT_EQ(baudOf(serialScript().dcbsSet[1]), 57600u);
    EXPECT_EQ(serialScript().calls.front(), "CreateFileA");
    EXPECT_EQ(std::count(serialScript().calls.begin(), serialScript().calls.end(), "CreateFileA"), 1);
}

TEST_F(ScriptedPort, DestructorClosesTheDevice)
{
    {
        SerialIO port(named(""));
        EXPECT_EQ(serialScript().closes, 0);
    }
    EXPECT_EQ(serialScript().closes, 1);
}
