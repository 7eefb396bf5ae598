// Registry behaviour that holds whatever ran before in the process. Every test uses
// names of its own; the first-use cases live in registry_first_use_test.cpp.
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <memory>

namespace lg = ovo::logger;
using ovo_test::RecordingChannel;

TEST(Registry, SameNameGivesSameObjectAndCaseCounts)
{
    EXPECT_EQ(&lg::get("reg.same"), &lg::get("reg.same"));
    EXPECT_NE(&lg::get("reg.Case"), &lg::get("reg.case"));
    EXPECT_EQ(&lg::root(), &lg::get(""));
    EXPECT_EQ(&lg::null(), &lg::get("null"));
    EXPECT_NE(&lg::root(), &lg::null());
}

TEST(Registry, DerivedLoggerCopiesChannelAndLevelOnce)
{
    auto channel = std::make_shared<RecordingChannel>();
    lg::ILogger& parent = lg::add("derive", channel);
    parent.setLevel(3);
    lg::ILogger& child = lg::get("derive.child");
    EXPECT_EQ(child.channel(), channel);
    EXPECT_EQ(child.level(), 3);

    parent.setLevel(-1);
    parent.setChannel(std::make_shared<RecordingChannel>());
    EXPECT_EQ(child.level(), 3);
    EXPECT_EQ(child.channel(), channel);
    child.setLevel(0);
    EXPECT_EQ(parent.level(), -1);

    child.info("from child");
    EXPECT_EQ(channel->entries(), (std::vector<RecordingChannel::Entry>{{"derive.child", "from child"}}));
}

TEST(Registry, NearestRegisteredAncestorWinsAndNothingBetweenIsMade)
{
    auto top = std::make_shared<RecordingChannel>();
    lg::add("near", top).setLevel(2);
    lg::ILogger& deep = lg::get("near.b.c.d");
    EXPECT_EQ(deep.channel(), top);
    EXPECT_EQ(deep.level(), 2);

    // near.b was not made by that search: a logger added under it now is the table's.
    auto middle = std::make_shared<RecordingChannel>();
    lg::ILogger& added = lg::add("near.b", middle);
    EXPECT_EQ(&lg::get("near.b"), &added);
    EXPECT_EQ(lg::get("near.b.x").channel(), middle);
    EXPECT_EQ(lg::get("near.b.c.d").channel(), top); // made earlier, keeps its copy
}

TEST(Registry, AddDoesNotInherit)
{
    lg::add("noinherit", std::make_shared<RecordingChannel>()).setLevel(5);
    lg::ILogger& added = lg::add("noinherit.child", std::make_shared<RecordingChannel>());
    EXPECT_EQ(added.level(), 0);
}

TEST(Registry, AddOfATakenNameLeavesTheTableAlone)
{
    auto first = std::make_shared<RecordingChannel>();
    auto second = std::make_shared<RecordingChannel>();
    lg::ILogger& registered = lg::add("taken", first);
    lg::ILogger& outsider = lg::add("taken", second);
    EXPECT_NE(&registered, &outsider);
    EXPECT_EQ(&lg::get("taken"), &registered);
    EXPECT_EQ(lg::get("taken").channel(), first);
    outsider.info("still works");
    EXPECT_EQ(second->messages(), std::vector<std::string>{"still works"});
    EXPECT_TRUE(first->messages().empty());
}

TEST(Registry, DotFirstNameDerivesFromRoot)
{
    lg::ILogger& dotted = lg::get(".lonely");
    EXPECT_EQ(dotted.channel(), lg::root().channel());
}

TEST(Registry, NullChannelIgnoresPropertiesAndMessages)
{
    lg::ILogger& logger = lg::null();
    ASSERT_NE(logger.channel(), nullptr);
    logger.channel()->setProperty("rolling_header", "x");
    logger.channel()->setProperty("", "");
    logger.setLevel(1);
    logger.trace("nowhere");
    const unsigned char byte = 0;
    logger.traceHex("nowhere", &byte, 1);
    logger.setLevel(0);
}
