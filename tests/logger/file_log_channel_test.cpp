#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>

#include "support/exclusive_file.h"
#include "support/log_file_name.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <future>
#include <set>
#include <sstream>

#if !defined(_WIN32)
#include "support/planted_links.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#endif

using namespace ovo::logger;
using ovo_test::readFile;
using ovo_test::todaysLogFile;
namespace fs = std::filesystem;

namespace {

// The bare message in brackets and a line feed, nothing for an empty message.
struct BracketFormatter : IMessageFormatter {
    std::string format(const std::string&, const std::string& m) override { return m.empty() ? "" : "[" + m + "]\n"; }
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
    fs::path file(const std::string& suffix) const { return dir.path() / todaysLogFile(suffix); }
    std::string contentOf(const std::string& suffix) const { return readFile(file(suffix)); }

    ovo_test::TempDir dir;
};

} // namespace

// (The file names of each suffix and directory form: the parity scenario.)
TEST_F(FileLogChannelTest, NothingIsWrittenWithoutAFormatter)
{
    FileLogChannel(dir.string(), "").write("n", "lost");
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST_F(FileLogChannelTest, HeaderStandsAtTheHeadOfAnEmptyFileOnly)
{
    auto logging = channel("h", "== header ==\n");
    logging->write("n", "first");
    channel("h", "== other ==\n")->write("n", "restart"); // the same day continues the file
    EXPECT_EQ(contentOf("h"), "== header ==\n[first]\n[restart]\n");
    std::ofstream(file("h"), std::ios::trunc).close();
    logging->write("n", "emptied");
    EXPECT_EQ(contentOf("h"), "== header ==\n[emptied]\n");

    auto keyed = channel("keys", "kept\n");
    for (const char* key : {"Rolling_Header", "rolling_header ", "other"})
        keyed->setProperty(key, "replaced\n");
    keyed->write("n", "m");
    auto removed = channel("removed", "gone\n");
    removed->setProperty(FileLogChannel::PropertyRollingHeader, "");
    removed->write("n", "m");
    channel("runs", "no line end")->write("n", "m");
    channel("empty text", "header only\n")->write("n", ""); // the formatter gives nothing
    EXPECT_EQ(
        (std::vector<std::string>{contentOf("keys"), contentOf("removed"), contentOf("runs"), contentOf("empty text")}),
        (std::vector<std::string>{"kept\n[m]\n", "[m]\n", "no line end[m]\n", "header only\n"}));
}

// A missing directory, a directory or FIFO in the file's place, or another writer holding the file past a second
// costs the one message and no hang; the channel goes on when the path is usable again.
TEST_F(FileLogChannelTest, AnUnusablePathLosesOneMessageAndRecovers)
{
    for (const std::string kind : {"missing", "directory", "fifo", "held"}) {
        const fs::path directory = kind == "missing" ? dir.path() / "later" : dir.path();
        const std::string path = (directory / todaysLogFile(kind)).string();
        if (kind == "directory")
            fs::create_directory(path);
        auto holder = std::make_unique<ovo_test::ExclusiveFile>(kind == "held" ? path : dir.string() + "/other");
#if defined(_WIN32)
        if (kind == "fifo")
            continue; // none in this file system
#else
        ASSERT_TRUE(kind != "fifo" || ::mkfifo(path.c_str(), 0600) == 0);
#endif
        auto logging = channel(kind, nullptr, directory.string());
        const auto start = std::chrono::steady_clock::now();
        auto write = std::async(std::launch::async, [&] { logging->write("n", "lost"); });
        const bool returned = write.wait_for(std::chrono::seconds(3)) == std::future_status::ready;
#if !defined(_WIN32)
        ::close(returned ? -1 : ::open(path.c_str(), O_RDONLY | O_NONBLOCK)); // frees a hung writer
#endif
        write.wait();
        EXPECT_TRUE(returned) << kind << ": the write hung";
        // Another writer is waited for, about a second; nothing else is worth a wait.
        const auto took = std::chrono::steady_clock::now() - start;
        EXPECT_TRUE(kind == "held" ? took >= std::chrono::milliseconds(900) : took < std::chrono::milliseconds(600))
            << kind << ": " << std::chrono::duration_cast<std::chrono::milliseconds>(took).count() << " ms";
        EXPECT_NE(fs::exists(directory), kind == "missing") << "a missing directory is not created";
        holder.reset();
        fs::remove(path);
        fs::create_directory(directory);
        logging->write("n", "kept");
        EXPECT_EQ(readFile(path), "[kept]\n") << kind;
    }
}

// Two threads and four processes (two through a split channel) share a file: the header once, each message whole.
TEST_F(FileLogChannelTest, ThreadsAndProcessesNeverTearOrLoseALine)
{
    FileLogChannel shared(dir.string(), "shared");
    shared.setFormatter(std::make_shared<SimpleFormatter>());
    shared.setProperty(FileLogChannel::PropertyRollingHeader, "# header\n");
    std::vector<int> status(4, -1);
    std::vector<std::thread> writers;
    for (int w = 0; w < 6; ++w)
        writers.emplace_back([&, w] {
            for (int i = 0; w < 2 && i < 3000; ++i)
                shared.write("n", "t" + std::to_string(w) + " " + std::to_string(i) + " " + std::string(60, '.'));
            if (w >= 2)
                status[w - 2] = ovo_test::runProgram(
                    ovo_test::siblingProgram("file_log_writer"),
                    {dir.string(), "shared", "p" + std::to_string(w), "3000", w % 2 ? "split" : "plain"});
        });
    for (auto& writer : writers)
        writer.join();
    ASSERT_EQ(status, std::vector<int>(4, 0));

    std::istringstream lines(contentOf("shared"));
    std::string line;
    ASSERT_TRUE(std::getline(lines, line) && line == "# header") << line;
    std::set<std::string> seen;
    const std::string tail = " " + std::string(60, '.');
    while (std::getline(lines, line)) {
        ASSERT_TRUE(line.size() > tail.size() && line.compare(line.size() - tail.size(), tail.size(), tail) == 0)
            << line;
        EXPECT_TRUE(seen.insert(line.substr(line.find("] ") + 2)).second) << line;
    }
    EXPECT_EQ(seen.size(), 18000u);
}

#if !defined(_WIN32)
// Another user's link in the file's place costs the message and leaves its target untouched.
TEST_F(FileLogChannelTest, ALinkThatAnotherUserPlantedIsNeverFollowed)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may make a link of another user";
    for (const auto& row : ovo_test::plantedLinks) {
        const fs::path directory = dir.path() / row.name, target = dir.path() / (std::string(row.name) + ".target");
        fs::create_directory(directory);
        std::ofstream(target) << "secret\n";
        ASSERT_TRUE(ovo_test::plantLink(row, directory, todaysLogFile("l"), target));
        channel("l", nullptr, directory.string())->write("n", "m");
        EXPECT_EQ(readFile(target), row.followed ? "secret\n[m]\n" : "secret\n") << row.name;
        EXPECT_TRUE(fs::is_symlink(directory / todaysLogFile("l"))) << row.name;
    }
}

