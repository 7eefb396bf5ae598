// Cases about the first touch of the registry. CTest runs each in a process of its own
// (--gtest_filter=FirstUse.<case>); run together they would see each other's loggers.
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace lg = ovo::logger;
using ovo_test::RecordingChannel;

TEST(FirstUse, FirstGetMakesRootAndTheLogger)
{
    lg::ILogger& x = lg::get("x");
    lg::ILogger& root = lg::root();
    EXPECT_NE(&x, &root);
    ASSERT_NE(root.channel(), nullptr);
    EXPECT_EQ(x.channel(), root.channel());
    EXPECT_EQ(root.level(), 0);
    EXPECT_EQ(x.level(), 0);

    // A later channel on the root does not reach x.
    auto recorder = std::make_shared<RecordingChannel>();
    const auto discarding = x.channel();
    root.setChannel(recorder);
    EXPECT_EQ(x.channel(), discarding);
    x.info("lost");
    root.info("kept");
    EXPECT_EQ(recorder->messages(), std::vector<std::string>{"kept"});
}

TEST(FirstUse, RootAddedFirstIsSharedByDescendants)
{
    auto recorder = std::make_shared<RecordingChannel>();
    lg::ILogger& root = lg::add("", recorder);
    EXPECT_EQ(&lg::root(), &root);
    lg::get("app.reader").info("one");
    lg::get("app").info("two");
    EXPECT_EQ(recorder->entries(), (std::vector<RecordingChannel::Entry>{{"app.reader", "one"}, {"app", "two"}}));

    lg::ILogger& second = lg::add("", std::make_shared<RecordingChannel>());
    EXPECT_NE(&second, &root);
    EXPECT_EQ(&lg::root(), &root);
    EXPECT_EQ(lg::root().channel(), recorder);
}

TEST(FirstUse, NullAddedFirstTakesTheChannel)
{
    auto recorder = std::make_shared<RecordingChannel>();
    lg::add("null", recorder);
    lg::null().info("to null");
    EXPECT_EQ(recorder->messages(), std::vector<std::string>{"to null"});
    EXPECT_NE(lg::root().channel(), recorder);
}

TEST(FirstUse, RootAndNullAreDistinct)
{
    lg::ILogger& null = lg::null();
    lg::ILogger& root = lg::root();
    EXPECT_NE(&null, &root);
    ASSERT_NE(null.channel(), nullptr);
    ASSERT_NE(root.channel(), nullptr);
    EXPECT_NE(null.channel(), root.channel());
}

TEST(FirstUse, NullPrefixFallsBackToRoot)
{
    // The null name is special as a whole name only.
    lg::ILogger& early = lg::get("null.early");
    EXPECT_EQ(early.channel(), lg::root().channel());
    lg::ILogger& null = lg::null();
    EXPECT_EQ(lg::get("null.late").channel(), null.channel());
    EXPECT_NE(null.channel(), lg::root().channel());
}

namespace {

struct Watched : RecordingChannel {
    explicit Watched(bool& destroyed) : destroyed_(destroyed) {}
    ~Watched() override { destroyed_ = true; }
    bool& destroyed_;
};

} // namespace

TEST(FirstUse, ShutdownDestroysRegisteredLoggersOnly)
{
    bool registeredChannelGone = false;
    bool outsiderChannelGone = false;
    lg::add("kept", std::make_shared<Watched>(registeredChannelGone)).setLevel(4);
    lg::get("kept.child");
    lg::ILogger& outsider = lg::add("kept", std::make_shared<Watched>(outsiderChannelGone));

    lg::shutdown();
    EXPECT_TRUE(registeredChannelGone) << "the last handles were the two registered loggers'";
    EXPECT_FALSE(outsiderChannelGone) << "a logger outside the table lives on";
    outsider.info("still alive");

    // The table was emptied: a later get makes a fresh logger.
    EXPECT_EQ(lg::get("kept").level(), 0);
}
