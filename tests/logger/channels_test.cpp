#include <ovo/logger/channels.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>

#include "support/clog_capture.h"
#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace ovo::logger;
using ovo_test::ClogCapture;
using ovo_test::RecordingChannel;

namespace {

// Prefixes every message with a tag, so that tests can tell formatters apart.
struct TagFormatter : IMessageFormatter {
    explicit TagFormatter(std::string tag) : tag(std::move(tag)) {}
    std::string format(const std::string& name, const std::string& message) override
    {
        return tag + ":" + name + ":" + message + "\n";
    }
    std::string tag;
};

struct ThrowingFormatter : IMessageFormatter {
    std::string format(const std::string&, const std::string&) override { throw std::runtime_error("format"); }
};

// Appends "tag" to a shared journal, so that the order across members shows.
struct JournalChannel : AbstractLogChannel {
    JournalChannel(std::vector<std::string>& journal, std::string tag) : journal(journal), tag(std::move(tag)) {}
    void write(const std::string&, const std::string& message) override
    {
        if (message == "throw at " + tag)
            throw std::runtime_error(tag);
        journal.push_back(tag + "<" + message);
    }
    std::vector<std::string>& journal;
    std::string tag;
};

} // namespace

TEST(ConsoleLogChannel, WritesTheFormattedTextUnchanged)
{
    ClogCapture capture;
    ConsoleLogChannel channel;
    channel.write("n", "lost: no formatter");
    channel.setFormatter(std::make_shared<ConsoleFormatter>());
    channel.write("n", "one");
    channel.write("n", std::string("two\0zero", 8));
    channel.setProperty("rolling_header", "ignored");
    EXPECT_EQ(capture.text(), std::string("one\ntwo\0zero\n", 13));
}

TEST(ConsoleLogChannel, CopiesShareAndMovesTakeTheFormatter)
{
    ClogCapture capture;
    ConsoleLogChannel original;
    original.setFormatter(std::make_shared<TagFormatter>("A"));
    ConsoleLogChannel copy(original);
    copy.write("c", "1");
    copy.setFormatter(std::make_shared<TagFormatter>("B"));
    original.write("o", "2");
    copy.write("c", "3");

    ConsoleLogChannel moved(std::move(original));
    original.write("o", "lost"); // NOLINT: the moved-from channel has no formatter
    moved.write("m", "4");
    ConsoleLogChannel assigned;
    assigned = std::move(moved);
    moved.write("m", "lost"); // NOLINT
    assigned.write("a", "5");
    EXPECT_EQ(capture.text(), "A:c:1\nA:o:2\nB:c:3\nA:m:4\nA:a:5\n");
}

TEST(ConsoleLogChannel, FormatterExceptionReleasesTheConsole)
{
    ClogCapture capture;
    ConsoleLogChannel failing;
    failing.setFormatter(std::make_shared<ThrowingFormatter>());
    EXPECT_THROW(failing.write("n", "m"), std::runtime_error);
    ConsoleLogChannel working;
    working.setFormatter(std::make_shared<ConsoleFormatter>());
    working.write("n", "after"); // would deadlock if the console mutex were still held
    EXPECT_EQ(capture.text(), "after\n");
}

TEST(ConsoleLogChannel, LinesOfManyThreadsNeverMix)
{
    ClogCapture capture;
    auto channel = std::make_shared<ConsoleLogChannel>();
    channel->setFormatter(std::make_shared<SimpleFormatter>());
    const int threadCount = 8;
    const int perThread = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < perThread; ++i)
                channel->write("t" + std::to_string(t),
                               "message " + std::to_string(i) + " of thread " + std::to_string(t) + "\ncontinued");
        });
    for (auto& thread : threads)
        thread.join();

    // Every message stands once, as its two whole lines, in the order its thread sent it.
    std::istringstream lines(capture.text());
    const std::regex firstLine(R"(\d\d:\d\d:\d\d\.\d{3} \[t(\d) {14}\] message (\d+) of thread (\d))");
    std::vector<int> nextOfThread(threadCount, 0);
    std::string first;
    std::string second;
    int count = 0;
    while (std::getline(lines, first) && std::getline(lines, second)) {
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(first, parts, firstLine)) << first;
        const int thread = std::stoi(parts[1]);
        EXPECT_EQ(parts[3], parts[1]);
        EXPECT_EQ(std::stoi(parts[2]), nextOfThread[thread]++);
        EXPECT_EQ(second, std::string(32, ' ') + "continued");
        ++count;
    }
    EXPECT_EQ(count, threadCount * perThread);
}

TEST(SplitLogChannel, FansOutInOrderOfAdd)
{
    std::vector<std::string> journal;
    SplitLogChannel split;
    split.write("n", "no members yet");
    auto a = std::make_shared<JournalChannel>(journal, "a");
    auto b = std::make_shared<JournalChannel>(journal, "b");
    split.add(a);
    split.add(b);
    split.add(a);
    split.write("n", "m1");
    EXPECT_EQ(journal, (std::vector<std::string>{"a<m1", "b<m1", "a<m1"}));
}

TEST(SplitLogChannel, MemberExceptionStopsThatMessageOnly)
{
    std::vector<std::string> journal;
    SplitLogChannel split;
    split.add(std::make_shared<JournalChannel>(journal, "a"));
    split.add(std::make_shared<JournalChannel>(journal, "b"));
    split.add(std::make_shared<JournalChannel>(journal, "c"));
    EXPECT_THROW(split.write("n", "throw at b"), std::runtime_error);
    split.write("n", "next");
    EXPECT_EQ(journal, (std::vector<std::string>{"a<throw at b", "a<next", "b<next", "c<next"}));
}

TEST(SplitLogChannel, MembersFormatForThemselves)
{
    ClogCapture capture;
    auto split = std::make_shared<SplitLogChannel>();
    auto bare = std::make_shared<ConsoleLogChannel>();
    auto tagged = std::make_shared<ConsoleLogChannel>();
    auto unformatted = std::make_shared<ConsoleLogChannel>();
    auto recorder = std::make_shared<RecordingChannel>();
    bare->setFormatter(std::make_shared<ConsoleFormatter>());
    tagged->setFormatter(std::make_shared<TagFormatter>("T"));
    split->add(unformatted);
    split->add(bare);
    split->add(tagged);
    split->add(recorder);
    split->setFormatter(std::make_shared<ThrowingFormatter>()); // stored, never used
    split->setProperty("rolling_header", "x");

    ILogger& logger = add("split.members", split);
    logger.info("hello");
    EXPECT_EQ(capture.text(), "hello\nT:split.members:hello\n");
    EXPECT_EQ(recorder->messages(), std::vector<std::string>{"hello"});
}

TEST(SplitLogChannel, SharedMemberServesTwoSplitsFromManyThreads)
{
    auto shared = std::make_shared<RecordingChannel>();
    auto left = std::make_shared<SplitLogChannel>();
    auto right = std::make_shared<SplitLogChannel>();
    left->add(shared);
    right->add(shared);
    auto outer = std::make_shared<SplitLogChannel>();
    outer->add(left);
    outer->add(right);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i)
                (i % 2 ? left : outer)->write("n", "m");
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(shared->messages().size(), 4u * (500 + 500 * 2));
}
