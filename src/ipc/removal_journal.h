// A removal from the channel's queue that outlives the process doing it.
//
// Taking a message out moves every body behind it and every entry behind it in the table;
// a holder of the lock that dies in between leaves bodies half moved and the table half
// shifted. So a removal keeps a record of where it is, in an object of its own beside the
// block ("NAME_journal": the block keeps the layout every peer expects), and the next
// holder of the lock, told by the mutex that its holder died, goes on with it from there.
//
// The removal closes a hole: at first the message taken, which the bodies behind it fill,
// a window of them at a time, each window's entries following it down the table. A window
// that fits into the hole is moved again when it was cut short (its bytes still to be copied
// were not overwritten), and its entries go on from the last one copied. A longer one, moved
// in one overlapping move, may be torn anywhere, bodies or entries: the repair drops its
// messages and the hole grows by them. No torn body is ever handed out; a death costs the
// message taken (the dead process had it in hand) and at most one window of the messages
// behind it.
#ifndef OVO_SRC_IPC_REMOVAL_JOURNAL_H
#define OVO_SRC_IPC_REMOVAL_JOURNAL_H

#include "ipc/channel_block.h"

#include <atomic>
#include <cstdint>

namespace ovo {
namespace ipc {

// The record, shared by every process on the channel. A fresh object is zeros: no removal.
struct RemovalRecord {
    std::uint32_t state;                 // bit 0: a removal in progress; above it the messages dropped on the channel
    std::uint32_t count;                 // the count before
    std::uint32_t index;                 // the entry taken
    std::atomic<std::uint64_t> progress; // the hole, the window and the step, in one word
    Entry last;                          // entry `count` - 1 as the removal found it; the removal leaves it
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
    // The steps of a window. First the move of its bodies. A window that fits the hole can
    // be moved again, and its entries are copied down the table one by one, the record's
    // position passing each before the next is written (a copy overwrites only entries
    // already copied): a death costs none of them. A longer window's move may be torn
    // anywhere, and a death costs its messages whatever step it cut: its entries are copied
    // without a mark each. A removal that is one such window stands in that step from its
    // start: one mark for the whole of it.
    enum Phase : std::uint32_t { movingBodies = 0, copyingEntries = 1, copyingWindow = 2 };
    class Progress;

    Progress progress() const;
    void mark(Progress progress);
    void begin(Progress start);
    void run(const ChannelBlock& block, Progress at);
    Progress moveWindow(const ChannelBlock& block, Progress at);
    std::uint32_t chooseWindow(const ChannelBlock& block, Progress at) const;
    bool cutShort(const ChannelBlock& block, Progress at) const;
    void close(std::uint32_t dropped);

    RemovalRecord& record_;
};

} // namespace ipc
} // namespace ovo

#endif
