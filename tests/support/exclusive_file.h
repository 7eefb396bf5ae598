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
    explicit ExclusiveFile(const std::string& path)
    {
#if defined(_WIN32)
        handle_ = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                              nullptr);
#else
        descriptor_ = ::open(path.c_str(), O_WRONLY | O_CREAT, 0644);
        ::flock(descriptor_, LOCK_EX);
#endif
    }
    ~ExclusiveFile()
    {
#if defined(_WIN32)
        CloseHandle(handle_);
#else
        ::close(descriptor_);
#endif
    }
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
