// Registry behaviour that holds whatever ran before in the process. Every test uses
// names of its own; the first-use cases live in registry_first_use_test.cpp.
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace lg = ovo::logger;
using ovo_test::RecordingChannel;

TEST(Registry, OneObjectPerExactName)
{
    EXPECT_EQ(&lg::get("reg.same"), &lg::get("reg.same"));
    EXPECT_NE(&lg::get("reg.Case"), &lg::get("reg.case"));
    EXPECT_EQ(&lg::root(), &lg::get(""));
    EXPECT_EQ(&lg::null(), &lg::get("null"));
    EXPECT_NE(&lg::root(), &lg::null());
    EXPECT_EQ(lg::get(".lonely").channel(), lg::root().channel()) << "a dot in first place cuts to the root";
}

TEST(Registry, GetCopiesChannelAndLevelOfTheNearestRegisteredAncestorOnce)
{
    auto top = std::make_shared<RecordingChannel>();
    lg::ILogger& parent = lg::add("near", top);
    parent.setLevel(3);
    lg::ILogger& deep = lg::get("near.b.c");
    EXPECT_EQ(deep.channel(), top);
    EXPECT_EQ(deep.level(), 3);

    parent.setLevel(-1);
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
    EXPECT_EQ(&lg::get("near.b"), &added);
    EXPECT_EQ(lg::get("near.b.x.y").channel(), middle);
    lg::get("near.b.c").info("from deep");
    EXPECT_EQ(top->entries(), (std::vector<RecordingChannel::Entry>{{"near.b.c", "from deep"}}));
}

TEST(Registry, AddOfATakenNameLeavesTheTableAlone)
{
    auto first = std::make_shared<RecordingChannel>();
    auto second = std::make_shared<RecordingChannel>();
    lg::ILogger& registered = lg::add("taken", first);
    lg::ILogger& outsider = lg::add("taken", second);
    EXPECT_NE(&registered, &outsider);
    EXPECT_EQ(&lg::get("taken"), &registered);
    outsider.info("still works");
    EXPECT_EQ(second->messages(), std::vector<std::string>{"still works"});
    EXPECT_TRUE(first->messages().empty());
}

TEST(Registry, ConcurrentGetAndAddAgreeOnOneObjectPerName)
{
    const int threadCount = 8;
    const int nameCount = 200;
    auto getName = [](int n) { return "threads.get." + std::to_string(n % 10) + "." + std::to_string(n); };
    auto addName = [](int n) { return "threads.add." + std::to_string(n); };
    std::vector<std::vector<lg::ILogger*>> byGet(threadCount), byAdd(threadCount);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int n = 0; n < nameCount; ++n) {
                byGet[t].push_back(&lg::get(getName(n))); // the ancestor walk runs while others insert
                byAdd[t].push_back(&lg::add(addName(n), std::make_shared<RecordingChannel>()));
            }
        });
    for (auto& thread : threads)
        thread.join();

    for (int n = 0; n < nameCount; ++n) {
        std::set<lg::ILogger*> added;
        int addsThatGotTheTablesLogger = 0;
        for (int t = 0; t < threadCount; ++t) {
            EXPECT_EQ(byGet[t][n], &lg::get(getName(n))) << n;
            added.insert(byAdd[t][n]);
            addsThatGotTheTablesLogger += byAdd[t][n] == &lg::get(addName(n)) ? 1 : 0;
        }
        EXPECT_EQ(added.size(), static_cast<std::size_t>(threadCount)) << "each add makes its own logger";
        EXPECT_EQ(addsThatGotTheTablesLogger, 1) << "exactly one add registered name " << n;
    }
}
