// Cases about the first touch of the registry. CTest runs each in a process of its own
// (--gtest_filter=FirstUse.<case>); run together they would see each other's loggers.
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

namespace lg = ovo::logger;
using ovo_test::RecordingChannel;

namespace {

struct Watched : RecordingChannel {
    explicit Watched(bool& destroyed) : destroyed_(destroyed) {}
    ~Watched() override { destroyed_ = true; }
    bool& destroyed_;
};

} // namespace

TEST(FirstUse, GetMakesTheRootAndTheNullLoggerOnDemand)
{
    // The null name is special as a whole name only: before null exists, null.x derives
    // from the root, which the first get makes with a discarding channel of its own.
    lg::ILogger& early = lg::get("null.early");
    lg::ILogger& root = lg::root();
    ASSERT_NE(root.channel(), nullptr);
    EXPECT_EQ(early.channel(), root.channel());
    EXPECT_EQ(lg::get("x").channel(), root.channel());
    EXPECT_EQ(lg::get("x").level(), 0);

    lg::ILogger& null = lg::null();
    ASSERT_NE(null.channel(), nullptr);
    EXPECT_NE(null.channel(), root.channel());
    EXPECT_EQ(lg::get("null.late").channel(), null.channel());

    // A later channel on the root reaches neither x nor null.
    auto recorder = std::make_shared<RecordingChannel>();
    root.setChannel(recorder);
    lg::get("x").info("lost");
    null.info("lost");
    root.info("kept");
    EXPECT_EQ(recorder->messages(), std::vector<std::string>{"kept"});
}

TEST(FirstUse, AddedRootAndNullKeepTheirChannelsUntilShutdown)
{
    bool rootChannelGone = false, outsiderChannelGone = false;
    auto toNull = std::make_shared<RecordingChannel>();
    lg::add("null", toNull);
    lg::ILogger& root = lg::add("", std::make_shared<Watched>(rootChannelGone));
    EXPECT_EQ(&lg::root(), &root);
    root.setLevel(4);
    lg::get("app.reader").info("one");
    lg::null().info("to null");
    EXPECT_EQ(toNull->messages(), std::vector<std::string>{"to null"});
    const auto rootChannel = std::dynamic_pointer_cast<RecordingChannel>(root.channel());
    EXPECT_EQ(rootChannel->entries(), (std::vector<RecordingChannel::Entry>{{"app.reader", "one"}}));

    lg::ILogger& outsider = lg::add("", std::make_shared<Watched>(outsiderChannelGone));
    EXPECT_NE(&outsider, &root);
    EXPECT_EQ(lg::root().channel(), rootChannel);

    lg::shutdown();
    EXPECT_FALSE(rootChannelGone) << "this test still holds a handle";
    EXPECT_EQ(rootChannel.use_count(), 1) << "root and app.reader released theirs";
    EXPECT_FALSE(outsiderChannelGone) << "a logger outside the table lives on";
    outsider.info("still alive");
    EXPECT_EQ(lg::get("").level(), 0) << "a later get makes a fresh logger";
}
