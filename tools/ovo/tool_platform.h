// What the tool does one way on POSIX systems and another on Windows: the command line,
// interrupts, local time, files, the system's words, device paths, a second process and
// pseudo-terminals. The commands above this seam read alike on both; CMake picks
// tool_platform_posix.cpp or _windows.cpp.
#ifndef OVO_TOOLS_OVO_TOOL_PLATFORM_H
#define OVO_TOOLS_OVO_TOOL_PLATFORM_H

#include <cstddef>
#include <ctime>
#include <string>
#include <vector>

namespace ovo_tool {

// The words after the program's name, in UTF-8 as the tool takes all text: on Windows from
// the command line's UTF-16 form, with the console set to show UTF-8 until the tool ends.
std::vector<std::string> commandLineWords(int argc, char** argv);

// From now on Ctrl-C (and on POSIX SIGTERM) only sets the flag that interrupted() reads.
void watchInterrupts();
bool interrupted();

std::tm localTime(std::time_t time);

// Why the directory cannot take log files, in the system's words; empty when it can. A
// probe file is made and removed there: a directory can pass every check of its mode and
// take no file (no free inode, a read-only mount, /proc).
std::string unfitForLogs(const std::string& directory);

// The system's words for an error code of the library's platform calls (a Win32 code),
// without a period: Windows' texts there, on Linux those of the errno behind the code.
std::string systemWords(unsigned long code);

// A descriptor that reads the file's bytes as they are ("-": standard input); -1 with
// errno set when it cannot be opened.
int openForReading(const std::string& path);

// The path the library opens for a serial device name, as the tool's messages show it.
std::string serialDevicePath(const std::string& deviceName);

// The PC/SC service as a user knows it: "the PC/SC service (pcscd)".
extern const char* const pcscService;

unsigned long currentProcessId();

// The tool run with the given words in a second process, beside this one.
class ToolProcess {
public:
    explicit ToolProcess(const std::vector<std::string>& words);
    ToolProcess(const ToolProcess&) = delete;
    ToolProcess& operator=(const ToolProcess&) = delete;
    ~ToolProcess(); // waits for it
    unsigned long id() const { return id_; }
    // Its exit status, once it ended.
    int wait();

private:
    unsigned long id_ = 0;
    [[maybe_unused]] void* handle_ = nullptr; // Windows only
    bool waited_ = false;
    int status_ = -1;
};

// A raw pseudo-terminal pair: a program opens the terminal by path(), this process plays
// the device on the other end. Windows has none: opened() is false there.
class PseudoTerminal {
public:
    PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal();
    bool opened() const { return device_ >= 0; }
    const std::string& path() const { return path_; }
    // Exactly size bytes from the device's end; false when the terminal failed first.
    bool readAll(unsigned char* data, std::size_t size);
    bool write(const unsigned char* data, std::size_t size);

private:
    int device_ = -1;
    int terminal_ = -1;
    std::string path_;
};

} // namespace ovo_tool

#endif
