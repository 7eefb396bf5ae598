// An open file descriptor behind a HANDLE. Serial ports refine the transfers.
#ifndef OVO_SRC_PLATFORM_POSIX_FILE_OBJECT_H
#define OVO_SRC_PLATFORM_POSIX_FILE_OBJECT_H

#include "platform/posix/handle.h"

#include <cstddef>

namespace ovo {
namespace posix {

class FileObject : public KernelObject {
public:
    static const unsigned kinds = fileKind;

    explicit FileObject(int descriptor, unsigned kinds = fileKind);
    ~FileObject() override; // closing drops the share lock too

    // Synchronous transfers: all bytes or a failure, as on a Windows file.
    virtual BOOL read(void* buffer, DWORD size, DWORD& done);
    virtual BOOL write(const void* buffer, DWORD size, DWORD& done);

    const int descriptor;
};

// Writes the bytes from `done` on to the descriptor, retrying interrupted calls; false with
// errno set when it stops short (ENOSPC when the system took nothing and said nothing).
bool writeWhole(int descriptor, const void* data, std::size_t size, std::size_t& done);

// A terminal opened through "\\.\NAME": the communication calls work on it.
FileObject* openSerialPort(int descriptor);

} // namespace posix
} // namespace ovo

#endif
