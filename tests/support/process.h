// Other programs of the test build, run beside the test: waited for, interrupted as Ctrl-C
// does (POSIX), or killed the hard way (SIGKILL; TerminateProcess), as a crash ends them;
// their standard output goes to the file `output` when one is named. On POSIX a child may
// also be a fork that runs a function of the test and ends with its result as exit status
// (a real process at a hundredth of a program's cost), talking back through a pipe.
#ifndef OVO_TESTS_SUPPORT_PROCESS_H
#define OVO_TESTS_SUPPORT_PROCESS_H

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#if defined(_WIN32)
#  define WIN32_LEAN_AND_MEAN
#  include <windows.h>
#  define OVO_TEST_PROGRAM_SUFFIX ".exe"
#else
#  include <climits>
#  include <fcntl.h>
#  include <signal.h>
#  include <spawn.h>
#  include <sys/wait.h>
#  include <unistd.h>
extern char** environ;
#  define OVO_TEST_PROGRAM_SUFFIX ""
#endif

namespace ovo_test {

// The path of a file that was built beside the running program.
inline std::string siblingFile(const std::string& name)
{
#if defined(_WIN32)
    char self[MAX_PATH];
    const std::string path(self, GetModuleFileNameA(nullptr, self, MAX_PATH));
#else
    char self[PATH_MAX];
    const std::string path(self, std::max<ssize_t>(readlink("/proc/self/exe", self, sizeof self), 0));
#endif
    return path.substr(0, path.find_last_of("\\/") + 1) + name;
}

// The path of a program that was built beside the running one.
inline std::string siblingProgram(const std::string& name) { return siblingFile(name + OVO_TEST_PROGRAM_SUFFIX); }

class ChildProcess {
public:
    ChildProcess(const std::string& program, const std::vector<std::string>& args,
                 const std::string& output = std::string())
    {
        const std::string path = program.find_first_of("\\/") == std::string::npos ? siblingProgram(program) : program;
#if defined(_WIN32)
        std::string command = "\"" + path + "\"";
        for (const std::string& arg : args)
            command += " \"" + arg + "\"";
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        HANDLE out = INVALID_HANDLE_VALUE;
        if (!output.empty()) {
            SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
            out = CreateFileA(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
            startup.dwFlags = STARTF_USESTDHANDLES;
            startup.hStdOutput = out;
            startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        }
        PROCESS_INFORMATION info = {};
        const BOOL started = CreateProcessA(nullptr, &command[0], nullptr, nullptr, out != INVALID_HANDLE_VALUE, 0,
                                            nullptr, nullptr, &startup, &info);
        if (out != INVALID_HANDLE_VALUE)
            CloseHandle(out);
        if (!started)
            throw std::runtime_error("cannot start " + program);
        CloseHandle(info.hThread);
        process_ = info.hProcess;
#else
        std::vector<char*> argv{const_cast<char*>(path.c_str())};
        for (const std::string& arg : args)
            argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (!output.empty())
            posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int result = posix_spawn(&pid_, path.c_str(), &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (result != 0)
            throw std::runtime_error("cannot start " + program);
#endif
    }
#if !defined(_WIN32)
    explicit ChildProcess(const std::function<int()>& body)
    {
        if (pipe2(pipe_, O_CLOEXEC) != 0 || (pid_ = fork()) < 0)
            throw std::runtime_error("cannot fork");
        if (pid_ == 0) {
            close(pipe_[0]);
            toParent() = pipe_[1];
            int status = 2; // an exception ends it too: never back into the test
            try {
                status = body();
            } catch (...) {
            }
            _exit(status);
        }
        close(pipe_[1]);
    }
#endif
    ~ChildProcess()
    {
        if (running_)
            kill();
#if !defined(_WIN32)
        if (pipe_[0] >= 0)
            close(pipe_[0]);
#endif
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The exit status, or 128 and the signal that ended it.
    int wait()
    {
        running_ = false;
#if defined(_WIN32)
        WaitForSingleObject(process_, INFINITE);
        DWORD status = 0;
        GetExitCodeProcess(process_, &status);
        CloseHandle(process_);
        return static_cast<int>(status);
#else
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
#endif
    }

#if !defined(_WIN32)
    // Ends the process as Ctrl-C does; gives its exit status.
    int interrupt()
    {
        ::kill(pid_, SIGINT);
        return wait();
    }

    // In a forked child: sends the text to the parent.
    static void tell(const std::string& text)
    {
        if (write(toParent(), text.data(), text.size()) < 0)
            _exit(3);
    }
    // In the parent: up to `bytes` of what the forked child tells, or all of it until it ends.
    std::string heard(std::size_t bytes = std::string::npos)
    {
        std::string text;
        char c;
        while (text.size() < bytes && read(pipe_[0], &c, 1) == 1)
            text += c;
        return text;
    }
#endif

    // Ends the process at once, whatever it holds, and reaps it; its exit status (137 unless
    // it had ended by itself).
    int kill()
    {
#if defined(_WIN32)
        TerminateProcess(process_, 137);
#else
        ::kill(pid_, SIGKILL);
#endif
        return wait();
    }

private:
    bool running_ = true;
#if defined(_WIN32)
    HANDLE process_ = nullptr;
#else
    static int& toParent()
    {
        static int fd = -1;
        return fd;
    }

    pid_t pid_ = 0;
    int pipe_[2] = {-1, -1};
#endif
};

// Runs the program (a path, or the name of a sibling program) to its end; gives its exit status.
inline int runProgram(const std::string& program, const std::vector<std::string>& args,
                      const std::string& output = std::string())
{
    return ChildProcess(program, args, output).wait();
}

// Waits up to `limit` for `done()` to hold, asking every `step`.
template <typename Condition>
bool waitUntil(Condition done, std::chrono::milliseconds limit,
               std::chrono::milliseconds step = std::chrono::milliseconds(2))
{
    for (const auto end = std::chrono::steady_clock::now() + limit; !done(); std::this_thread::sleep_for(step))
        if (std::chrono::steady_clock::now() > end)
            return false;
    return true;
}

// Waits for a file to appear (a child's sign that it is ready).
inline bool waitForFile(const std::filesystem::path& path)
{
    return waitUntil([&] { return std::filesystem::exists(path); }, std::chrono::seconds(20));
}

} // namespace ovo_test

#endif
