#include <ovo/ipc/message_channel.h>

#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_mutex.h>
#include <ovo/strings.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace {

// The block: count at 0, the table of 256 entries at 16, the bodies from 4113 on.
const unsigned int tableOffset = 16;
const unsigned int maxMessages = 256;
const unsigned int bodyOffset = 4113;

struct Entry {
    std::uint32_t id;
    std::uint32_t size;
    std::uint32_t offset;
    std::uint32_t reserved;
};
static_assert(sizeof(Entry) == 16, "an entry of the table is 16 bytes");
static_assert(tableOffset + maxMessages * sizeof(Entry) + 1 == bodyOffset, "the bodies follow the table");

unsigned int checkedSize(const std::string& name, unsigned int size)
{
    if (size < ovo::ipc::MessageChannel::minimumSize)
        throw std::runtime_error(ovo::format("MessageChannel( '%s' ): a size of %u bytes cannot hold the table; the minimum is %u",
                                             name.c_str(), size, ovo::ipc::MessageChannel::minimumSize));
    return size;
}

class ScopedLock {
public:
    explicit ScopedLock(ovo::ipc::SystemMutex& mutex) : mutex_(mutex) { mutex_.lock(); }
    ~ScopedLock() { mutex_.unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    ovo::ipc::SystemMutex& mutex_;
};

} // namespace

class MessageChannelImpl {
public:
    MessageChannelImpl(const std::string& name, unsigned int size)
        : memory(name + "_data", checkedSize(name, size)), mutex(name + "_lock"), block(static_cast<unsigned char*>(memory.begin()))
    {
    }

    std::uint32_t& count() { return *reinterpret_cast<std::uint32_t*>(block); }
    Entry* table() { return reinterpret_cast<Entry*>(block + tableOffset); }
    // The bytes of the block in this process.
    std::uint64_t capacity() const { return static_cast<unsigned char*>(memory.end()) - block; }

    // The oldest message of the id (0: the oldest of all), or -1. Taking a message moves
    // every body behind it, so a process takes none while the queue reaches past its own
    // block (it joined with a smaller size than the creator's): all or nothing, never a
    // torn body for the others. A body outside the queue (a peer's broken table) is never
    // read.
    int select(unsigned int id)
    {
        const std::uint32_t n = count();
        if (n == 0 || n > maxMessages)
            return -1;
        const std::uint64_t end = std::uint64_t(table()[n - 1].offset) + table()[n - 1].size;
        if (end > capacity())
            return -1;
        for (unsigned int i = 0; i < n; ++i) {
            if (id == 0 || table()[i].id == id)
                return std::uint64_t(table()[i].offset) + table()[i].size <= end ? static_cast<int>(i) : -1;
        }
        return -1;
    }

    // Closes the gap: the bodies behind it move down, and so do their entries. The bodies
    // lie back to back, so those behind end where the last one ends.
    void remove(unsigned int k)
    {
        Entry* const entries = table();
        const std::uint32_t n = count();
        const std::uint32_t removed = entries[k].size;
        const std::uint64_t from = std::uint64_t(entries[k].offset) + removed;
        const std::uint64_t end = std::uint64_t(entries[n - 1].offset) + entries[n - 1].size;
        std::memmove(block + entries[k].offset, block + from, end - from);
        // An entry is one 16-byte vector: moved down and its offset lowered in one step.
        using EntryWords = std::uint32_t __attribute__((vector_size(sizeof(Entry))));
        const EntryWords lower = {0, 0, removed, 0};
        for (unsigned int i = k; i + 1 < n; ++i) {
            EntryWords words;
            std::memcpy(&words, &entries[i + 1], sizeof words);
            words -= lower;
            std::memcpy(&entries[i], &words, sizeof words);
        }
        count() = n - 1;
    }

    ovo::ipc::SharedMemory memory;
    ovo::ipc::SystemMutex mutex;
    unsigned char* block;
};

namespace ovo {
namespace ipc {

// A fresh block is all zeros (a new mapping on both platforms), so the table starts empty
// without a reset here: a reset after the block was made would wipe what a joiner sent
// in between.
MessageChannel::MessageChannel(const std::string& name, unsigned int size) : impl_(new MessageChannelImpl(name, size))
{
}

MessageChannel::~MessageChannel() { delete impl_; }

bool MessageChannel::send(unsigned int id, void* data, unsigned int size) { return sendBody(id, data, size); }

bool MessageChannel::sendBody(unsigned int id, const void* data, unsigned int size)
{
    ScopedLock lock(impl_->mutex);
    const std::uint32_t n = impl_->count();
    if (n >= maxMessages)
        return false;
    Entry& entry = impl_->table()[n];
    const std::uint64_t offset = n == 0 ? bodyOffset : std::uint64_t(impl_->table()[n - 1].offset) + impl_->table()[n - 1].size;
    // The bodies must fit this process's block: a body that does not is refused whole.
    if (offset + size > impl_->capacity())
        return false;
    entry.id = id;
    entry.size = size;
    entry.offset = static_cast<std::uint32_t>(offset);
    if (size != 0 && data != nullptr)
        std::memcpy(impl_->block + offset, data, size);
    impl_->count() = n + 1;
    return true;
}

bool MessageChannel::recv(unsigned int id, void* data, unsigned int size)
{
    ScopedLock lock(impl_->mutex);
    const int k = impl_->select(id);
    if (k < 0 || impl_->table()[k].size != size)
        return false;
    if (size != 0)
        std::memcpy(data, impl_->block + impl_->table()[k].offset, size);
    impl_->remove(static_cast<unsigned int>(k));
    return true;
}

bool MessageChannel::recv(unsigned int id, std::vector<unsigned char>& data)
{
    ScopedLock lock(impl_->mutex);
    const int k = impl_->select(id);
    if (k < 0)
        return false;
    const Entry& entry = impl_->table()[k];
    data.assign(impl_->block + entry.offset, impl_->block + entry.offset + entry.size);
    impl_->remove(static_cast<unsigned int>(k));
    return true;
}

unsigned int MessageChannel::inQueue() const
{
    ScopedLock lock(impl_->mutex);
    return impl_->count();
}

} // namespace ipc
} // namespace ovo
