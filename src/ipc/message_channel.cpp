#include <ovo/ipc/message_channel.h>

#include "ipc/channel_block.h"
#include "ipc/removal_journal.h"

#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_mutex.h>
#include <ovo/logger/logger.h>
#include <ovo/strings.h>

#include <atomic>
#include <cstring>
#include <stdexcept>

using ovo::ipc::ChannelBlock;
using ovo::ipc::Entry;
using ovo::ipc::RemovalJournal;
using ovo::ipc::RemovalRecord;
using ovo::ipc::Repair;

namespace {

unsigned int checkedSize(const std::string& name, unsigned int size)
{
    if (size < ovo::ipc::MessageChannel::minimumSize)
        throw std::runtime_error(ovo::format("MessageChannel( '%s' ): a size of %u bytes cannot hold the table; the minimum is %u",
                                             name.c_str(), size, ovo::ipc::MessageChannel::minimumSize));
    return size;
}

// The channel's repairs are told to the logger "ovo.ipc.channel", one line each.
void logRepair(const std::string& name, const Repair& repair)
{
    const char* const found[] = {"", "nothing had moved yet: it stays queued", "the removal was finished",
                                 "the queue was cut where the removal had got to",
                                 "the record did not match the queue"};
    ovo::logger::get("ovo.ipc.channel")
        .info(ovo::format("MessageChannel( '%s' ): a process died taking message %u of %u, and %s; %u dropped, %u on "
                          "this channel so far",
                          name.c_str(), repair.index + 1, repair.count, found[repair.outcome], repair.dropped,
                          repair.total));
}

} // namespace

class MessageChannelImpl {
public:
    // The journal's object comes first and goes last, so that it lives while the block does.
    MessageChannelImpl(const std::string& channelName, unsigned int size)
        : journalMemory(channelName + "_journal", sizeof(RemovalRecord)),
          memory(channelName + "_data", checkedSize(channelName, size)), mutex(channelName + "_lock"),
          block(static_cast<unsigned char*>(memory.begin()),
                static_cast<unsigned char*>(memory.end()) - static_cast<unsigned char*>(memory.begin())),
          journal(*static_cast<RemovalRecord*>(journalMemory.begin())), name(channelName)
    {
    }

    // The oldest message of the id (0: the oldest of all), or -1. Taking a message moves
    // every body behind it, so a process takes none while the queue reaches past its own
    // block (it joined with a smaller size than the creator's): all or nothing, never a
    // torn body for the others. A body outside the queue (a peer's broken table) is never
    // read.
    int select(unsigned int id) const
    {
        const std::uint32_t n = block.count();
        if (n == 0 || n > ovo::ipc::maxMessages)
            return -1;
        const std::uint64_t end = block.endOf(n);
        if (end > block.capacity())
            return -1;
        for (unsigned int i = 0; i < n; ++i) {
            if (id == 0 || block.table()[i].id == id)
                return block.table()[i].end() <= end ? static_cast<int>(i) : -1;
        }
        return -1;
    }

    ovo::ipc::SharedMemory journalMemory;
    ovo::ipc::SharedMemory memory;
    ovo::ipc::SystemMutex mutex;
    ChannelBlock block;
    RemovalJournal journal;
    std::string name;
};

namespace {

// Holds the channel's lock for one operation. A holder that died inside a removal left it
// half done: the mutex tells the next holder that its holder died, and whoever is about to
// take a message or count them looks at the journal as well (a sender's append is not
// disturbed by a removal left half done, and the journal stays off its way). The repair
// comes first; its line is logged once the lock is given up.
class ChannelLock {
public:
    ChannelLock(MessageChannelImpl& channel, bool readsTheQueue) : channel_(channel)
    {
        const bool abandoned = channel.mutex.lockReportingAbandonment();
        if (abandoned || (readsTheQueue && channel.journal.busy()))
            repair_ = channel.journal.repair(channel.block);
    }
    ~ChannelLock()
    {
        channel_.mutex.unlock();
        try {
            if (repair_.outcome != Repair::none)
                logRepair(channel_.name, repair_);
        } catch (...) { // a line that cannot be delivered is lost, as all logging
        }
    }
    ChannelLock(const ChannelLock&) = delete;
    ChannelLock& operator=(const ChannelLock&) = delete;

private:
    MessageChannelImpl& channel_;
    Repair repair_;
};

} // namespace

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
    ChannelLock lock(*impl_, false);
    const ChannelBlock& block = impl_->block;
    const std::uint32_t n = block.count();
    if (n >= maxMessages)
        return false;
    const std::uint64_t offset = block.endOf(n);
    // The bodies must fit this process's block: a body that does not is refused whole.
    if (offset + size > block.capacity())
        return false;
    Entry& entry = block.table()[n];
    entry.id = id;
    entry.size = size;
    entry.offset = static_cast<std::uint32_t>(offset);
    if (size != 0 && data != nullptr)
        std::memcpy(block.at(offset), data, size);
    // A sender killed before the count grows has changed nothing of the queue.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    block.count() = n + 1;
    return true;
}

bool MessageChannel::recv(unsigned int id, void* data, unsigned int size)
{
    ChannelLock lock(*impl_, true);
    const int k = impl_->select(id);
    if (k < 0 || impl_->block.table()[k].size != size)
        return false;
    if (size != 0)
        std::memcpy(data, impl_->block.at(impl_->block.table()[k].offset), size);
    impl_->journal.remove(impl_->block, static_cast<std::uint32_t>(k));
    return true;
}

bool MessageChannel::recv(unsigned int id, std::vector<unsigned char>& data)
{
    ChannelLock lock(*impl_, true);
    const int k = impl_->select(id);
    if (k < 0)
        return false;
    const Entry& entry = impl_->block.table()[k];
    data.assign(impl_->block.at(entry.offset), impl_->block.at(entry.end()));
    impl_->journal.remove(impl_->block, static_cast<std::uint32_t>(k));
    return true;
}

unsigned int MessageChannel::inQueue() const
{
    ChannelLock lock(*impl_, true);
    return impl_->block.count();
}

} // namespace ipc
} // namespace ovo
