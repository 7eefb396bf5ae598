// Time stamps and file names at chosen instants, through the scripted clock. The zone
// is UTC for these cases, so local time is the scripted time.
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>

#include "fakes/scripted_clock.h"
#include "support/log_file_name.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace ovo::logger;

namespace {

const std::int64_t second = 10000000, millisecond = 10000; // in 100-ns ticks
const std::int64_t midnight = 1795132800LL * second;       // 2026-11-20 00:00:00 UTC

class InUtc : public testing::Test {
protected:
    void SetUp() override { ovo_test::setTimeZone("UTC0"); }
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
        {midnight + 7 * millisecond + 9999, "00:00:00.007"}, // fractions are cut off
        {midnight - 1, "23:59:59.999"},
        {midnight + (13 * 3600 + 4 * 60 + 5) * second + 60 * millisecond, "13:04:05.060"},
    };
    for (const auto& c : cases) {
        ovo_fake::scriptClock({c.ticks});
        EXPECT_EQ(formatter.format("clock", "m"), std::string(c.stamp) + " [clock           ] m\n");
    }
}

// The name is read a millisecond before midnight, the stamp at midnight: the line of the
// new day ends the old day's file. A year of five digits is written in full.
TEST_F(InUtc, TheFileNameIsReadBeforeTheStampAndHasTheWholeYear)
{
    ovo_test::TempDir dir;
    FileLogChannel channel(dir.string(), "midnight");
    channel.setFormatter(std::make_shared<SimpleFormatter>());
    ovo_fake::scriptClock({midnight - millisecond, midnight, midnight + millisecond, midnight + millisecond});
    channel.write("clock", "last of the day");
    channel.write("clock", "first of the day");
    EXPECT_EQ(ovo_test::readFile(dir.path() / "2026-11-19-midnight.log"),
              "00:00:00.000 [clock           ] last of the day\n");
    EXPECT_EQ(ovo_test::readFile(dir.path() / "2026-11-20-midnight.log"),
              "00:00:00.001 [clock           ] first of the day\n");
#if !defined(_WIN32) // Windows converts the years 1970 to 3000 only
    ovo_fake::scriptClock({253402300800LL * second});
    channel.write("clock", "m");
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "10000-01-01-midnight.log"));
#endif
}
