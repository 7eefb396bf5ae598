// A removal from the channel's queue that outlives the process doing it.
//
// Taking a message out moves every body behind it and every entry behind it in the table;
// a holder of the lock that dies in between leaves bodies half moved and the table half
// shifted. So a removal keeps a record of where it is, in an object of its own beside the
// block ("NAME_journal": the block keeps the layout every peer expects), and the next
// holder of the lock, told by the mutex that its holder died, goes on with it from there.
//
// The removal closes a hole: at first the message taken, which the bodies behind it fill,
// a window of them at a time, each window's entries following it down the table (staged in
// the record first, then copied, so that either step can be done again). A window that was
// cut short is moved again when it fits into the hole (its bytes still to be copied were
// not overwritten); a longer one moved in one overlapping move may be torn anywhere, so
// the repair drops its messages and the hole grows by them. No torn body is ever handed
// out; a death costs the message taken (the dead process had it in hand) and at most one
// window of the messages behind it.
#ifndef OVO_SRC_IPC_REMOVAL_JOURNAL_H
#define OVO_SRC_IPC_REMOVAL_JOURNAL_H

#include "ipc/channel_block.h"

#include <atomic>
#include <cstdint>

namespace ovo {
namespace ipc {

// The record, shared by every process on the channel. A fresh object is zeros: no removal.
struct RemovalRecord {
    std::uint32_t state;     // bit 0: a removal in progress; above it the messages dropped on the channel
    std::uint32_t count;     // the count before
    std::uint32_t index;     // the entry taken
    std::uint32_t windowEnd; // the entry behind the window being moved; none chosen while not beyond `progress`
    std::atomic<std::uint64_t> progress; // the hole, the window's first entry and the phase, in one store
    Entry last;                          // entry `count` - 1 as the removal found it; the removal leaves it
    Entry staged[maxMessages];           // the window's entries as they are to stand in the table
};

// What a repair found and did.
struct Repair {
    enum Outcome { none, undone, finished, truncated, stale };
    Outcome outcome = none;
    std::uint32_t index = 0;   // the entry that was being taken
    std::uint32_t count = 0;   // the count then
    std::uint32_t dropped = 0; // messages this repair dropped
    std::uint32_t total = 0;   // messages dropped on the channel so far
};

class RemovalJournal {
public:
    explicit RemovalJournal(RemovalRecord& record) : record_(record) {}

    // Whether a removal was left unfinished: its process died inside it.
    bool busy() const { return (record_.state & 1) != 0; }

    // Takes entry k out of the block's queue and closes the gap.
    void remove(const ChannelBlock& block, std::uint32_t k);

    // Puts right the removal that a dead holder of the lock left, if any.
    Repair repair(const ChannelBlock& block);

private:
    struct Progress;

    Progress progress() const;
    void mark(const Progress& progress);
    void run(const ChannelBlock& block);
    void moveWindow(const ChannelBlock& block, Progress at);
    std::uint32_t chooseWindow(const ChannelBlock& block, const Progress& at);
    void close(std::uint32_t dropped);

    RemovalRecord& record_;
};

} // namespace ipc
} // namespace ovo

#endif
