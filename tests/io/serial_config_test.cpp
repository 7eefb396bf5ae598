#include <ovo/io/serial_config.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

using namespace ovo::io;

TEST(SerialConfig, DefaultIsEmptyEverywhere)
{
    const SerialConfig config;
    EXPECT_EQ(config.deviceName(), "");
    EXPECT_EQ(config.baudRate(), 0u);
    EXPECT_EQ(config.dataSize(), dataSizeUnset);
    EXPECT_EQ(config.parity(), parityUnset);
    EXPECT_EQ(config.stopBits(), stopBitsUnset);
    EXPECT_EQ(config.flowControl(), flowUnset);
    EXPECT_EQ(config.commTimeouts().readInterval + config.commTimeouts().readConstant +
                  config.commTimeouts().readMultiplier + config.commTimeouts().writeConstant +
                  config.commTimeouts().writeMultiplier,
              0u);
    EXPECT_EQ(config.buffersSize().inputSize + config.buffersSize().outputSize, 0u);
    EXPECT_EQ(config.toString(), "");
    EXPECT_EQ(SerialConfig::fromString("").toString(), "");
}

TEST(SerialConfig, FullConfigurationInKeyOrder)
{
    SerialConfig config;
    config.setStopBits(stopBits1);
    config.setParity(parityNone);
    config.setFlowControl(flowOff);
    config.setDeviceName("COM1");
    config.setDataSize(dataSize8);
    config.setBaudRate(9600);
    EXPECT_EQ(config.toString(), "baud=9600;data=8;device=COM1;flow=off;parity=none;stop=1");
}

TEST(SerialConfig, WordsOfEveryValue)
{
    const struct {
        const char* text;
        DataSize data;
        Parity parity;
        StopBits stop;
        FlowControl flow;
    } cases[] = {
        {"data=5;parity=even;stop=1;flow=off", dataSize5, parityEven, stopBits1, flowOff},
        {"data=6;parity=odd;stop=1.5;flow=software", dataSize6, parityOdd, stopBits1_5, flowSoftware},
        {"data=7;parity=none;stop=2;flow=hardware", dataSize7, parityNone, stopBits2, flowHardware},
        {"data=8;parity=EVEN;stop=1.50;flow=xon", dataSize8, parityEven, stopBitsUnset, flowUnset},
        {"data=9;parity=Even;stop=3;flow=HARDWARE", dataSizeUnset, parityEven, stopBitsUnset, flowHardware},
        {"data=0;parity= even;Parity=odd", dataSizeUnset, parityUnset, stopBitsUnset, flowUnset},
        {"data=-5;stop=;flow", dataSizeUnset, parityUnset, stopBitsUnset, flowUnset},
    };
    for (const auto& c : cases) {
        const SerialConfig config = SerialConfig::fromString(c.text);
        EXPECT_EQ(config.dataSize(), c.data) << c.text;
        EXPECT_EQ(config.parity(), c.parity) << c.text;
        EXPECT_EQ(config.stopBits(), c.stop) << c.text;
        EXPECT_EQ(config.flowControl(), c.flow) << c.text;
    }
}

TEST(SerialConfig, UnknownWordsAndValuesDoNotComeBack)
{
    EXPECT_EQ(SerialConfig::fromString("flow=xon;stop=3;device=ttyS0").toString(), "device=ttyS0");
    SerialConfig config;
    config.setParity(static_cast<Parity>(7));
    config.setDataSize(static_cast<DataSize>(-1));
    config.setStopBits(static_cast<StopBits>(4));
    config.setFlowControl(static_cast<FlowControl>(0));
    EXPECT_EQ(config.toString(), "");
}

TEST(SerialConfig, TextRoundTrips)
{
    EXPECT_EQ(SerialConfig::fromString("baud=115200;device=COM7").toString(), "baud=115200;device=COM7");
    EXPECT_EQ(SerialConfig::fromString("device=COM7;baud=115200").toString(), "baud=115200;device=COM7");
    EXPECT_EQ(SerialConfig::fromString("device=/dev/ttyUSB0;x=1;baud=9600;baud=19200").toString(),
              "baud=19200;device=/dev/ttyUSB0");
    EXPECT_EQ(SerialConfig::fromString("device=").deviceName(), "");
}

TEST(SerialConfig, BaudIsASigned32BitText)
{
    EXPECT_EQ(SerialConfig::fromString("baud=-1").baudRate(), 4294967295u);
    SerialConfig fast;
    fast.setBaudRate(3000000000u);
    EXPECT_EQ(fast.toString(), "baud=3000000000");
    EXPECT_THROW(SerialConfig::fromString(fast.toString()), std::range_error);
    EXPECT_THROW(SerialConfig::fromString("baud=fast"), std::logic_error);
    EXPECT_THROW(SerialConfig::fromString("data=eight"), std::logic_error);
    EXPECT_THROW(SerialConfig::fromString("baud=9600 "), std::logic_error);
}

TEST(SerialConfig, CopyAndMoveKeepEveryMember)
{
    SerialConfig config = SerialConfig::fromString("baud=9600;data=7;device=COM2;flow=hardware;parity=odd;stop=2");
    config.setCommTimeouts({1, 2, 3, 4, 5});
    config.setBuffersSize({4096, 2048});
    const SerialConfig copy(config);
    EXPECT_EQ(copy.toString(), config.toString());
    EXPECT_EQ(copy.commTimeouts().writeMultiplier, 5u);
    EXPECT_EQ(copy.buffersSize().outputSize, 2048u);

    SerialConfig moved(std::move(config));
    EXPECT_EQ(moved.toString(), copy.toString());
    EXPECT_EQ(config.baudRate(), 9600u); // NOLINT: numeric members stay in the source
    EXPECT_EQ(config.parity(), parityOdd);

    SerialConfig assigned;
    assigned = copy;
    const SerialConfig& alias = assigned;
    assigned = alias;
    EXPECT_EQ(assigned.toString(), copy.toString());
    EXPECT_EQ(assigned.commTimeouts().readInterval, 1u);
}
