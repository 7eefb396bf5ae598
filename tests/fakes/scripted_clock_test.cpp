// Time stamps and file names at chosen instants, through the scripted clock. The zone
// is UTC for these cases, so local time is the scripted time.
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>

#include "fakes/scripted_clock.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>

using namespace ovo::logger;

namespace {

const std::int64_t ticksPerSecond = 10000000;
const std::int64_t ticksPerMillisecond = 10000;
const std::int64_t midnight20261120 = 1795132800LL * ticksPerSecond; // 2026-11-20 00:00:00 UTC

class InUtc : public testing::Test {
protected:
    void SetUp() override
    {
#if defined(_WIN32)
        _putenv_s("TZ", "UTC0");
        _tzset();
#else
        setenv("TZ", "UTC0", 1);
        tzset();
#endif
    }
    void TearDown() override { ovo_fake::scriptClock({}); }
};

} // namespace

TEST_F(InUtc, StampsOfChosenInstants)
{
    SimpleFormatter formatter;
    const struct {
        std::int64_t ticks;
        const char* stamp;
    } cases[] = {
        {midnight20261120, "00:00:00.000"},
        {midnight20261120 + 7 * ticksPerMillisecond, "00:00:00.007"},
        {midnight20261120 + 7 * ticksPerMillisecond + 9999, "00:00:00.007"}, // fractions are cut off
        {midnight20261120 - 1, "23:59:59.999"},
        {midnight20261120 + (13 * 3600 + 4 * 60 + 5) * ticksPerSecond + 60 * ticksPerMillisecond, "13:04:05.060"},
    };
    for (const auto& c : cases) {
        ovo_fake::scriptClock({c.ticks});
        EXPECT_EQ(formatter.format("clock", "m"), std::string(c.stamp) + " [clock           ] m\n");
        EXPECT_EQ(ovo_fake::unreadTicks(), 0u);
    }
}

TEST_F(InUtc, FileNameIsReadBeforeTheStamp)
{
    ovo_test::TempDir dir;
    FileLogChannel channel(dir.string(), "midnight");
    channel.setFormatter(std::make_shared<SimpleFormatter>());

    // The name is taken a millisecond before midnight, the stamp at midnight: the line of
    // the new day ends the old day's file.
    ovo_fake::scriptClock({midnight20261120 - ticksPerMillisecond, midnight20261120});
    channel.write("clock", "last of the day");
    ovo_fake::scriptClock({midnight20261120 + ticksPerMillisecond, midnight20261120 + ticksPerMillisecond});
    channel.write("clock", "first of the day");

    EXPECT_EQ(ovo_test::readFile(dir.path() / "2026-11-19-midnight.log"),
              "00:00:00.000 [clock           ] last of the day\n");
    EXPECT_EQ(ovo_test::readFile(dir.path() / "2026-11-20-midnight.log"),
              "00:00:00.001 [clock           ] first of the day\n");
}
