// Several processes append to one daily file: every message stands in it exactly once,
// every line whole, and the header once at its head.
#include "support/log_file_name.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

TEST(FileLogProcesses, FourWritersOneFile)
{
    const int writers = 4;
    const int perWriter = 5000;
    ovo_test::TempDir dir;
    const std::string writer = ovo_test::siblingProgram("file_log_writer");

    std::vector<int> status(writers, -1);
    std::vector<std::thread> launchers;
    for (int w = 0; w < writers; ++w)
        launchers.emplace_back([&, w] {
            status[w] = ovo_test::runProgram(writer, {dir.string(), "shared", std::to_string(w),
                                                      std::to_string(perWriter), w % 2 ? "split" : "plain"});
        });
    for (auto& launcher : launchers)
        launcher.join();
    ASSERT_EQ(status, std::vector<int>(writers, 0));

    std::istringstream lines(ovo_test::readFile(dir.path() / ovo_test::todaysLogFile("shared")));
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(line, "# header");
    std::map<std::string, int> seen;
    const std::string tail = " " + std::string(40, 'x');
    int torn = 0;
    while (std::getline(lines, line)) {
        const bool whole = line.size() > 33 && line.compare(12, 8, " [writer") == 0 &&
                           line.compare(line.size() - tail.size(), tail.size(), tail) == 0 &&
                           line.compare(32, 7, "writer ") == 0;
        if (!whole) {
            ++torn;
            continue;
        }
        ++seen[line.substr(32)];
    }
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(writers * perWriter));
    int repeated = 0;
    for (const auto& entry : seen)
        repeated += entry.second != 1 ? 1 : 0;
    EXPECT_EQ(repeated, 0);
}
