// The block of a message channel as every process on the channel lays it out: the count at
// 0, a table of 256 entries at 16, and from 4113 on the bodies, oldest first, back to back.
// The table holds offsets from the block's first byte, so each process maps it anywhere.
#ifndef OVO_SRC_IPC_CHANNEL_BLOCK_H
#define OVO_SRC_IPC_CHANNEL_BLOCK_H

#include <cstdint>

namespace ovo {
namespace ipc {

const unsigned int tableOffset = 16;
const unsigned int maxMessages = 256;
const unsigned int bodyOffset = 4113;

struct Entry {
    std::uint32_t id;
    std::uint32_t size;
    std::uint32_t offset;
    std::uint32_t reserved;

    std::uint64_t end() const { return std::uint64_t(offset) + size; }
};
static_assert(sizeof(Entry) == 16, "an entry of the table is 16 bytes");
static_assert(tableOffset + maxMessages * sizeof(Entry) + 1 == bodyOffset, "the bodies follow the table");

class ChannelBlock {
public:
    // `capacity`: the bytes of the block that this process maps, which may be fewer than
    // the creator's.
    ChannelBlock(unsigned char* bytes, std::uint64_t capacity) : bytes_(bytes), capacity_(capacity) {}

    std::uint32_t& count() const { return *reinterpret_cast<std::uint32_t*>(bytes_); }
    Entry* table() const { return reinterpret_cast<Entry*>(bytes_ + tableOffset); }
    unsigned char* at(std::uint64_t offset) const { return bytes_ + offset; }
    std::uint64_t capacity() const { return capacity_; }
    // Where the body of the youngest of the first n messages ends.
    std::uint64_t endOf(std::uint32_t n) const { return n == 0 ? bodyOffset : table()[n - 1].end(); }

private:
    unsigned char* bytes_;
    std::uint64_t capacity_;
};

} // namespace ipc
} // namespace ovo

#endif
