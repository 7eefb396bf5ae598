/// @file
/// A block of memory that processes share by name.
#ifndef OVO_IPC_SHARED_MEMORY_H
#define OVO_IPC_SHARED_MEMORY_H

#include <ovo/export.h>

#include <string>

class SharedMemoryImpl;

namespace ovo {
namespace ipc {

/// A block of memory that processes share by name.
///
/// Creates the block "Local\<name>" of `size` bytes, zeroed, or joins it; the block lives
/// while any process holds it. Whatever lies in it must refer to other parts of it by
/// offset: each process maps it at an address of its own. The size of a block that exists
/// stays as its creator made it; asking for more fails at the view.
///
/// Any thread may call the object; access to the block's bytes is the caller's to order,
/// across threads and across processes.
class OVO_API SharedMemory {
public:
    /// Creates or joins the block of that name in the login session, and maps size bytes.
    /// @throws std::runtime_error "::OpenFileMapping( 'Local\NAME' ) failed. openError =
    ///         CODE, createError = CODE", or "::MapViewOfFile( size = SIZE ) failed: CODE".
    SharedMemory(const std::string& name, unsigned int size);
    /// Unmaps the block and closes this handle; the last holder's close ends the block.
    ~SharedMemory();

    /// The first byte of the block in this process.
    void* begin() const;
    /// begin() plus this object's size.
    void* end() const;
    /// True when this constructor made the block, false when it joined one.
    bool isCreated() const;

private:
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    SharedMemoryImpl* impl_;
};

} // namespace ipc
} // namespace ovo

#endif
