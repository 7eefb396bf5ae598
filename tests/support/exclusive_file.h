// Holds a file open for writing the way another log writer would, refusing other writers.
#ifndef OVO_TESTS_SUPPORT_EXCLUSIVE_FILE_H
#define OVO_TESTS_SUPPORT_EXCLUSIVE_FILE_H

#include <string>

#if defined(_WIN32)
#  define WIN32_LEAN_AND_MEAN
#  include <windows.h>
#else
#  include <fcntl.h>
#  include <sys/file.h>
#  include <unistd.h>
#endif

namespace ovo_test {

class ExclusiveFile {
public:
#if defined(_WIN32)
    explicit ExclusiveFile(const std::string& path)
        : handle_(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr))
    {
    }
    ~ExclusiveFile() { CloseHandle(handle_); }
#else
    explicit ExclusiveFile(const std::string& path) : descriptor_(::open(path.c_str(), O_WRONLY | O_CREAT, 0644))
    {
        ::flock(descriptor_, LOCK_EX);
    }
    ~ExclusiveFile() { ::close(descriptor_); }
#endif
    ExclusiveFile(const ExclusiveFile&) = delete;
    ExclusiveFile& operator=(const ExclusiveFile&) = delete;

private:
#if defined(_WIN32)
    HANDLE handle_;
#else
    int descriptor_;
#endif
};

} // namespace ovo_test

#endif
