#include "logger/rolling_file.h"

#include "platform/win32.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace ovo {
namespace logger {

namespace {

// How long a writer waits for another one (a thread of another channel, or another
// process) that has the file open: long enough for any single append, short enough that
// a writer stuck on the file costs a message, not a hang.
const std::chrono::milliseconds sharedFileWait(1000);
// The first pause between attempts; it doubles up to the last.
const std::chrono::microseconds firstPause(50);
const std::chrono::microseconds longestPause(2000);

// Opens the file for writing, creating it, with others allowed to read only. A sharing
// violation is retried until the wait is over.
HANDLE openForAppend(const std::string& path)
{
    const auto deadline = std::chrono::steady_clock::now() + sharedFileWait;
    std::chrono::microseconds pause = firstPause;
    for (;;) {
        HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_SHARING_VIOLATION ||
            std::chrono::steady_clock::now() >= deadline)
            return file;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, longestPause);
    }
}

// Writes the text whole; false when the file took less (a full disk).
bool writeAll(HANDLE file, const std::string& text)
{
    DWORD written = 0;
    return text.empty() ||
           (WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) && written == text.size());
}

} // namespace

RollingFile::RollingFile(const std::string& directory, const std::string& suffix)
    : directory_(directory), suffix_(suffix)
{
}

void RollingFile::setHeader(const std::string& header) { header_ = header; }

void RollingFile::append(const std::string& fileName, const std::string& text)
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::string path;
    path.reserve(directory_.size() + 1 + fileName.size());
    path.append(directory_).append(1, platform::pathSeparator).append(fileName);
    HANDLE file = openForAppend(path);
    if (file == INVALID_HANDLE_VALUE)
        return; // this message is lost; the next one tries again
    // The end is the size: a file that ends at 0 is empty and begins with the header. Without
    // the end nothing can be appended, and the message is lost.
    LONG endHigh = 0;
    const DWORD endLow = SetFilePointer(file, 0, &endHigh, FILE_END);
    if (endLow != INVALID_SET_FILE_POINTER || GetLastError() == ERROR_SUCCESS) {
        const bool empty = endLow == 0 && endHigh == 0;
        const bool whole = (!empty || writeAll(file, header_)) && writeAll(file, text);
        if (!whole) { // the message whole or not at all: the file is cut back to where it ended
            SetFilePointer(file, static_cast<LONG>(endLow), &endHigh, FILE_BEGIN);
            SetEndOfFile(file);
        }
    }
    CloseHandle(file);
}

} // namespace logger
} // namespace ovo
