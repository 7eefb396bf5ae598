#include "tool.h"
#include "tool_platform.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace ovo_tool {
namespace {
std::atomic<bool> stopRequested{false};
void requestStop(int) { stopRequested = true; }
} // namespace

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
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0)
        return std::strerror(errno);
    if (!S_ISDIR(status.st_mode))
        return std::strerror(ENOTDIR);
    return access(directory.c_str(), W_OK | X_OK) != 0 ? std::strerror(errno) : std::string();
}

int openForReading(const std::string& path) { return path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY); }

std::string serialDevicePath(const std::string& deviceName)
{
    return deviceName[0] == '/' ? deviceName : "/dev/" + deviceName;
}

const char* const pcscServiceHint = "is the PC/SC service, pcscd, running?";

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
