// The registry under concurrent get and add: one object per name, no logger lost.
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace lg = ovo::logger;

TEST(RegistryThreads, ConcurrentGetAndAddAgreeOnOneObjectPerName)
{
    const int threadCount = 8;
    const int nameCount = 200;
    std::vector<std::vector<lg::ILogger*>> seenByGet(threadCount, std::vector<lg::ILogger*>(nameCount));
    std::vector<std::vector<lg::ILogger*>> seenByAdd(threadCount, std::vector<lg::ILogger*>(nameCount));
    auto channel = std::make_shared<ovo_test::RecordingChannel>();

    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int n = 0; n < nameCount; ++n) {
                // Deep names make the ancestor walk run while others insert.
                seenByGet[t][n] = &lg::get("threads.get." + std::to_string(n % 10) + "." + std::to_string(n));
                seenByAdd[t][n] = &lg::add("threads.add." + std::to_string(n), channel);
            }
        });
    for (auto& thread : threads)
        thread.join();

    for (int n = 0; n < nameCount; ++n) {
        lg::ILogger* registeredGet = &lg::get("threads.get." + std::to_string(n % 10) + "." + std::to_string(n));
        lg::ILogger* registeredAdd = &lg::get("threads.add." + std::to_string(n));
        std::set<lg::ILogger*> added;
        int addsThatGotTheTablesLogger = 0;
        for (int t = 0; t < threadCount; ++t) {
            EXPECT_EQ(seenByGet[t][n], registeredGet) << "name " << n;
            added.insert(seenByAdd[t][n]);
            addsThatGotTheTablesLogger += seenByAdd[t][n] == registeredAdd ? 1 : 0;
        }
        EXPECT_EQ(added.size(), static_cast<std::size_t>(threadCount)) << "each add makes its own logger";
        EXPECT_EQ(addsThatGotTheTablesLogger, 1) << "exactly one add registered name " << n;
        EXPECT_EQ(registeredAdd->channel(), channel);
    }
}

TEST(RegistryThreads, LoggingRunsInParallelWithRegistryCalls)
{
    auto channel = std::make_shared<ovo_test::RecordingChannel>();
    lg::ILogger& logger = lg::add("threads.busy", channel);
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i)
            logger.info("m");
    });
    for (int i = 0; i < 500; ++i)
        lg::get("threads.busy.sub" + std::to_string(i));
    writer.join();
    EXPECT_EQ(channel->messages().size(), 2000u);
}
