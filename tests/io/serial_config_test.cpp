#include <ovo/io/serial_config.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace ovo::io;

TEST(SerialConfig, TheTextHoldsWhatIsSetInKeyOrder)
{
    SerialConfig config;
    config.setStopBits(stopBits1);
    config.setParity(parityNone);
    config.setFlowControl(flowOff);
    config.setDeviceName("COM1");
    config.setDataSize(dataSize8);
    config.setBaudRate(9600);
    EXPECT_EQ(config.toString(), "baud=9600;data=8;device=COM1;flow=off;parity=none;stop=1");

    config.setBaudRate(3000000000u); // above the signed range: written unsigned, does not read back
    config.setParity(static_cast<Parity>(7));
    config.setDataSize(static_cast<DataSize>(-1));
    config.setStopBits(static_cast<StopBits>(4));
    config.setFlowControl(flowUnset);
    EXPECT_EQ(config.toString(), "baud=3000000000;device=COM1");
    EXPECT_THROW(SerialConfig::fromString(config.toString()), std::range_error);
}

TEST(SerialConfig, WordsAreReadInAnyCaseAndAnythingElseIsUnset)
{
    const struct {
        const char* text;
        DataSize data;
        Parity parity;
        StopBits stop;
        FlowControl flow;
        const char* written;
    } cases[] = {
        {"data=5;parity=even;stop=1;flow=off", dataSize5, parityEven, stopBits1, flowOff,
         "data=5;flow=off;parity=even;stop=1"},
        {"data=6;parity=odd;stop=1.5;flow=software", dataSize6, parityOdd, stopBits1_5, flowSoftware,
         "data=6;flow=software;parity=odd;stop=1.5"},
        {"data=7;parity=none;stop=2;flow=hardware", dataSize7, parityNone, stopBits2, flowHardware,
         "data=7;flow=hardware;parity=none;stop=2"},
        {"data=8;parity=EVEN;stop=1.50;flow=xon", dataSize8, parityEven, stopBitsUnset, flowUnset,
         "data=8;parity=even"},
        {"data=9;parity=Even;stop=3;flow=HARDWARE", dataSizeUnset, parityEven, stopBitsUnset, flowHardware,
         "flow=hardware;parity=even"},
        {"data=0;parity= even;Parity=odd", dataSizeUnset, parityUnset, stopBitsUnset, flowUnset, ""},
        {"data=4;stop=;flow", dataSizeUnset, parityUnset, stopBitsUnset, flowUnset, ""},
        {"", dataSizeUnset, parityUnset, stopBitsUnset, flowUnset, ""},
    };
    for (const auto& c : cases) {
        const SerialConfig config = SerialConfig::fromString(c.text);
        EXPECT_EQ(std::make_tuple(config.dataSize(), config.parity(), config.stopBits(), config.flowControl(),
                                  config.toString()),
                  std::make_tuple(c.data, c.parity, c.stop, c.flow, std::string(c.written)))
            << c.text;
    }
}

TEST(SerialConfig, BaudAndDeviceReadBackAndBadNumbersThrow)
{
    EXPECT_EQ(SerialConfig::fromString("device=COM7;baud=115200").toString(), "baud=115200;device=COM7");
    EXPECT_EQ(SerialConfig::fromString("device=/dev/ttyUSB0;x=1;baud=9600;baud=19200").toString(),
              "baud=19200;device=/dev/ttyUSB0");
    EXPECT_EQ(SerialConfig::fromString("device=").deviceName(), "");
    EXPECT_EQ(SerialConfig::fromString("baud=-1").baudRate(), 4294967295u); // the bit pattern
    for (const char* bad : {"baud=fast", "data=eight", "baud=9600 "})
        EXPECT_THROW(SerialConfig::fromString(bad), std::logic_error) << bad;
}
