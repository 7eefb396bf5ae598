#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>

#include "support/exclusive_file.h"
#include "support/log_file_name.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace ovo::logger;
using ovo_test::readFile;
using ovo_test::TempDir;
using ovo_test::todaysLogFile;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
namespace fs = std::filesystem;

namespace {

// The bare message in brackets and a line feed: easy to check to the byte.
struct BracketFormatter : IMessageFormatter {
    std::string format(const std::string&, const std::string& message) override
    {
        return message.empty() ? "" : "[" + message + "]\n";
    }
};

class FileLogChannelTest : public testing::Test {
protected:
    std::unique_ptr<FileLogChannel> channel(const std::string& suffix, const char* header = nullptr,
                                            const std::string& directory = "") const
    {
        auto made = std::make_unique<FileLogChannel>(directory.empty() ? dir.string() : directory, suffix);
        made->setFormatter(std::make_shared<BracketFormatter>());
        if (header != nullptr)
            made->setProperty(FileLogChannel::PropertyRollingHeader, header);
        return made;
    }
    std::string contentOf(const std::string& suffix) const { return readFile(file(suffix)); }
    fs::path file(const std::string& suffix) const { return dir.path() / todaysLogFile(suffix); }

    TempDir dir;
};

} // namespace

TEST_F(FileLogChannelTest, NothingWithoutAFormatter)
{
    EXPECT_EQ(FileLogChannel::PropertyRollingHeader, "rolling_header");
    FileLogChannel bare(dir.string(), "");
    bare.setProperty(FileLogChannel::PropertyRollingHeader, "header\n");
    bare.write("n", "lost");
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST_F(FileLogChannelTest, FileNamesOfTheLocalDate)
{
    for (const char* suffix : {"", "x", "reader"}) {
        channel(suffix)->write("n", suffix + std::string("!"));
        EXPECT_EQ(readFile(file(suffix)), "[" + std::string(suffix) + "!]\n") << todaysLogFile(suffix);
    }
    // A directory that ends in the separator gets a second one, which the system ignores.
    channel("sep", nullptr, dir.string() + static_cast<char>(fs::path::preferred_separator))->write("n", "m");
    EXPECT_EQ(contentOf("sep"), "[m]\n");
}

TEST_F(FileLogChannelTest, HeaderStandsAtTheHeadOfAnEmptyFileOnly)
{
    auto logging = channel("h", "== header ==\n");
    logging->write("n", "first");
    logging->write("n", "second");
    EXPECT_EQ(contentOf("h"), "== header ==\n[first]\n[second]\n");
    channel("h", "== other ==\n")->write("n", "restart"); // the same day continues the file
    EXPECT_EQ(contentOf("h"), "== header ==\n[first]\n[second]\n[restart]\n");
    std::ofstream(file("h"), std::ios::trunc).close();
    logging->write("n", "emptied");
    EXPECT_EQ(contentOf("h"), "== header ==\n[emptied]\n");
    fs::remove(file("h"));
    logging->write("n", "removed");
    EXPECT_EQ(contentOf("h"), "== header ==\n[removed]\n");
}

TEST_F(FileLogChannelTest, HeaderRules)
{
    channel("none")->write("n", "alone");
    channel("runs", "no line end")->write("n", "m");
    channel("empty text", "header only\n")->write("n", ""); // the formatter gives nothing
    auto keyed = channel("keys", "kept\n");
    for (const char* key : {"Rolling_Header", "rolling_header ", "other"})
        keyed->setProperty(key, "replaced\n");
    keyed->write("n", "m");
    auto removed = channel("removed", "gone\n");
    removed->setProperty(FileLogChannel::PropertyRollingHeader, "");
    removed->write("n", "m");

    EXPECT_EQ(contentOf("none"), "[alone]\n");
    EXPECT_EQ(contentOf("runs"), "no line end[m]\n");
    EXPECT_EQ(contentOf("empty text"), "header only\n");
    EXPECT_EQ(contentOf("keys"), "kept\n[m]\n");
    EXPECT_EQ(contentOf("removed"), "[m]\n");
}

// What stands where the file should be decides only about the one message: it is lost
// at once, and the channel goes on when the path is usable again.
TEST_F(FileLogChannelTest, AnUnusablePathLosesOneMessageAndRecovers)
{
    const fs::path missing = dir.path() / "later";
    auto inMissing = channel("", nullptr, missing.string());
    inMissing->write("n", "lost");
    EXPECT_FALSE(fs::exists(missing)) << "the directory is not created";
    fs::create_directory(missing);
    inMissing->write("n", "kept");
    EXPECT_EQ(readFile(missing / todaysLogFile("")), "[kept]\n");

    const std::vector<std::string> kinds = {
        "directory",
#if !defined(_WIN32)
        "fifo"
#endif
    };
    for (const std::string& kind : kinds) {
        auto logging = channel(kind);
        const std::string path = file(kind).string();
#if !defined(_WIN32)
        if (kind == "fifo")
            ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
        else
#endif
            fs::create_directory(path);
        auto write = std::async(std::launch::async, [&] { logging->write("n", "lost"); });
        const bool returned = write.wait_for(std::chrono::seconds(3)) == std::future_status::ready;
#if !defined(_WIN32)
        const int reader = returned ? -1 : ::open(path.c_str(), O_RDONLY | O_NONBLOCK); // frees a hung writer
        write.wait();
        ::close(reader);
#endif
        EXPECT_TRUE(returned) << kind << ": the write hung";
        fs::remove(path);
        logging->write("n", "kept");
        EXPECT_EQ(contentOf(kind), "[kept]\n") << kind;
    }
}

TEST_F(FileLogChannelTest, WaitsForAnotherWriterUpToASecond)
{
    auto logging = channel("busy");
    auto other = std::make_unique<ovo_test::ExclusiveFile>(file("busy").string());
    ASSERT_TRUE(other->held());
    std::thread releaser([&] {
        std::this_thread::sleep_for(milliseconds(300));
        other->release();
    });
    auto start = Clock::now();
    logging->write("n", "waited");
    EXPECT_GE(Clock::now() - start, milliseconds(250));
    releaser.join();

    ovo_test::ExclusiveFile stuck(file("busy").string());
    ASSERT_TRUE(stuck.held());
    start = Clock::now();
    logging->write("n", "lost");
    const auto gaveUp = Clock::now() - start;
    EXPECT_GE(gaveUp, milliseconds(900));
    EXPECT_LE(gaveUp, milliseconds(3000));
    stuck.release();
    logging->write("n", "recovered");
    EXPECT_EQ(contentOf("busy"), "[waited]\n[recovered]\n");
}

// Every line of a file that many writers shared: the header once at its head, then each
// message whole and exactly once.
void expectEveryMessageOnce(const std::string& content, std::size_t messages)
{
    std::istringstream lines(content);
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(line, "# header");
    std::set<std::string> seen;
    const std::string tail = " " + std::string(60, '.');
    while (std::getline(lines, line)) {
        ASSERT_TRUE(line.size() > tail.size() && line.compare(line.size() - tail.size(), tail.size(), tail) == 0)
            << line;
        EXPECT_TRUE(seen.insert(line.substr(line.find("] ") + 2)).second) << line;
    }
    EXPECT_EQ(seen.size(), messages);
}

TEST_F(FileLogChannelTest, ThreadsOfOneChannelNeverTearALine)
{
    FileLogChannel logging(dir.string(), "threads");
    logging.setFormatter(std::make_shared<SimpleFormatter>());
    logging.setProperty(FileLogChannel::PropertyRollingHeader, "# header\n");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 1000; ++i)
                logging.write("n", std::to_string(t) + " " + std::to_string(i) + " " + std::string(60, '.'));
        });
    for (auto& thread : threads)
        thread.join();
    expectEveryMessageOnce(contentOf("threads"), 4000);
}

TEST_F(FileLogChannelTest, ProcessesOnOneFileNeverTearOrLoseALine)
{
    std::vector<int> status(4, -1);
    std::vector<std::thread> launchers;
    for (int w = 0; w < 4; ++w)
        launchers.emplace_back([&, w] {
            status[w] =
                ovo_test::runProgram(ovo_test::siblingProgram("file_log_writer"),
                                     {dir.string(), "shared", std::to_string(w), "5000", w % 2 ? "split" : "plain"});
        });
    for (auto& launcher : launchers)
        launcher.join();
    ASSERT_EQ(status, std::vector<int>(4, 0));
    expectEveryMessageOnce(contentOf("shared"), 20000);
}
