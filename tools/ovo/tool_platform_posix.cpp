#include "system_words.h"
#include "tool.h"
#include "tool_platform.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace ovo_tool {
namespace {
std::atomic<bool> stopRequested{false};
void requestStop(int) { stopRequested = true; }
} // namespace

std::vector<std::string> commandLineWords(int argc, char** argv)
{
    return std::vector<std::string>(argv + 1, argv + argc);
}

void watchInterrupts()
{
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
}

bool interrupted() { return stopRequested; }

std::tm localTime(std::time_t time)
{
    std::tm local = {};
    localtime_r(&time, &local);
    return local;
}

std::string unfitForLogs(const std::string& directory)
{
    std::string probe = directory + "/.ovo-log-probe-XXXXXX";
    const int descriptor = mkstemp(&probe[0]);
    if (descriptor < 0)
        return std::strerror(errno);
    const bool written = write(descriptor, "\n", 1) == 1; // a full file system may still make the file
    const int error = errno;
    close(descriptor);
    unlink(probe.c_str());
    return written ? std::string() : std::strerror(error);
}

std::string systemWords(unsigned long code)
{
    // The errno values that the library's layer turns into these codes; 1 is its "a handle,
    // but no communication device".
    static const struct {
        unsigned long code;
        int error;
    } known[] = {
        {2, ENOENT},  {3, ENOTDIR},  {4, EMFILE},   {5, EACCES},         {6, EBADF},
        {8, ENOMEM},  {31, EIO},     {32, EBUSY},   {39, ENOSPC},        {80, EEXIST},
        {87, EINVAL}, {112, ENOSPC}, {183, EEXIST}, {206, ENAMETOOLONG}, {1167, ENODEV},
    };
    if (code == 1)
        return "not a terminal";
    for (const auto& entry : known)
        if (entry.code == code)
            return std::strerror(entry.error);
    return windowsWords(code); // what has no errno behind it: names Windows refuses, ...
}

int openForReading(const std::string& path) { return path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY); }

std::string serialDevicePath(const std::string& deviceName)
{
    return deviceName[0] == '/' ? deviceName : "/dev/" + deviceName;
}

const char* const pcscService = "the PC/SC service (pcscd)";

unsigned long currentProcessId() { return static_cast<unsigned long>(getpid()); }

ToolProcess::ToolProcess(const std::vector<std::string>& words)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(runCommandLine(words));
    if (child < 0)
        throw Failure(std::string("cannot start a second process: ") + std::strerror(errno));
    id_ = static_cast<unsigned long>(child);
}

ToolProcess::~ToolProcess() { wait(); }

int ToolProcess::wait()
{
    int status = 0;
    if (!waited_ && waitpid(static_cast<pid_t>(id_), &status, 0) == static_cast<pid_t>(id_))
        status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    waited_ = true;
    return status_;
}

PseudoTerminal::PseudoTerminal()
{
    char name[256] = {};
    if (openpty(&device_, &terminal_, name, nullptr, nullptr) != 0) {
        device_ = terminal_ = -1;
        return;
    }
    path_ = name;
    termios raw;
    tcgetattr(terminal_, &raw);
    cfmakeraw(&raw);
    tcsetattr(terminal_, TCSANOW, &raw);
}

PseudoTerminal::~PseudoTerminal()
{
    if (opened()) {
        close(device_);
        close(terminal_);
    }
}

bool PseudoTerminal::readAll(unsigned char* data, std::size_t size)
{
    for (std::size_t got = 0; got < size;) {
        const ssize_t count = read(device_, data + got, size - got);
        if (count <= 0)
            return false;
        got += static_cast<std::size_t>(count);
    }
    return true;
}

bool PseudoTerminal::write(const unsigned char* data, std::size_t size)
{
    return ::write(device_, data, size) == static_cast<ssize_t>(size);
}

} // namespace ovo_tool
