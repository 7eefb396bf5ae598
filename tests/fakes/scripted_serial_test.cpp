// SerialIO against scripted serial calls: the exact arguments it gives the platform and
// its answers to failures that no real port produces on demand.
#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "fakes/scripted_serial.h"
#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ovo::io;
using ovo_fake::serialScript;
using Calls = std::vector<std::string>;

namespace {

// The DCB's baud rate stands at byte 4, its flag word at 8; ByteSize, Parity, StopBits at 18 to 20.
std::uint32_t wordAt(const std::vector<unsigned char>& dcb, std::size_t at)
{
    std::uint32_t word;
    std::memcpy(&word, dcb.data() + at, 4);
    return word;
}

class ScriptedPort : public testing::Test {
protected:
    void SetUp() override { ovo_fake::resetSerialScript(); }

    static SerialConfig named(const std::string& text) { return SerialConfig::fromString("device=COM3;" + text); }

    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add("fake.serial", channel);
};

} // namespace

TEST_F(ScriptedPort, CallsInOrderAndAFailingStateClosesTheDeviceAgain)
{
    SerialConfig config = named("");
    config.setCommTimeouts({1, 2, 3, 4, 5});
    config.setBuffersSize({4096, 1024});
    {
        SerialIO port(config);
        port.purge();
        serialScript().inQueue = 17;
        EXPECT_EQ(port.available(), 17u);
        serialScript().statusFails = true;
        EXPECT_EQ(port.available(), 0u);
    }
    const std::string open = "CreateFileA(\\\\.\\COM3, 3221225472, 0, 3, 128)";
    EXPECT_EQ(serialScript().calls,
              (Calls{open, "GetCommState", "SetCommState", "SetCommTimeouts(1, 3, 2, 5, 4)", "SetupComm(4096, 1024)",
                     "PurgeComm(12)", "ClearCommError", "ClearCommError", "CloseHandle"}));
    EXPECT_EQ(serialScript().dcbsSet, std::vector<std::vector<unsigned char>>{serialScript().deviceDcb})
        << "nothing given: the device's own block goes back unchanged";

    ovo_fake::resetSerialScript();
    serialScript().getStateError = 31;
    try {
        SerialIO port(named(""));
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "::GetCommState( 'COM3' ) failed. error = 31");
    }
    EXPECT_EQ(serialScript().calls, (Calls{open, "GetCommState", "CloseHandle"}));
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
        {"data=8", 9600, 8, 4, 0}, // no parity given: the device's own stays
    };
    for (const auto& c : cases) {
        ovo_fake::resetSerialScript();
        serialScript().deviceDcb[19] = 4;
        SerialIO port(named(c.text));
        const std::vector<unsigned char>& dcb = serialScript().dcbsSet.at(0);
        EXPECT_EQ(wordAt(dcb, 4), c.baud) << c.text;
        EXPECT_EQ((std::vector<int>{dcb[18], dcb[19], dcb[20]}), (std::vector<int>{c.byteSize, c.parity, c.stopBits}))
            << c.text;
        EXPECT_EQ(wordAt(dcb, 8), 0u) << c.text << ": no flag changes without flow control";
    }
}

TEST_F(ScriptedPort, FlowControlMasks)
{
    const std::uint32_t deviceFlags = 0x0000C0F3u; // fBinary, fParity, DSR and DTR flags, nothing of the four
    const struct {
        FlowControl flow;
        std::uint32_t cleared, set;
    } cases[] = {{flowOff, 0x3304, 0}, {flowSoftware, 0x3004, 0x0300}, {flowHardware, 0x0300, 0x3004}};
    for (const auto& c : cases)
        for (std::uint32_t start : {deviceFlags, deviceFlags | 0x3304u}) {
            ovo_fake::resetSerialScript();
            std::memcpy(serialScript().deviceDcb.data() + 8, &start, 4);
            SerialConfig config = named("");
            config.setFlowControl(c.flow);
            SerialIO port(config);
            EXPECT_EQ(wordAt(serialScript().dcbsSet.at(0), 8), (start & ~c.cleared) | c.set) << c.flow;
        }
}

TEST_F(ScriptedPort, TransfersGoOnAfterPartialAttemptsAndTraceEach)
{
    logger.setLevel(1);
    SerialIO port(named(""), logger);
    unsigned char buffer[16] = {};
    serialScript().reads = {{true, 1, "a"}, {true, 1, "b"}, {true, 1, "c"}};
    EXPECT_EQ(port.recv(buffer, 3), 3u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 3), "abc");
    serialScript().reads = {{true, 4, "WXYZ"}, {false, 0, ""}}; // a later failure keeps what came
    EXPECT_EQ(port.recv(buffer, 10), 4u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 4), "WXYZ");
    serialScript().reads = {{false, 0, ""}, {true, 0, ""}}; // nothing on the first attempt: no trace
    EXPECT_EQ(port.recv(buffer, 5), 0u);
    EXPECT_EQ(port.recv(buffer, 0), 0u);
    const unsigned char bytes[6] = {1, 2, 3, 4, 5, 6};
    serialScript().writes = {{true, 2, ""}, {true, 4, ""}, {true, 3, ""}, {false, 0, ""}};
    EXPECT_EQ(port.send(bytes, 6), 6u);
    EXPECT_EQ(port.send(bytes, 6), 3u);

    EXPECT_EQ(Calls(serialScript().calls.begin() + 5, serialScript().calls.end()),
              (Calls{"ReadFile(3)", "ReadFile(2)", "ReadFile(1)", "ReadFile(10)", "ReadFile(6)", "ReadFile(5)",
                     "ReadFile(0)", "WriteFile(6)", "WriteFile(4)", "WriteFile(6)", "WriteFile(3)"}));
    Calls titles;
    for (const std::string& message : channel->messages())
        titles.push_back(message.substr(0, message.find('\n')));
    EXPECT_EQ(titles,
              (Calls{"openDevice( 'COM3' ) OK", "recv <- [ 1 of 3 ]: ", "recv <- [ 1 of 2 ]: ", "recv <- [ 1 ]: ",
                     "recv <- [ 4 of 10 ]: ", "send -> [ 2 of 6 ]: ", "send -> [ 4 ]: ", "send -> [ 3 of 6 ]: "}));
    EXPECT_EQ(channel->messages().at(6),
              "send -> [ 4 ]: \n03 04 05 06" + std::string(37, ' ') + "| ...." + std::string(12, ' '));
}
