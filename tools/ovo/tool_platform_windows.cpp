#include "command_line.h"
#include "system_words.h"
#include "tool_platform.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

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

std::string utf8(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string converted(size > 0 ? static_cast<std::size_t>(size) : 1u, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, &converted[0], size, nullptr, nullptr);
    converted.pop_back(); // the terminating zero
    return converted;
}

std::wstring utf16(const std::string& text)
{
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    std::wstring converted(size > 0 ? static_cast<std::size_t>(size) : 1u, L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, &converted[0], size);
    converted.pop_back();
    return converted;
}

UINT consoleCodePage = 0;
void restoreConsole() { SetConsoleOutputCP(consoleCodePage); }

} // namespace

// The C run-time's argv is in the ANSI code page, which loses what it cannot show.
std::vector<std::string> commandLineWords(int, char**)
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i)
        words.push_back(utf8(arguments[i]));
    LocalFree(arguments);
    consoleCodePage = GetConsoleOutputCP();
    if (consoleCodePage != 0 && SetConsoleOutputCP(CP_UTF8))
        std::atexit(restoreConsole); // the console outlives the tool
    return words;
}

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
    // Made as the library makes the log file: by the ANSI name.
    const std::string probe = directory + "\\.ovo-log-probe-" + std::to_string(GetCurrentProcessId());
    const HANDLE file = CreateFileA(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return systemWords(GetLastError());
    DWORD written = 0;
    const bool wrote = WriteFile(file, "\n", 1, &written, nullptr) && written == 1;
    const DWORD error = GetLastError();
    CloseHandle(file);
    return wrote ? std::string() : systemWords(error);
}

std::string systemWords(unsigned long code) { return windowsWords(code); }

int openForReading(const std::string& path)
{
    if (path != "-")
        return _wopen(utf16(path).c_str(), _O_RDONLY | _O_BINARY);
    _setmode(_fileno(stdin), _O_BINARY); // bytes as they are: no CR LF folding, no end at ^Z
    return _fileno(stdin);
}

std::string serialDevicePath(const std::string& deviceName) { return "\\\\.\\" + deviceName; }

const char* const pcscService = "the Smart Card service";

unsigned long currentProcessId() { return GetCurrentProcessId(); }

ToolProcess::ToolProcess(const std::vector<std::string>& words)
{
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::string commandLine = quoted(utf8(program));
    for (const std::string& word : words)
        commandLine += " " + quoted(word);
    std::wstring wideLine = utf16(commandLine);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(program, &wideLine[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
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
