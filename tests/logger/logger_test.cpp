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
    const std::string name =
        std::string("logger_test.") + testing::UnitTest::GetInstance()->current_test_info()->name();
    std::shared_ptr<RecordingChannel> channel = std::make_shared<RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add(name, channel);
};

const std::string dumpOfAB = "AB" + std::string(46, ' ') + "| ." + std::string(15, ' ');

} // namespace

TEST_F(LoggerFixture, LevelDecidesWhichFamilyPasses)
{
    const unsigned char byte = 0xAB;
    const Messages infoFamily = {"i", "id\n" + dumpOfAB, "ih: AB "};
    Messages both = infoFamily;
    both.insert(both.end(), {"t", "td\n" + dumpOfAB, "th AB "});
    const struct {
        int level;
        Messages expected;
    } cases[] = {{-1, {}}, {-1000, {}}, {0, infoFamily}, {1, both}, {2, both}};
    for (const auto& c : cases) {
        auto recorder = std::make_shared<RecordingChannel>();
        logger.setChannel(recorder);
        logger.setLevel(c.level);
        logger.info("i");
        logger.infoDump("id", &byte, 1);
        logger.infoHex("ih", &byte, 1);
        logger.trace("t");
        logger.traceDump("td", &byte, 1);
        logger.traceHex("th", &byte, 1);
        EXPECT_EQ(recorder->messages(), c.expected) << "level " << c.level;
    }
}

TEST_F(LoggerFixture, BuildsTheTextOfEachOperation)
{
    logger.setLevel(1);
    const unsigned char bytes[] = {0x3B, 0x00};
    const std::string withZero("ab\0cd", 5);
    logger.infoHex("atr", bytes, 2);
    logger.traceHex("atr", bytes, 2);
    logger.infoHex("none", bytes, 0);
    logger.traceHex("none", bytes, 0);
    logger.info("100% %s %n"); // never a format
    logger.traceHex("%d%%", bytes, 1);
    logger.trace(withZero); // a zero byte ends only the texts that are built
    logger.infoHex(withZero, bytes, 1);
    const std::vector<unsigned char> block(20, 0x41);
    logger.traceDump("block", block.data(), 20);
    EXPECT_EQ(channel->messages(),
              (Messages{"atr: 3B 00 ", "atr 3B 00 ", "none: ", "none ", "100% %s %n", "%d%% 3B ", withZero, "ab: 3B ",
                        "block\n41 41 41 41 41 41 41 41 41 41 41 41 41 41 41 41 | AAAAAAAAAAAAAAAA\n41 41 41 41" +
                            std::string(37, ' ') + "| AAAA" + std::string(12, ' ')}));
    EXPECT_EQ(channel->entries().front().name, name);
}

TEST_F(LoggerFixture, DumpOfNothingFailsOnlyWhenItPasses)
{
    logger.setLevel(1);
    EXPECT_THROW(logger.infoDump("m", nullptr, 0), std::out_of_range);
    EXPECT_THROW(logger.traceDump("m", nullptr, 0), std::out_of_range);
    EXPECT_TRUE(channel->messages().empty());
    logger.setLevel(0);
    EXPECT_NO_THROW(logger.traceDump("m", nullptr, 0)); // filtered: no text is built
}
