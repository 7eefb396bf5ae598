#include "command_line.h"
#include "tool_platform.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

namespace ovo_tool {
namespace {

std::atomic<bool> stopRequested{false};

BOOL WINAPI requestStop(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && event != CTRL_CLOSE_EVENT)
        return FALSE;
    stopRequested = true;
    return TRUE;
}

// One word of a command line as the C run-time splits it again: in double quotes, with
// the backslashes before a quote (and before the closing one) doubled.
std::string quoted(const std::string& word)
{
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (char c : word) {
        if (c == '\\') {
            ++backslashes;
            continue;
        }
        text.append(c == '"' ? 2 * backslashes + 1 : backslashes, '\\');
        backslashes = 0;
        text += c;
    }
    return text.append(2 * backslashes, '\\') + "\"";
}

} // namespace

void watchInterrupts() { SetConsoleCtrlHandler(requestStop, TRUE); }

bool interrupted() { return stopRequested; }

std::tm localTime(std::time_t time)
{
    std::tm local = {};
    localtime_s(&local, &time);
    return local;
}

std::string unfitForLogs(const std::string& directory)
{
    struct _stat64 status = {};
    if (_stat64(directory.c_str(), &status) != 0)
        return std::strerror(errno);
    if ((status.st_mode & _S_IFDIR) == 0)
        return std::strerror(ENOTDIR);
    return _access(directory.c_str(), 2) != 0 ? std::strerror(errno) : std::string();
}

int openForReading(const std::string& path)
{
    if (path != "-")
        return _open(path.c_str(), _O_RDONLY | _O_BINARY);
    _setmode(_fileno(stdin), _O_BINARY); // bytes as they are: no CR LF folding, no end at ^Z
    return _fileno(stdin);
}

std::string serialDevicePath(const std::string& deviceName) { return "\\\\.\\" + deviceName; }

const char* const pcscServiceHint = "is the Smart Card service running?";

unsigned long currentProcessId() { return GetCurrentProcessId(); }

ToolProcess::ToolProcess(const std::vector<std::string>& words)
{
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string commandLine = quoted(program);
    for (const std::string& word : words)
        commandLine += " " + quoted(word);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(program, &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        throw Failure("cannot start a second process: ::CreateProcess failed: " + std::to_string(GetLastError()));
    CloseHandle(process.hThread);
    handle_ = process.hProcess;
    id_ = process.dwProcessId;
}

ToolProcess::~ToolProcess()
{
    wait();
    CloseHandle(handle_);
}

int ToolProcess::wait()
{
    DWORD code = 0;
    if (!waited_ && WaitForSingleObject(handle_, INFINITE) == WAIT_OBJECT_0 && GetExitCodeProcess(handle_, &code))
        status_ = static_cast<int>(code);
    waited_ = true;
    return status_;
}

// Windows has no pseudo-terminals: a serial peer is a real port (or one that Wine maps).
PseudoTerminal::PseudoTerminal() {}

PseudoTerminal::~PseudoTerminal() {}

bool PseudoTerminal::readAll(unsigned char*, std::size_t) { return false; }

bool PseudoTerminal::write(const unsigned char*, std::size_t) { return false; }

} // namespace ovo_tool
