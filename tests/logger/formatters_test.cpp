#include <ovo/logger/formatters.h>
#include <ovo/strings.h>

#include "support/log_file_name.h"
#include "support/process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <vector>

using ovo::logger::ConsoleFormatter;
using ovo::logger::SimpleFormatter;

namespace {

// Whether the stamp in front of `text` is the local time between `before` and now, to the millisecond.
bool stampedBetween(std::chrono::system_clock::time_point before, const std::string& text)
{
    auto stampOf = [](std::chrono::system_clock::time_point at) {
        const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(at.time_since_epoch()).count();
        const std::tm local = ovo_test::localTime(static_cast<std::time_t>(ms / 1000));
        return ovo::format("%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                           static_cast<int>(ms % 1000));
    };
    const std::string from = stampOf(before), to = stampOf(std::chrono::system_clock::now()),
                      stamp = text.substr(0, 12);
    return from <= to ? from <= stamp && stamp <= to : stamp >= from || stamp <= to;
}

} // namespace

TEST(ConsoleFormatter, BareMessageAndLineFeed)
{
    EXPECT_EQ(ConsoleFormatter().format("ignored", std::string("a\0b\n", 4)), std::string("a\0b\n\n", 5));
}

TEST(SimpleFormatter, LayoutToTheByteInManyThreadsAtOnce)
{
    const std::string blanks32(32, ' ');
    const struct {
        std::string name;
        std::string message;
        std::string behindStamp;
    } cases[] = {
        {"reader", "card inserted", " [reader          ] card inserted\n"},
        {"", "", " [                ] \n"},
        {"exactly16bytes..", "m", " [exactly16bytes..] m\n"},
        {"seventeen-bytes..", "m\nn", " [seventeen-bytes..] m\n" + blanks32 + "n\n"},
        {"n", "ends\n", " [n               ] ends\n" + blanks32 + "\n"},
        {"n", "a\n\nb", " [n               ] a\n" + blanks32 + "\n" + blanks32 + "b\n"},
        {"n", "crlf\r\nnext\r", " [n               ] crlf\r\n" + blanks32 + "next\r\n"},
        {"n", std::string("cut\0here\nkeep\0this", 18),
         " [n               ] cut\n" + blanks32 + std::string("keep\0this\n", 10)},
        {std::string("ab\0cd", 5), "m", " [ab              ] m\n"},
        {"100%", "%s %d", " [100%            ] %s %d\n"},
    };
    SimpleFormatter formatter; // one for every thread
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int round = 0; round < 100 && !testing::Test::HasFailure(); ++round)
                for (const auto& c : cases) {
                    const auto before = std::chrono::system_clock::now();
                    const std::string text = formatter.format(c.name, c.message);
                    EXPECT_TRUE(stampedBetween(before, text)) << text;
                    EXPECT_EQ(text.substr(12), c.behindStamp) << "message [" << c.message << "]";
                }
        });
    for (auto& thread : threads)
        thread.join();
}

TEST(SimpleFormatter, FollowsATimeZoneChangeWithinASecond)
{
    const char* saved = std::getenv("TZ");
    const std::string savedZone = saved ? saved : "";
    SimpleFormatter formatter;

    for (const char* zone : {"UTC0", "XYZ-5", "ABC+3"}) {
        ovo_test::setTimeZone(zone);
        const auto stampedNow = [&] {
            const auto before = std::chrono::system_clock::now();
            return stampedBetween(before, formatter.format("tz", "m"));
        };
        EXPECT_TRUE(ovo_test::waitUntil(stampedNow, std::chrono::milliseconds(1200), std::chrono::milliseconds(20)))
            << zone;
    }
    ovo_test::setTimeZone(saved ? savedZone.c_str() : nullptr);
}
