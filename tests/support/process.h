// Runs another program of the test build as a separate process.
#ifndef OVO_TESTS_SUPPORT_PROCESS_H
#define OVO_TESTS_SUPPORT_PROCESS_H

#include <cstdlib>
#include <string>
#include <vector>

#if defined(_WIN32)
#  define WIN32_LEAN_AND_MEAN
#  include <windows.h>
#else
#  include <climits>
#  include <sys/wait.h>
#  include <unistd.h>
#endif

namespace ovo_test {

// The path of a file that was built beside the running program.
inline std::string siblingFile(const std::string& name)
{
#if defined(_WIN32)
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    std::string path(self);
    return path.substr(0, path.find_last_of("\\/") + 1) + name;
#else
    char self[PATH_MAX] = {};
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    std::string path(self, length > 0 ? static_cast<std::size_t>(length) : 0);
    return path.substr(0, path.find_last_of('/') + 1) + name;
#endif
}

// The path of a program that was built beside the running one.
inline std::string siblingProgram(const std::string& name)
{
#if defined(_WIN32)
    return siblingFile(name + ".exe");
#else
    return siblingFile(name);
#endif
}

// Runs the program with the arguments (each quoted) and gives its exit status; its
// standard output goes to the file `output` when one is named.
inline int runProgram(const std::string& program, const std::vector<std::string>& args,
                      const std::string& output = std::string())
{
    std::string command = "\"" + program + "\"";
    for (const std::string& arg : args)
        command += " \"" + arg + "\"";
    if (!output.empty())
        command += " > \"" + output + "\"";
#if defined(_WIN32)
    return std::system(("\"" + command + "\"").c_str()); // cmd.exe strips one pair of quotes
#else
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
#endif
}

} // namespace ovo_test

#endif
