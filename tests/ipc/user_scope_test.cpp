// Linux: "Local\" names live in the login session's directory, which nobody else may enter;
// each user's names are a namespace of that user's own; without a session another user can
// take a name first, and `ovo objects` names it; what killed holders left behind is listed
// (also by `ovo objects`) and swept away.
#include "ipc/ipc_test.h"

#include <fcntl.h>
#include <functional>
#include <linux/magic.h>
#include <map>
#include <sched.h>
#include <set>
#include <sstream>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace {

using ovo::ipc::SystemMutex;
namespace fs = std::filesystem;

// Each test in a session directory of its own (the program's other tests all are), so that
// what other tests leave in the user's namespace meanwhile changes no listing and no sweep.
class UserScopeTest : public ovo_test::IpcTest {
protected:
    void SetUp() override
    {
        fs::permissions(session_.path(), fs::perms::owner_all);
        setenv("XDG_RUNTIME_DIR", session_.string().c_str(), 1);
    }
    void TearDown() override
    {
        setenv("XDG_RUNTIME_DIR", session_.string().c_str(), 1);
        IpcTest::TearDown();
    }

    void killHolderOf(const std::string& block)
    {
        ovo_test::ChildProcess peer("ipc_peer", {"memory", name(block), "64", "0", "1", file(block), "-"});
        ASSERT_TRUE(ovo_test::waitForFile(file(block)));
        peer.kill();
    }
    int tool(const std::vector<std::string>& args)
    {
        return ovo_test::runProgram(ovo_test::siblingProgram("ovo"), args, file("out"));
    }
    // The line of `ovo objects` about the object, or "none".
    std::string listed(const std::string& tag)
    {
        std::istringstream lines(tool({"objects"}) == 0 ? ovo_test::readFile(file("out")) : "");
        for (std::string line; std::getline(lines, line);)
            if (line.find(" " + name(tag)) != std::string::npos)
                return line;
        return "none";
    }

private:
    const ovo_test::TempDir session_;
};

bool runInMemory()
{
    struct statfs system;
    return statfs("/run", &system) == 0 && (system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC);
}

// The files that descriptors 0 to 63 stand for.
std::map<int, std::pair<dev_t, ino_t>> openFiles()
{
    std::map<int, std::pair<dev_t, ino_t>> files;
    struct stat status;
    for (int fd = 0; fd < 64; ++fd)
        if (fstat(fd, &status) == 0)
            files[fd] = {status.st_dev, status.st_ino};
    return files;
}

// Where the objects of a process without a session's directory are.
std::string sessionless()
{
    return geteuid() != 0 ? "/dev/shm/ovosystem.u" + std::to_string(geteuid()) + "."
           : runInMemory() ? "/run/ovosystem/"
                           : "/dev/shm/ovosystem.u0/";
}

// The session's directory is $XDG_RUNTIME_DIR when that is this user's alone (mode 0700), for
// root without one /run (or, with /run on a disk, root's own directory in /dev/shm);
// elsewhere (no session) the names are files of /dev/shm.
TEST_F(UserScopeTest, LocalNamesLiveInTheSessionsDirectoryWhenItIsTheUsersAlone)
{
    const bool root = geteuid() == 0;
    const ovo_test::TempDir dir;
    const fs::path own = dir.path() / "own", others = dir.path() / "others";
    for (const fs::path& made : {own, others, dir.path() / "open"})
        fs::create_directory(made);
    fs::permissions(own, fs::perms::owner_all);
    fs::permissions(others, fs::perms::owner_all);
    fs::create_directory_symlink(own, dir.path() / "link");
    fs::create_directory_symlink(own, dir.path() / "others-link");
    ASSERT_EQ(lchown(others.c_str(), 65534, 0) == 0 && lchown((dir.path() / "others-link").c_str(), 65534, 0) == 0,
              root);
    const std::string session = (own / "ovosystem/").string();
    const std::string none = sessionless();
    const std::pair<const char*, std::string> cases[] = {
        // XDG_RUNTIME_DIR in `dir` ("" for none; others' only when root could make them), where objects are
        {"own", session},
        {"link", session},
        {"", none},
        {"open", none},
        {"../own", none},
        {root ? "others" : "", none},
        {root ? "others-link" : "", none},
    };
    const fs::path workingDirectory = fs::current_path();
    fs::current_path(dir.path() / "open"); // where the relative path would lead
    for (const auto& c : cases) {
        const std::string runtime = c.first[0] == '.' ? c.first : (dir.path() / c.first).string();
        if (c.first[0] != '\0')
            setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
        else
            unsetenv("XDG_RUNTIME_DIR");
        SystemMutex mutex(name("where"));
        EXPECT_TRUE(fs::exists(c.second + name("where"))) << c.first << ": not in " << c.second;
    }
    fs::current_path(workingDirectory);
    // In a directory of the user's own, "." and ".." are names like any other.
    setenv("XDG_RUNTIME_DIR", own.c_str(), 1);
    ovo::ipc::SharedMemory dot(".", 64), dots("..", 64), hidden(".hidden", 64);
    EXPECT_TRUE(dot.isCreated() && dots.isCreated() && hidden.isCreated());
    std::set<std::string> seen; // the files, and the names they list as
    for (const auto& entry : fs::directory_iterator(own / "ovosystem"))
        seen.insert(entry.path().filename().string());
    for (const ovo::ipc::ListedObject& object : ovo::ipc::namedObjects())
        seen.insert("listed " + object.name);
    EXPECT_EQ(seen, (std::set<std::string>{"%2E", "%2E.", "%2Ehidden", "listed .", "listed ..", "listed .hidden"}));
}

