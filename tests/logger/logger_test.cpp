#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using ovo_test::RecordingChannel;
using Messages = std::vector<std::string>;

namespace {

// A logger of its own for each test, registered with a recording channel at level 0.
struct LoggerFixture : testing::Test {
    std::shared_ptr<RecordingChannel> channel = std::make_shared<RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add(
        std::string("logger_test.") + testing::UnitTest::GetInstance()->current_test_info()->name(), channel);

    void sendAll()
    {
        const unsigned char byte = 0xAB;
        logger.info("i");
        logger.infoDump("id", &byte, 1);
        logger.infoHex("ih", &byte, 1);
        logger.trace("t");
        logger.traceDump("td", &byte, 1);
        logger.traceHex("th", &byte, 1);
    }
};

const std::string dumpOfAB = "AB" + std::string(46, ' ') + "| ." + std::string(15, ' ');

} // namespace

TEST_F(LoggerFixture, LevelDecidesWhichFamilyPasses)
{
    const Messages infoFamily = {"i", "id\n" + dumpOfAB, "ih: AB "};
    Messages both = infoFamily;
    both.insert(both.end(), {"t", "td\n" + dumpOfAB, "th AB "});

    const struct {
        int level;
        Messages expected;
    } cases[] = {{-1, {}}, {-1000, {}}, {0, infoFamily}, {1, both}, {2, both}, {1000, both}};
    for (const auto& c : cases) {
        auto recorder = std::make_shared<RecordingChannel>();
        logger.setChannel(recorder);
        logger.setLevel(c.level);
        EXPECT_EQ(logger.level(), c.level);
        sendAll();
        EXPECT_EQ(recorder->messages(), c.expected) << "level " << c.level;
    }
}

TEST_F(LoggerFixture, NewLoggerStartsAtLevelZeroWithItsChannel)
{
    EXPECT_EQ(logger.level(), 0);
    EXPECT_EQ(logger.channel(), channel);
}

TEST_F(LoggerFixture, ChannelReceivesTheLoggersName)
{
    logger.info("hello");
    ASSERT_EQ(channel->entries().size(), 1u);
    EXPECT_EQ(channel->entries()[0].name, "logger_test.ChannelReceivesTheLoggersName");
}

TEST_F(LoggerFixture, HexJoints)
{
    logger.setLevel(1);
    const unsigned char bytes[] = {0x3B, 0x00};
    logger.infoHex("atr", bytes, 2);
    logger.traceHex("atr", bytes, 2);
    logger.infoHex("none", bytes, 0);
    logger.traceHex("none", bytes, 0);
    EXPECT_EQ(channel->messages(), (Messages{"atr: 3B 00 ", "atr 3B 00 ", "none: ", "none "}));
}

TEST_F(LoggerFixture, DumpOfNothingFailsBeforeTheChannel)
{
    logger.setLevel(1);
    EXPECT_THROW(logger.infoDump("m", nullptr, 0), std::out_of_range);
    EXPECT_THROW(logger.traceDump("m", nullptr, 0), std::out_of_range);
    EXPECT_TRUE(channel->messages().empty());
    logger.setLevel(0);
    EXPECT_NO_THROW(logger.traceDump("m", nullptr, 0)); // filtered: no text is built
}

TEST_F(LoggerFixture, DumpIsOneMessageOfSeveralLines)
{
    std::vector<unsigned char> bytes(20, 0x41);
    logger.infoDump("block", bytes.data(), 20);
    ASSERT_EQ(channel->messages().size(), 1u);
    const std::string message = channel->messages()[0];
    EXPECT_EQ(message.substr(0, 6), "block\n");
    EXPECT_EQ(message.size(), 6u + 67u + 66u);
    EXPECT_EQ(message.substr(6 + 48, 18), "| AAAAAAAAAAAAAAAA");
}

TEST_F(LoggerFixture, MessageIsNeverAFormat)
{
    logger.setLevel(1);
    const unsigned char byte = 1;
    logger.info("100% %s %n");
    logger.traceHex("%d%%", &byte, 1);
    EXPECT_EQ(channel->messages(), (Messages{"100% %s %n", "%d%% 01 "}));
}

TEST_F(LoggerFixture, ZeroByteEndsOnlyTheBuiltMessages)
{
    logger.setLevel(1);
    const std::string withZero("ab\0cd", 5);
    const unsigned char byte = 0xFF;
    logger.info(withZero);
    logger.trace(withZero);
    logger.infoHex(withZero, &byte, 1);
    logger.traceHex(withZero, &byte, 1);
    EXPECT_EQ(channel->messages(), (Messages{withZero, withZero, "ab: FF ", "ab FF "}));
}

TEST_F(LoggerFixture, ChannelExceptionsReachTheCaller)
{
    struct Throwing : ovo::logger::AbstractLogChannel {
        void write(const std::string&, const std::string&) override { throw std::runtime_error("disk full"); }
    };
    logger.setChannel(std::make_shared<Throwing>());
    EXPECT_THROW(logger.info("x"), std::runtime_error);
    logger.setLevel(-1);
    EXPECT_NO_THROW(logger.info("x"));
}

namespace {

// Shows what a derived channel sees of its formatter.
struct FormatterHolder : ovo::logger::AbstractLogChannel {
    void write(const std::string&, const std::string&) override {}
    ovo::logger::IMessageFormatter* heldFormatter() const { return formatter().get(); }
};

struct Plain : ovo::logger::IMessageFormatter {
    std::string format(const std::string&, const std::string& message) override { return message; }
};

} // namespace

TEST(AbstractLogChannel, HoldsSharesAndMovesTheFormatter)
{
    auto formatter = std::make_shared<Plain>();
    FormatterHolder channel;
    EXPECT_EQ(channel.heldFormatter(), nullptr);
    channel.setFormatter(formatter);
    EXPECT_EQ(channel.heldFormatter(), formatter.get());
    EXPECT_EQ(formatter.use_count(), 2);

    FormatterHolder copy(channel);
    EXPECT_EQ(copy.heldFormatter(), formatter.get());
    EXPECT_EQ(formatter.use_count(), 3);

    FormatterHolder moved(std::move(copy));
    EXPECT_EQ(moved.heldFormatter(), formatter.get());
    EXPECT_EQ(copy.heldFormatter(), nullptr); // NOLINT: the moved-from state is specified
    EXPECT_EQ(formatter.use_count(), 3);

    channel.setFormatter(nullptr);
    EXPECT_EQ(formatter.use_count(), 2);
    channel.setProperty("rolling_header", "anything"); // ignored by the base
    EXPECT_EQ(channel.heldFormatter(), nullptr);
}
