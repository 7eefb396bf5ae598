// SerialIO against scripted serial calls: the exact arguments it gives the platform, the
// blocks it sets, and its answers to failures that no real port produces on demand.
#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "fakes/scripted_serial.h"
#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ovo::io;
using ovo_fake::serialScript;
using Calls = std::vector<std::string>;

namespace {

const std::string opened = "CreateFileA \\\\.\\COM3(3221225472, 0, 3, 128)";

// The DCB's baud rate stands at byte 4, its flag word at 8; ByteSize, Parity, StopBits at 18 to 20.
std::uint32_t wordAt(const std::vector<unsigned char>& dcb, std::size_t at)
{
    std::uint32_t word;
    std::memcpy(&word, dcb.data() + at, 4);
    return word;
}

} // namespace

TEST(ScriptedSerial, CallsInOrderAndTraces)
{
    auto channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add("fake.serial", channel);
    logger.setLevel(1);
    ovo_fake::resetSerialScript();
    {
        SerialIO port(SerialConfig::fromString("device=COM3"), logger);
        port.config().setCommTimeouts({1, 2, 3, 4, 5});
        port.config().setBuffersSize({4096, 1024});
        port.configure();
        EXPECT_EQ(serialScript().dcbsSet.at(0), serialScript().deviceDcb) << "nothing given: the block goes back";
        port.purge();
        EXPECT_EQ(port.available(), 0u) << "the status failed";
        unsigned char bytes[6] = {1, 2, 3, 4, 5, 6};
        EXPECT_EQ(port.recv(bytes, 0), 0u);
        serialScript().sendsAtOnce = 4;
        EXPECT_EQ(port.send(bytes, 6), 6u);
    }
    EXPECT_EQ(serialScript().calls,
              (Calls{opened, "GetCommState", "SetCommState", "SetCommTimeouts(0, 0, 0, 0, 0)", "SetupComm(0, 0)",
                     "GetCommState", "SetCommState", "SetCommTimeouts(1, 3, 2, 5, 4)", "SetupComm(4096, 1024)",
                     "PurgeComm(12)", "ClearCommError", "ReadFile(0)", "WriteFile(6)", "WriteFile(2)", "CloseHandle"}));
    EXPECT_EQ(channel->messages(),
              (Calls{"openDevice( 'COM3' ) OK",
                     "send -> [ 4 of 6 ]: \n01 02 03 04" + std::string(37, ' ') + "| ...." + std::string(12, ' '),
                     "send -> [ 2 ]: \n05 06" + std::string(43, ' ') + "| .." + std::string(14, ' ')}));
}

TEST(ScriptedSerial, AFailingStateClosesTheDeviceAgain)
{
    ovo_fake::resetSerialScript();
    serialScript().getStateError = 31;
    try {
        SerialIO port(SerialConfig::fromString("device=COM3"));
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "::GetCommState( 'COM3' ) failed. error = 31");
    }
    EXPECT_EQ(serialScript().calls, (Calls{opened, "GetCommState", "CloseHandle"}));
}

TEST(ScriptedSerial, LineSettingsInTheBlock)
{
    const struct {
        const char* text;
        std::uint32_t baud;
        int byteSize, parity, stopBits;
    } cases[] = {
        {"baud=115200;data=5;parity=even;stop=1", 115200, 5, 2, 0},
        {"baud=250000;data=6;parity=odd;stop=1.5", 250000, 6, 1, 1},
        {"data=7;parity=none;stop=2", 9600, 7, 0, 2},
        {"data=8", 9600, 8, 3, 0}, // no parity given: the device's own stays
    };
    for (const auto& c : cases) {
        ovo_fake::resetSerialScript();
        serialScript().deviceDcb[19] = 3;
        SerialIO port(SerialConfig::fromString(std::string("device=COM3;") + c.text));
        const std::vector<unsigned char>& dcb = serialScript().dcbsSet.at(0);
        EXPECT_EQ(wordAt(dcb, 4), c.baud) << c.text;
        EXPECT_EQ((std::vector<int>{dcb[18], dcb[19], dcb[20]}), (std::vector<int>{c.byteSize, c.parity, c.stopBits}))
            << c.text;
        EXPECT_EQ(wordAt(dcb, 8), 0u) << c.text << ": no flag changes without flow control";
    }
}

TEST(ScriptedSerial, FlowControlMasks)
{
    const std::uint32_t deviceFlags = 0x0000C0F3u; // fBinary, fParity, DSR and DTR flags, nothing of the four
    const struct {
        const char* flow;
        std::uint32_t cleared, set;
    } cases[] = {{"off", 0x3304, 0}, {"software", 0x3004, 0x0300}, {"hardware", 0x0300, 0x3004}};
    for (const auto& c : cases)
        for (std::uint32_t start : {deviceFlags, deviceFlags | 0x3304u}) {
            ovo_fake::resetSerialScript();
            std::memcpy(serialScript().deviceDcb.data() + 8, &start, 4);
            SerialIO port(SerialConfig::fromString(std::string("device=COM3;flow=") + c.flow));
            EXPECT_EQ(wordAt(serialScript().dcbsSet.at(0), 8), (start & ~c.cleared) | c.set) << c.flow;
        }
}
