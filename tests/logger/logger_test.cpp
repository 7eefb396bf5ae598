#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <thread>

namespace lg = ovo::logger;
using ovo_test::RecordingChannel;
using Messages = std::vector<std::string>;

namespace {

// A logger of its own for each test, registered with a recording channel at level 0.
struct LoggerFixture : testing::Test {
    const std::string name =
        std::string("logger_test.") + testing::UnitTest::GetInstance()->current_test_info()->name();
    std::shared_ptr<RecordingChannel> channel = std::make_shared<RecordingChannel>();
    lg::ILogger& logger = lg::add(name, channel);
};

const std::string dumpOfAB = "AB" + std::string(46, ' ') + "| ." + std::string(15, ' ');

} // namespace

TEST_F(LoggerFixture, LevelDecidesWhichFamilyPasses)
{
    const unsigned char byte = 0xAB;
    const Messages infoFamily = {"i", "id\n" + dumpOfAB, "ih: AB "},
                   both = {"i", "id\n" + dumpOfAB, "ih: AB ", "t", "td\n" + dumpOfAB, "th AB "};
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

// A dump of nothing fails when it passes the level, and writes nothing.
TEST_F(LoggerFixture, BuildsTheTextOfEachOperation)
{
    logger.setLevel(1);
    EXPECT_THROW(logger.infoDump("m", nullptr, 0), std::out_of_range);
    EXPECT_THROW(logger.traceDump("m", nullptr, 0), std::out_of_range);
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
    logger.setLevel(0);
    EXPECT_NO_THROW(logger.traceDump("m", nullptr, 0)); // filtered: no text is built
}

// The registry as whatever ran before in the process left it: every test uses names of its own.
TEST(Registry, GetGivesOneObjectPerExactNameThatCopiesItsNearestRegisteredAncestorOnce)
{
    EXPECT_EQ(&lg::get("reg.same"), &lg::get("reg.same"));
    EXPECT_NE(&lg::get("reg.Case"), &lg::get("reg.case"));
    EXPECT_EQ(&lg::root(), &lg::get(""));
    EXPECT_EQ(&lg::null(), &lg::get("null"));
    EXPECT_NE(&lg::root(), &lg::null());
    EXPECT_EQ(lg::get(".lonely").channel(), lg::root().channel()) << "a dot in first place cuts to the root";

    auto top = std::make_shared<RecordingChannel>();
    lg::ILogger& parent = lg::add("near", top);
    parent.setLevel(3);
    lg::ILogger& deep = lg::get("near.b.c");
    parent.setLevel(-1); // what deep took at its making stays
    parent.setChannel(std::make_shared<RecordingChannel>());
    EXPECT_EQ(deep.level(), 3);
    EXPECT_EQ(deep.channel(), top);
    deep.setLevel(0);
    EXPECT_EQ(parent.level(), -1);

    // near.b was not made by that search: a logger added under it now is the table's,
    // and later names below it derive from it.
    auto middle = std::make_shared<RecordingChannel>();
    lg::ILogger& added = lg::add("near.b", middle);
    EXPECT_EQ(added.level(), 0) << "add does not inherit";
    EXPECT_EQ(lg::get("near.b.x.y").channel(), middle);
    lg::get("near.b.c").info("from deep");
    EXPECT_EQ(top->entries(), (std::vector<RecordingChannel::Entry>{{"near.b.c", "from deep"}}));
}

TEST(Registry, ConcurrentGetAndAddAgreeOnOneObjectPerName)
{
    const int threadCount = 8, nameCount = 200;
    std::vector<std::vector<lg::ILogger*>> byGet(threadCount), byAdd(threadCount);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int n = 0; n < nameCount; ++n) { // the ancestor walk runs while others insert
                byGet[t].push_back(&lg::get("threads.get." + std::to_string(n % 10) + "." + std::to_string(n)));
                byAdd[t].push_back(&lg::add("threads.add." + std::to_string(n), std::make_shared<RecordingChannel>()));
            }
        });
    for (auto& thread : threads)
        thread.join();

    for (int n = 0; n < nameCount; ++n) {
        std::set<lg::ILogger*> added;
        for (int t = 0; t < threadCount; ++t) {
            EXPECT_EQ(byGet[t][n], byGet[0][n]) << n;
            added.insert(byAdd[t][n]);
        }
        EXPECT_EQ(added.size(), static_cast<std::size_t>(threadCount)) << "each add makes its own logger";
        EXPECT_EQ(added.count(&lg::get("threads.add." + std::to_string(n))), 1u) << "one add registered " << n;
    }
}