// Root without a session: /run where it is in memory, else a directory of root's own in
// /dev/shm, and /run again when another user made that first. Each row runs in a process
// with a mount namespace of its own, /dev/shm fresh and /run a tmpfs or an overlay (as a
// container's is, on a disk).
TEST_F(UserScopeTest, RootsNamesLiveInMemoryWhereverRunLies)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    const struct {
        bool runOnDisk;
        const char *madeFirst, *where; // madeFirst: what another user made at /dev/shm/ovosystem.u0
    } rows[] = {{false, "", "/run/ovosystem/"},
                {true, "", "/dev/shm/ovosystem.u0/"},
                {true, "directory", "/run/ovosystem/"},
                {true, "link", "/run/ovosystem/"}};
    const int cannotMount = 77;
    const std::string where = name("where");
    for (const auto& row : rows) {
        const std::string object = row.where + where, made = row.madeFirst;
        ovo_test::ChildProcess child([&] {
            unsetenv("XDG_RUNTIME_DIR");
            if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                mount("shm", "/dev/shm", "tmpfs", 0, nullptr) != 0)
                return cannotMount;
            for (const char* dir : {"/dev/shm/upper", "/dev/shm/work", "/dev/shm/roots"})
                mkdir(dir, 0700);
            if ((row.runOnDisk
                     ? mount("run", "/run", "overlay", 0, "lowerdir=/run,upperdir=/dev/shm/upper,workdir=/dev/shm/work")
                     : mount("run", "/run", "tmpfs", 0, nullptr)) != 0)
                return cannotMount;
            if (made == "directory")
                mkdir("/dev/shm/ovosystem.u0", 0700);
            if (made == "link")
                symlink("/dev/shm/roots", "/dev/shm/ovosystem.u0");
            if (!made.empty() && lchown("/dev/shm/ovosystem.u0", 65534, 65534) != 0)
                return cannotMount;
            SystemMutex mutex(where);
            return fs::exists(object) ? 0 : 1;
        });
        const int status = child.wait();
        if (status == cannotMount)
            GTEST_SKIP() << "cannot mount a file system in a namespace of its own";
        EXPECT_EQ(status, 0) << object << " not made, /run on disk " << row.runOnDisk
                             << ", made first: " << row.madeFirst;
    }
}

// A process finds the session's directory once and keeps it while what it was found by stands
// as it was: after any change, a new object goes where a process starting now would put it.
TEST_F(UserScopeTest, TheSessionsDirectoryIsFoundAgainWhenItChanged)
{
    const ovo_test::TempDir dir;
    const fs::path session = dir.path() / "session", own = session / "ovosystem";
    fs::create_directory(session);
    fs::permissions(session, fs::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", session.c_str(), 1);
    const struct {
        const char* change;
        std::function<void()> make;
        std::string where;
    } rows[] = {
        {"none", [] {}, own.string() + "/"},
        {"removed", [&] { fs::remove_all(own); }, own.string() + "/"},
        {"removed, and made again under umask 0177", [&] { fs::remove_all(own), umask(0177); }, own.string() + "/"},
        {"replaced",
         [&] {
             fs::rename(own, dir.path() / "old");
             fs::create_directory(own);
             fs::permissions(own, fs::perms::owner_all);
         },
         own.string() + "/"},
        {"its descriptor closed and taken by another directory",
         [] {
             close_range(3, ~0U, 0);
             for (int i = 0; i < 16; ++i)
                 open("/", O_RDONLY | O_DIRECTORY);
         },
         own.string() + "/"},
        {"the session's directory opened to others", [&] { fs::permissions(session, fs::perms::all); }, sessionless()},
    };
    for (const auto& row : rows) {
        ovo_test::ChildProcess child([&] {
            SystemMutex({name("found")}); // found, and kept
            const auto before = openFiles();
            row.make();
            auto programs = openFiles(); // what the change opened, which no create may close
            for (const auto& file : before)
                if (programs.count(file.first) != 0 && programs[file.first] == file.second)
                    programs.erase(file.first);
            SystemMutex mutex(name("made"));
            const auto after = openFiles();
            for (const auto& file : programs)
                if (after.count(file.first) == 0 || after.at(file.first) != file.second)
                    return 2;
            return fs::exists(row.where + name("made")) ? 0 : 1;
        });
        EXPECT_EQ(child.wait(), 0) << "changed: " << row.change << "; not in " << row.where << " (2: a descriptor of the program's closed)";
        fs::remove_all(dir.path() / "old");
    }
}

TEST_F(UserScopeTest, ObjectsOfKilledHoldersAreListedAndSweptAway)
{
    if (!fs::exists(ovo_test::siblingProgram("ovo")))
        GTEST_SKIP() << "built without the ovo tool";
    ovo::ipc::SharedMemory live(name("live"), 100);
    killHolderOf("stale");
    EXPECT_EQ(listed("live"), "live  shared memory " + name("live") + "  100 bytes");
    EXPECT_EQ(listed("stale"), "stale shared memory " + name("stale") + "  64 bytes");
    for (const char* removed : {"removed 1 stale object\n", "removed 0 stale objects\n"}) {
        EXPECT_EQ(tool({"objects", "clean"}), 0);
        EXPECT_EQ(ovo_test::readFile(file("out")), removed); // the session's directory is the test's own
    }
    EXPECT_EQ(listed("stale"), "none");
    killHolderOf("swept");
    ovo_test::ChildProcess([&] { return SystemMutex(name("fresh")), 0; }).wait(); // a process's first create sweeps
    EXPECT_EQ(listed("swept"), "none");
    EXPECT_EQ(tool({"objects", "stale"}), 2);
}

} // namespace
