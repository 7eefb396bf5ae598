// SerialIO against scripted serial calls: the blocks it sets, which a pseudo-terminal does
// not show whole, and a device whose state cannot be read.
#include <ovo/io/serial_io.h>
#include <ovo/logger/logger.h>

#include "fakes/scripted_serial.h"

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

// The DCB's baud rate stands at byte 4, its flag word at 8; ByteSize, Parity, StopBits at 18 to 20.
std::uint32_t wordAt(const std::vector<unsigned char>& dcb, std::size_t at)
{
    std::uint32_t word;
    std::memcpy(&word, dcb.data() + at, 4);
    return word;
}

} // namespace

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
    EXPECT_EQ(serialScript().calls,
              (Calls{"CreateFileA \\\\.\\COM3 3221225472 0 3 128", "GetCommState", "CloseHandle"}));
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
