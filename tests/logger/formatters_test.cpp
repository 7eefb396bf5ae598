#include <ovo/logger/formatters.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

using ovo::logger::ConsoleFormatter;
using ovo::logger::SimpleFormatter;

namespace {

std::tm brokenDown(std::time_t time, bool local)
{
    std::tm result{};
#if defined(_WIN32)
    local ? localtime_s(&result, &time) : gmtime_s(&result, &time);
#else
    local ? localtime_r(&time, &result) : gmtime_r(&time, &result);
#endif
    return result;
}

// "HH:MM:SS.mmm" of the local time now, as the formatter should print it.
std::string localStampNow()
{
    const auto now = std::chrono::system_clock::now();
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    const std::tm local = brokenDown(static_cast<std::time_t>(ms / 1000), true);
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(ms % 1000));
    return text;
}

// Formats and checks that the stamp lies within the window around the call; gives the
// text behind the 12-character stamp. One formatter serves every thread.
std::string formatBehindStamp(const std::string& name, const std::string& message)
{
    static SimpleFormatter formatter;
    const std::string before = localStampNow();
    const std::string text = formatter.format(name, message);
    const std::string after = localStampNow();
    const std::string stamp = text.substr(0, 12);
    const bool inWindow = before <= after ? before <= stamp && stamp <= after : stamp >= before || stamp <= after;
    EXPECT_TRUE(inWindow) << before << " <= " << stamp << " <= " << after;
    return text.substr(12);
}

// Sets TZ, or removes it for a null zone, and tells the C library.
void setTimeZone(const char* zone)
{
#if defined(_WIN32)
    _putenv_s("TZ", zone ? zone : "");
    _tzset();
#else
    zone ? setenv("TZ", zone, 1) : unsetenv("TZ");
    tzset();
#endif
}

} // namespace

TEST(ConsoleFormatter, BareMessageAndLineFeed)
{
    ConsoleFormatter formatter;
    EXPECT_EQ(formatter.format("ignored", "card inserted"), "card inserted\n");
    EXPECT_EQ(formatter.format("", ""), "\n");
    EXPECT_EQ(formatter.format("x", "two\nlines\n"), "two\nlines\n\n");
    EXPECT_EQ(formatter.format("x", std::string("a\0b", 3)), std::string("a\0b\n", 4));
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
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int round = 0; round < 100 && !testing::Test::HasFailure(); ++round)
                for (const auto& c : cases)
                    EXPECT_EQ(formatBehindStamp(c.name, c.message), c.behindStamp) << "message [" << c.message << "]";
        });
    for (auto& thread : threads)
        thread.join();
}

TEST(SimpleFormatter, FollowsATimeZoneChangeWithinASecond)
{
    const char* saved = std::getenv("TZ");
    const std::string savedZone = saved ? saved : "";
    SimpleFormatter formatter;

    for (const auto& zone : {std::pair<const char*, int>{"UTC0", 0}, {"XYZ-5", 5}, {"ABC+3", -3}}) {
        setTimeZone(zone.first);
        const auto changed = std::chrono::steady_clock::now();
        bool followed = false;
        while (!followed && std::chrono::steady_clock::now() - changed < std::chrono::milliseconds(1500)) {
            const std::time_t utcNow = std::time(nullptr);
            const int expectedHour = (brokenDown(utcNow, false).tm_hour + zone.second + 24) % 24;
            const std::string text = formatter.format("tz", "m");
            followed = std::stoi(text.substr(0, 2)) == expectedHour;
            if (!followed)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        const auto took = std::chrono::steady_clock::now() - changed;
        EXPECT_TRUE(followed) << zone.first;
        EXPECT_LE(took, std::chrono::milliseconds(1200)) << zone.first;
    }
    setTimeZone(saved ? savedZone.c_str() : nullptr);
}
