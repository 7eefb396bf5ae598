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
        handle_ = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
        held_ = handle_ != INVALID_HANDLE_VALUE;
#else
        descriptor_ = ::open(path.c_str(), O_WRONLY | O_CREAT, 0644);
        held_ = descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX) == 0;
#endif
    }
    ~ExclusiveFile() { release(); }
    ExclusiveFile(const ExclusiveFile&) = delete;
    ExclusiveFile& operator=(const ExclusiveFile&) = delete;

    bool held() const { return held_; }

    void release()
    {
#if defined(_WIN32)
        if (handle_ != INVALID_HANDLE_VALUE)
            CloseHandle(handle_);
        handle_ = INVALID_HANDLE_VALUE;
#else
        if (descriptor_ >= 0)
            ::close(descriptor_);
        descriptor_ = -1;
#endif
        held_ = false;
    }

private:
    bool held_ = false;
#if defined(_WIN32)
    HANDLE handle_ = INVALID_HANDLE_VALUE;
#else
    int descriptor_ = -1;
#endif
};

} // namespace ovo_test

#endif