// On a full file system a message is whole in the file or not there at all. The file system is a small one of a
// mount namespace of the writer's own, which nobody else sees and which goes with it.
TEST_F(FileLogChannelTest, AFullDiskKeepsEachMessageWholeOrNotAtAll)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may mount a small file system";
    const fs::path small = dir.path() / "small", copy = dir.path() / "copy";
    fs::create_directory(small);
    const std::string body(990, '.');
    const int status =
        ovo_test::ChildProcess([&] {
            if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                ::mount("tmpfs", small.c_str(), "tmpfs", 0, "size=16k") != 0)
                return 3;
            auto logging = channel("full", "# header\n", small.string());
            for (int i = 0; i < 40; ++i)
                logging->write("n", std::to_string(i) + " " + body);
            std::ofstream(copy, std::ios::binary) << readFile(small / todaysLogFile("full"));
            return 0;
        }).wait();
    if (status == 3)
        GTEST_SKIP() << "no mount namespace of its own here";
    ASSERT_EQ(status, 0);
    const std::string content = readFile(copy);
    std::string whole = "# header\n"; // and as many whole lines as make up the file
    for (int i = 0; whole.size() < content.size(); ++i)
        whole += "[" + std::to_string(i) + " " + body + "]\n";
    EXPECT_TRUE(content == whole) << "a partial or torn line in the " << content.size() << " bytes";
    EXPECT_GT(content.size(), 10000u);
}
#endif
