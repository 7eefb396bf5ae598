// Every path that the layer opens, attacked first by a second user: a link to another file, a
// FIFO, a file of the name of its own, a directory. Whatever stands there, the operation ends
// by itself (no hang, no crash), what a link points at and what was planted stay as they were,
// and the row's own rule holds. Root plays the other users; without root the sweep skips.
#include "platform/sweep.h"
#include "support/failure_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using ovo_test::Scene;

const uid_t secondUser = 65534;      // the attacker
const uid_t sessionlessUser = 65533; // a user without a login session (cron, su)

// What the second user plants at a path: 0 when it could.
const struct {
    const char* what;
    int (*plant)(const std::string& path, const std::string& target);
} plants[] = {
    {"a link to another file",
     [](const auto& path, const auto& target) { return symlink(target.c_str(), path.c_str()); }},
    {"a FIFO", [](const auto& path, const auto&) { return mkfifo(path.c_str(), 0666); }},
    {"a file of its own",
     [](const auto& path, const auto&) {
         const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
         return fd >= 0 && write(fd, "planted", 7) == 7 ? close(fd) : -1;
     }},
    {"a directory", [](const auto& path, const auto&) { return mkdir(path.c_str(), 0777); }},
};

struct OpenedPath {
    const char* what;
    uid_t user; // who runs the operation
    // Makes what the layer needs around the path (it may point `target` elsewhere) and gives
    // the path that the layer opens.
    std::function<std::string(Scene&)> path;
    // The operation, in a process of `user`: "" when it succeeded, else its failure.
    ovo_test::SweepRound operate;
    // The row's own rule, given whether the second user could plant something: "" when it
    // holds, else what broke.
    std::function<std::string(const Scene&, bool planted, const std::string& outcome)> holds;
};

// Runs the call in a process of `user` (0: root), which ten seconds end as hung (SIGALRM);
// gives what the call gave, and the exit status.
std::pair<std::string, int> inProcessOf(uid_t user, const std::function<std::string()>& call)
{
    ovo_test::ChildProcess child([&] {
        if (user != 0 &&
            (setgroups(0, nullptr) != 0 || setresgid(user, user, user) != 0 || setresuid(user, user, user) != 0))
            return 3;
        alarm(10);
        ovo_test::ChildProcess::tell(call());
        return 0;
    });
    const std::string said = child.heard();
    return {said, child.wait()};
}

// What stands at a path: its type, mode, owner and inode, and its content (of a directory,
// its entries; of a link, where it points), for a before-and-after comparison.
std::string snapshot(const std::string& path)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0)
        return "nothing";
    std::string shot = std::to_string(status.st_mode) + " " + std::to_string(status.st_uid) + " " +
                       std::to_string(status.st_ino) + ": ";
    if (S_ISLNK(status.st_mode))
        shot += fs::read_symlink(path).string();
    else if (S_ISREG(status.st_mode))
        shot += ovo_test::readFile(path);
    else if (S_ISDIR(status.st_mode))
        for (const auto& entry : fs::directory_iterator(path))
            shot += entry.path().filename().string() + " ";
    return shot;
}

// A block of the name made and closed: "" when it could be, else the failure and how
// `ovo objects` lists the name.
std::string blockMade(const std::string& name)
{
    const std::string failure = ovo_test::failureOf([&] { ovo::ipc::SharedMemory block(name, 4096); });
    std::string listed = "not listed";
    for (const ovo::ipc::ListedObject& object : ovo::ipc::namedObjects())
        if (object.name == name)
            listed = "listed as " + object.kind;
    return failure.empty() ? "" : failure + "; " + listed;
}

std::string made(const std::string& outcome) { return outcome.empty() ? "" : "not made: " + outcome; }

// A directory of root's that nobody else may enter.
std::string privateDirectory(const std::string& path)
{
    fs::create_directory(path);
    fs::permissions(path, fs::perms::owner_all);
    return path;
}

std::string inSession(const Scene& s)
{
    setenv("XDG_RUNTIME_DIR", (s.dir + "/runtime").c_str(), 1);
    return blockMade(s.name);
}

const OpenedPath paths[] = {
    // Where another user can make a file of a name first: it takes the name, and is named.
    {"named-object file of a user without a session", sessionlessUser,
     [](Scene& s) { return "/dev/shm/ovosystem.u" + std::to_string(sessionlessUser) + "." + s.name; },
     [](const Scene& s) { return unsetenv("XDG_RUNTIME_DIR"), blockMade(s.name); },
     [](const Scene& s, bool planted, const std::string& outcome) {
         const std::string taken =
             "::OpenFileMapping( 'Local\\" + s.name + "' ) failed. openError = 5, createError = 5; listed as taken";
         return !planted ? made(outcome) : outcome == taken ? "" : "not refused as taken: " + outcome;
     }},
    // In the session's directory nobody else can make a file of a name first.
    {"named-object file in the session's directory", 0,
     [](Scene& s) { return privateDirectory(privateDirectory(s.dir + "/runtime") + "/ovosystem") + "/" + s.name; },
     inSession,
     [](const Scene&, bool planted, const std::string& outcome) {
         return planted ? "another user made a file in the session's directory" : made(outcome);
     }},
    // $XDG_RUNTIME_DIR where others may write: what they put there is not taken for the
    // session's directory (root's objects go to /run then), a link to root's own neither.
    {"the session's directory", 0,
     [](Scene& s) {
         s.target = privateDirectory(s.dir + "/roots");
         return s.dir + "/runtime";
     },
     inSession, [](const Scene&, bool, const std::string& outcome) { return made(outcome); }},
};

void PrintTo(const OpenedPath& row, std::ostream* out) { *out << row.what; }

class PathAttackSweep : public ::testing::TestWithParam<OpenedPath> {};

TEST_P(PathAttackSweep, WhateverAnotherUserPlantsIsNeitherFollowedNorChanged)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may act as the other users";
    const OpenedPath& row = GetParam();
    for (const auto& plant : plants) {
        SCOPED_TRACE(plant.what);
        const ovo_test::TempDir dir;
        fs::permissions(dir.path(), fs::perms::all | fs::perms::sticky_bit); // as /tmp
        Scene scene{ovo_test::sweepName(std::string(row.what) + plant.what), dir.string(), dir.string() + "/target"};
        std::ofstream(scene.target) << "secret"; // the victim's own file: it could write it
        fs::permissions(scene.target, fs::perms::owner_read | fs::perms::owner_write);
        ASSERT_EQ(chown(scene.target.c_str(), row.user, row.user), 0);
        const std::string path = row.path(scene);
        const bool placed = inProcessOf(secondUser, [&] {
                                umask(0); // as open to the victim as it can be
                                return plant.plant(path, scene.target) == 0 ? "" : "refused";
                            }).first.empty();
        const std::string target = snapshot(scene.target), plantedThere = snapshot(path);
        const auto outcome = inProcessOf(row.user, [&] { return row.operate(scene); });
        EXPECT_EQ(outcome.second, 0) << "the operation did not end by itself (" << 128 + SIGALRM << ": hung)";
        EXPECT_EQ(snapshot(scene.target), target) << "what the link points at changed";
        EXPECT_EQ(snapshot(path), plantedThere) << "what was planted changed";
        EXPECT_EQ(row.holds(scene, placed, outcome.first), "") << (placed ? "planted" : "could not be planted");
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, PathAttackSweep, ::testing::ValuesIn(paths),
                         [](const auto& row) { return ovo_test::identifierOf(row.param.what); });

} // namespace
