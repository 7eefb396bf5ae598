// SerialIO against scripted serial calls: the whole blocks it sets, and a device whose state cannot be read.
#include <ovo/io/serial_io.h>

#include "fakes/scripted_serial.h"
#include "support/failure_of.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace ovo::io;
using ovo_fake::serialScript;

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
    EXPECT_EQ(ovo_test::failureOf([] { SerialIO port(SerialConfig::fromString("device=COM3")); }),
              "::GetCommState( 'COM3' ) failed. error = 31");
    EXPECT_EQ(serialScript().calls,
              (std::vector<std::string>{"CreateFileA \\\\.\\COM3 3221225472 0 3 128", "GetCommState", "CloseHandle"}));
}

// Settings land in their fields; flow control changes only its own flags, whatever else the device has set.
TEST(ScriptedSerial, SettingsInTheBlock)
{
    const std::uint32_t device = 0xC0F3u, allFlow = 0xF3F7u; // fBinary, fParity, DSR and DTR; with all flow flags
    const struct {
        const char* text;
        std::uint32_t deviceFlags, baud, byteSize, parity, stopBits, flags;
    } cases[] = {
        {"baud=115200;data=5;parity=even;stop=1", device, 115200, 5, 2, 0, device},
        {"baud=250000;data=6;parity=odd;stop=1.5", device, 250000, 6, 1, 1, device},
        {"data=7;parity=none;stop=2", allFlow, 9600, 7, 0, 2, allFlow},
        {"data=8", device, 9600, 8, 3, 0, device}, // no parity given: the device's own stays
        {"flow=off", allFlow, 9600, 8, 3, 0, device},
        {"flow=software", device, 9600, 8, 3, 0, 0xC3F3},
        {"flow=software", allFlow, 9600, 8, 3, 0, 0xC3F3},
        {"flow=hardware", device, 9600, 8, 3, 0, 0xF0F7},
        {"flow=hardware", allFlow, 9600, 8, 3, 0, 0xF0F7},
    };
    for (const auto& c : cases) {
        ovo_fake::resetSerialScript();
        serialScript().deviceDcb[19] = 3;
        std::memcpy(serialScript().deviceDcb.data() + 8, &c.deviceFlags, 4);
        SerialIO port(SerialConfig::fromString(std::string("device=COM3;") + c.text));
        const std::vector<unsigned char>& dcb = serialScript().dcbsSet.at(0);
        EXPECT_EQ((std::vector<std::uint32_t>{wordAt(dcb, 4), dcb[18], dcb[19], dcb[20], wordAt(dcb, 8)}),
                  (std::vector<std::uint32_t>{c.baud, c.byteSize, c.parity, c.stopBits, c.flags}))
            << c.text << " from " << c.deviceFlags;
    }
}
