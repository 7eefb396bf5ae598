#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>

#include "support/exclusive_file.h"
#include "support/log_file_name.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace ovo::logger;
using ovo_test::readFile;
using ovo_test::TempDir;
using ovo_test::todaysLogFile;
namespace fs = std::filesystem;

namespace {

// The bare message in brackets and a line feed: easy to check to the byte.
struct BracketFormatter : IMessageFormatter {
    std::string format(const std::string&, const std::string& message) override { return "[" + message + "]\n"; }
};

struct EmptyFormatter : IMessageFormatter {
    std::string format(const std::string&, const std::string&) override { return ""; }
};

std::unique_ptr<FileLogChannel> channelIn(const TempDir& dir, const std::string& suffix, const char* header = nullptr)
{
    auto channel = std::make_unique<FileLogChannel>(dir.string(), suffix);
    channel->setFormatter(std::make_shared<BracketFormatter>());
    if (header != nullptr)
        channel->setProperty(FileLogChannel::PropertyRollingHeader, header);
    return channel;
}

std::size_t filesIn(const TempDir& dir)
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()));
}

} // namespace

TEST(FileLogChannel, PropertyKey)
{
    EXPECT_EQ(FileLogChannel::PropertyRollingHeader, "rolling_header");
}

TEST(FileLogChannel, NothingWithoutAFormatter)
{
    TempDir dir;
    FileLogChannel channel(dir.string(), "");
    channel.setProperty(FileLogChannel::PropertyRollingHeader, "header\n");
    channel.write("n", "lost");
    EXPECT_EQ(filesIn(dir), 0u);
}

TEST(FileLogChannel, FileNamesOfTheLocalDate)
{
    TempDir dir;
    channelIn(dir, "")->write("n", "plain");
    channelIn(dir, "x")->write("n", "one letter");
    channelIn(dir, "reader")->write("n", "word");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("")), "[plain]\n");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("x")), "[one letter]\n");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("reader")), "[word]\n");
    EXPECT_EQ(filesIn(dir), 3u);
}

TEST(FileLogChannel, HeaderStandsAtTheHeadOfAnEmptyFileOnly)
{
    TempDir dir;
    const fs::path file = dir.path() / todaysLogFile("h");
    auto channel = channelIn(dir, "h", "== header ==\n");
    channel->write("n", "first");
    channel->write("n", "second");
    EXPECT_EQ(readFile(file), "== header ==\n[first]\n[second]\n");

    // A restart on the same day continues the file without a second header.
    channelIn(dir, "h", "== other header ==\n")->write("n", "after restart");
    EXPECT_EQ(readFile(file), "== header ==\n[first]\n[second]\n[after restart]\n");

    // Emptied while running: the next message writes the header again.
    std::ofstream(file, std::ios::trunc).close();
    channel->write("n", "after emptying");
    EXPECT_EQ(readFile(file), "== header ==\n[after emptying]\n");

    // Removed: made anew, with the header.
    fs::remove(file);
    channel->write("n", "after removal");
    EXPECT_EQ(readFile(file), "== header ==\n[after removal]\n");
}

TEST(FileLogChannel, HeaderRules)
{
    TempDir dir;
    channelIn(dir, "none")->write("n", "alone");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("none")), "[alone]\n");

    channelIn(dir, "runs", "no line end")->write("n", "m");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("runs")), "no line end[m]\n");

    auto keyed = channelIn(dir, "keys", "kept\n");
    keyed->setProperty("Rolling_Header", "wrong case\n");
    keyed->setProperty("rolling_header ", "trailing blank\n");
    keyed->setProperty("other", "x");
    keyed->write("n", "m");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("keys")), "kept\n[m]\n");

    auto removed = channelIn(dir, "removed", "gone\n");
    removed->setProperty(FileLogChannel::PropertyRollingHeader, "");
    removed->write("n", "m");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("removed")), "[m]\n");

    FileLogChannel empty(dir.string(), "empty");
    empty.setFormatter(std::make_shared<EmptyFormatter>());
    empty.setProperty(FileLogChannel::PropertyRollingHeader, "header only\n");
    empty.write("n", "m");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("empty")), "header only\n");
}

TEST(FileLogChannel, MissingDirectoryLosesMessagesAndRecovers)
{
    TempDir dir;
    const fs::path missing = dir.path() / "later";
    FileLogChannel channel(missing.string(), "");
    channel.setFormatter(std::make_shared<BracketFormatter>());
    EXPECT_NO_THROW(channel.write("n", "lost"));
    EXPECT_FALSE(fs::exists(missing)) << "the directory is not created";
    fs::create_directory(missing);
    channel.write("n", "kept");
    EXPECT_EQ(readFile(missing / todaysLogFile("")), "[kept]\n");
}

TEST(FileLogChannel, DirectoryEndingInTheSeparatorStillWorks)
{
    TempDir dir;
    FileLogChannel channel(dir.string() + static_cast<char>(fs::path::preferred_separator), "sep");
    channel.setFormatter(std::make_shared<BracketFormatter>());
    channel.write("n", "m");
    EXPECT_EQ(readFile(dir.path() / todaysLogFile("sep")), "[m]\n");
}

TEST(FileLogChannel, WaitsForAnotherWriterUpToASecond)
{
    TempDir dir;
    const fs::path file = dir.path() / todaysLogFile("busy");
    auto channel = channelIn(dir, "busy");

    // Released after 300 ms: the message waits and arrives.
    auto other = std::make_unique<ovo_test::ExclusiveFile>(file.string());
    ASSERT_TRUE(other->held());
    std::thread releaser([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        other->release();
    });
    auto start = std::chrono::steady_clock::now();
    channel->write("n", "waited");
    const auto waited = std::chrono::steady_clock::now() - start;
    releaser.join();
    EXPECT_GE(waited, std::chrono::milliseconds(250));
    EXPECT_EQ(readFile(file), "[waited]\n");

    // Held for longer than the bound: the message is lost after about a second, no hang.
    ovo_test::ExclusiveFile stuck(file.string());
    ASSERT_TRUE(stuck.held());
    start = std::chrono::steady_clock::now();
    channel->write("n", "lost");
    const auto gaveUp = std::chrono::steady_clock::now() - start;
    EXPECT_GE(gaveUp, std::chrono::milliseconds(900));
    EXPECT_LE(gaveUp, std::chrono::milliseconds(3000));
    stuck.release();
    channel->write("n", "recovered");
    EXPECT_EQ(readFile(file), "[waited]\n[recovered]\n");
}

TEST(FileLogChannel, ThreadsOfOneChannelNeverTearALine)
{
    TempDir dir;
    auto channel = std::make_shared<FileLogChannel>(dir.string(), "threads");
    channel->setFormatter(std::make_shared<SimpleFormatter>());
    channel->setProperty(FileLogChannel::PropertyRollingHeader, "# header\n");
    const int threadCount = 8;
    const int perThread = 1000;
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < perThread; ++i)
                channel->write("thread" + std::to_string(t), "message " + std::to_string(i));
        });
    for (auto& thread : threads)
        thread.join();

    std::istringstream lines(readFile(dir.path() / todaysLogFile("threads")));
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(line, "# header");
    std::map<std::string, int> seen;
    while (std::getline(lines, line)) {
        ASSERT_EQ(line.size() > 33 ? line.substr(12, 8) : std::string(), " [thread") << line;
        ++seen[line.substr(14, 16) + line.substr(32)];
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(threadCount * perThread));
    for (const auto& entry : seen)
        EXPECT_EQ(entry.second, 1) << entry.first;
}
