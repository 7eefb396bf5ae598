// A block of memory that processes share by name.
#ifndef OVO_IPC_SHARED_MEMORY_H
#define OVO_IPC_SHARED_MEMORY_H

#include <ovo/export.h>

#include <string>

class SharedMemoryImpl;

namespace ovo {
namespace ipc {

// Creates the block "Local\<name>" of `size` bytes, zeroed, or joins it; the block lives
// while any process holds it. Whatever lies in it must refer to other parts of it by
// offset: each process maps it at an address of its own. The size of a block that exists
// stays as its creator made it; asking for more fails at the view.
class OVO_API SharedMemory {
public:
    SharedMemory(const std::string& name, unsigned int size);
    ~SharedMemory();

    void* begin() const;
    // begin() plus this object's size.
    void* end() const;
    // True when this constructor made the block, false when it joined one.
    bool isCreated() const;

private:
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    SharedMemoryImpl* impl_;
};

} // namespace ipc
} // namespace ovo

#endif
