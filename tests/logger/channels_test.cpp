#include <ovo/logger/channels.h>
#include <ovo/strings.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>

using namespace ovo::logger;

namespace {

// Swaps std::clog's buffer for a string buffer while it lives.
struct ClogCapture {
    ClogCapture() : saved(std::clog.rdbuf(text.rdbuf())) {}
    ~ClogCapture() { std::clog.rdbuf(saved); }
    std::ostringstream text;
    std::streambuf* saved;
};

// Tags every message, so that tests can tell formatters apart; throws on "throw".
struct TagFormatter : IMessageFormatter {
    explicit TagFormatter(std::string tag) : tag(std::move(tag)) {}
    std::string format(const std::string& name, const std::string& message) override
    {
        if (message == "throw")
            throw std::runtime_error("format");
        return tag + ":" + name + ":" + message + "\n";
    }
    std::string tag;
};

// Appends "tag<message" to a shared journal, so that the order across members shows.
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

TEST(ConsoleLogChannel, CopiesShareTheFormatterAndAThrowingOneFreesTheConsole)
{
    ClogCapture capture;
    ConsoleLogChannel original;
    original.setFormatter(std::make_shared<TagFormatter>("A"));
    ConsoleLogChannel copy(original);
    copy.write("c", "1");
    copy.setFormatter(std::make_shared<TagFormatter>("B"));
    original.write("o", "2");
    EXPECT_THROW(copy.write("c", "throw"), std::runtime_error);
    copy.write("c", "3"); // the console mutex is free again
    EXPECT_EQ(capture.text.str(), "A:c:1\nA:o:2\nB:c:3\n");
}

TEST(ConsoleLogChannel, LinesOfManyThreadsNeverMix)
{
    ClogCapture capture;
    ConsoleLogChannel channel;
    channel.setFormatter(std::make_shared<TagFormatter>("c"));
    const int threadCount = 8, perThread = 300;
    const std::string tail(4000, '+'); // a long copy into the stream widens any window for a race
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < perThread; ++i)
                channel.write(std::to_string(t), std::to_string(i) + "\n" + tail);
        });
    for (auto& thread : threads)
        thread.join();

    // Every message stands once, as its two whole lines, in the order its thread sent it: the first
    // lines ("c:THREAD:NUMBER"), in a stable order of their threads, are each thread's in turn.
    std::vector<std::string> firstLines = ovo::SplitString(capture.text.str(), "\n" + tail + "\n", true), sent;
    std::stable_sort(firstLines.begin(), firstLines.end(),
                     [](const std::string& a, const std::string& b) { return a.substr(0, 3) < b.substr(0, 3); });
    for (int t = 0; t < threadCount; ++t)
        for (int i = 0; i < perThread; ++i)
            sent.push_back("c:" + std::to_string(t) + ":" + std::to_string(i));
    EXPECT_EQ(firstLines, sent);
}

TEST(SplitLogChannel, FansOutInOrderAndStopsAMessageAtAFailingMember)
{
    ClogCapture capture;
    std::vector<std::string> journal;
    SplitLogChannel outer;
    outer.write("n", "no members yet");
    auto inner = std::make_shared<SplitLogChannel>(); // each split channel has a lock of its own
    auto a = std::make_shared<JournalChannel>(journal, "a");
    inner->add(a);
    inner->add(std::make_shared<JournalChannel>(journal, "b"));
    auto tagged = std::make_shared<ConsoleLogChannel>(); // members format for themselves
    tagged->setFormatter(std::make_shared<TagFormatter>("T"));
    tagged->setProperty("rolling_header", "ignored");
    outer.add(inner);
    outer.add(a);
    outer.add(std::make_shared<ConsoleLogChannel>()); // without a formatter: writes nothing
    outer.add(tagged);
    outer.setFormatter(std::make_shared<TagFormatter>("unused"));
    outer.setProperty("rolling_header", "x");
    const std::string m1("m\0one", 5); // passed on as it stands, zero byte and all
    outer.write("n", m1);
    EXPECT_THROW(outer.write("n", "throw at b"), std::runtime_error);
    outer.write("n", "m2");
    EXPECT_EQ(journal,
              (std::vector<std::string>{"a<" + m1, "b<" + m1, "a<" + m1, "a<throw at b", "a<m2", "b<m2", "a<m2"}));
    EXPECT_EQ(capture.text.str(), "T:n:" + m1 + "\nT:n:m2\n");
}
