#include "ipc/removal_journal.h"

#include <algorithm>
#include <cstring>

namespace ovo {
namespace ipc {
namespace {

// The bodies behind move a window of at most this many bytes at a time (more when the hole
// is larger): a death inside an overlapping move costs no more than one window, and the
// windows cost a tenth of a long move at most.
const std::uint64_t windowSize = 16 * 1024;

// A process that is killed stops between two instructions, and the next holder of the lock
// sees every store made before: what must come first only has to be written first. This
// keeps the compiler from moving stores across it; it costs no instruction.
void inOrder() { std::atomic_signal_fence(std::memory_order_seq_cst); }

void markWord(std::uint32_t& word, std::uint32_t value)
{
    inOrder();
    word = value;
    inOrder();
}

// Copies the entries [from, end) `hole` places down the table, each one 16-byte vector, its
// offset lowered by `bytes`; `copied(i + 1)` follows the copy of entry i.
template <typename Copied>
void copyEntries(Entry* table, std::uint32_t from, std::uint32_t end, std::uint32_t hole, std::uint32_t bytes,
                 Copied copied)
{
    using EntryWords = std::uint32_t __attribute__((vector_size(sizeof(Entry))));
    const EntryWords lower = {0, 0, bytes, 0};
    for (std::uint32_t i = from; i < end; ++i) {
        EntryWords words;
        std::memcpy(&words, &table[i], sizeof words);
        words -= lower;
        std::memcpy(&table[i - hole], &words, sizeof words);
        copied(i + 1);
    }
}

// Whether a window's move can be done again: it fits into the hole, or nothing moves (the
// message taken was empty).
bool movesAgain(std::uint64_t length, std::uint32_t holeBytes) { return length <= holeBytes || holeBytes == 0; }

bool sameEntry(const Entry& a, const Entry& b) { return a.id == b.id && a.size == b.size && a.offset == b.offset; }

} // namespace

// Where a removal stands, in one word of the record so that one store moves it on: the
// hole's bytes (how far the bodies behind move down) in bits 0-31; its entries (how many
// places their entries move down: the message taken and those dropped) in 32-40; the
// position (the window's first message; while its entries are copied one by one, the next)
// in 41-49; the window's end (none chosen while not beyond the position) in 50-58; the phase
// above.
class RemovalJournal::Progress {
public:
    explicit Progress(std::uint64_t word) : word_(word) {}
    Progress(std::uint32_t holeBytes, std::uint32_t holeEntries, std::uint32_t position, std::uint32_t windowEnd,
             Phase phase)
        : word_(holeBytes | std::uint64_t(holeEntries) << 32 | positionBits(position) | std::uint64_t(windowEnd) << 50 |
                std::uint64_t(phase) << 59)
    {
    }

    std::uint32_t holeBytes() const { return static_cast<std::uint32_t>(word_); }
    std::uint32_t holeEntries() const { return field(32); }
    std::uint32_t position() const { return field(41); }
    std::uint32_t windowEnd() const { return field(50); }
    Phase phase() const { return static_cast<Phase>(word_ >> 59); }
    std::uint64_t word() const { return word_; }

    // The same window at another position and phase.
    Progress moved(std::uint32_t position, Phase phase) const
    {
        return Progress((word_ & windowBits) | positionBits(position) | std::uint64_t(phase) << 59);
    }
    // The same place with the window's end chosen.
    Progress withWindow(std::uint32_t end) const
    {
        return Progress((word_ & ~(std::uint64_t(0x1FF) << 50)) | std::uint64_t(end) << 50);
    }
    static std::uint64_t positionBits(std::uint32_t position) { return std::uint64_t(position) << 41; }

private:
    static const std::uint64_t windowBits = ((std::uint64_t(1) << 41) - 1) | std::uint64_t(0x1FF) << 50;
    std::uint32_t field(unsigned shift) const { return static_cast<std::uint32_t>(word_ >> shift) & 0x1FF; }

    std::uint64_t word_;
};

RemovalJournal::Progress RemovalJournal::progress() const
{
    return Progress(record_.progress.load(std::memory_order_relaxed));
}

inline void RemovalJournal::mark(Progress progress)
{
    inOrder();
    record_.progress.store(progress.word(), std::memory_order_relaxed);
    inOrder();
}

// Marks the removal begun, standing at `start`.
inline void RemovalJournal::begin(Progress start)
{
    mark(start);
    markWord(record_.state, record_.state | 1);
}

void RemovalJournal::remove(const ChannelBlock& block, std::uint32_t k)
{
    const std::uint32_t n = block.count();
    Entry* const table = block.table();
    record_.count = n;
    record_.index = k;
    record_.last = table[n - 1];
    const std::uint32_t holeBytes = table[k].size;
    Progress start(holeBytes, 1, k + 1, 0, movingBodies);
    if (k + 1 < n) {
        // Most removals are one window that cannot be moved again: a death anywhere in it
        // costs its messages, so it is marked once, as one step.
        const std::uint64_t from = table[k + 1].offset, length = record_.last.end() - from;
        if (length <= windowSize && !movesAgain(length, holeBytes)) {
            begin(Progress(holeBytes, 1, k + 1, n, copyingWindow));
            std::memmove(block.at(from - holeBytes), block.at(from), length);
            copyEntries(table, k + 1, n, 1, holeBytes, [](std::uint32_t) {});
            markWord(block.count(), n - 1);
            close(0);
            return;
        }
        start = start.withWindow(chooseWindow(block, start)); // the first window comes with the start, in one store
    }
    begin(start);
    run(block, start);
    close(0);
}

// Goes on from `at`, where the record stands, to the end of the removal. Every receive takes
// this way: its steps are inlined into it.
__attribute__((always_inline)) inline void RemovalJournal::run(const ChannelBlock& block, Progress at)
{
    const std::uint32_t n = record_.count;
    while (at.position() < n)
        at = moveWindow(block, at);
    markWord(block.count(), n - at.holeEntries());
}

// Moves the window that begins at `at`, from the step the record names on; where it ends.
__attribute__((always_inline)) inline RemovalJournal::Progress RemovalJournal::moveWindow(const ChannelBlock& block,
                                                                                          Progress at)
{
    Entry* const table = block.table();
    const std::uint32_t position = at.position(), holeBytes = at.holeBytes();
    if (at.phase() == movingBodies) {
        if (at.windowEnd() <= position) {
            at = at.withWindow(chooseWindow(block, at));
            mark(at);
        }
        const std::uint64_t from = table[position].offset;
        const std::uint64_t length = table[at.windowEnd() - 1].end() - from;
        unsigned char* const to = block.at(from - holeBytes);
        if (length <= holeBytes)
            std::memcpy(to, block.at(from), length);
        else
            std::memmove(to, block.at(from), length);
        at = at.moved(position, movesAgain(length, holeBytes) ? copyingEntries : copyingWindow);
        mark(at);
    }
    if (at.phase() == copyingEntries) {
        std::atomic<std::uint64_t>& progress = record_.progress;
        const std::uint64_t copying = at.word() - Progress::positionBits(position);
        copyEntries(table, position, at.windowEnd(), at.holeEntries(), holeBytes, [&](std::uint32_t next) {
            inOrder();
            progress.store(copying + Progress::positionBits(next), std::memory_order_relaxed);
            inOrder();
        });
    } else {
        copyEntries(table, position, at.windowEnd(), at.holeEntries(), holeBytes, [](std::uint32_t) {});
    }
    at = at.moved(at.windowEnd(), movingBodies);
    mark(at);
    return at;
}

// The messages from `at` on whose bodies move next: up to the end of the queue when it
// fits. The entries from there on are as the removal found them, with their ends growing.
std::uint32_t RemovalJournal::chooseWindow(const ChannelBlock& block, Progress at) const
{
    const Entry* const table = block.table();
    const std::uint64_t start = table[at.position()].offset;
    const std::uint64_t most = std::max<std::uint64_t>(at.holeBytes(), windowSize);
    const Entry* end = table + record_.count;
    if (record_.last.end() - start > most)
        end = std::partition_point(table + at.position() + 1, end,
                                   [&](const Entry& entry) { return entry.end() - start <= most; });
    return static_cast<std::uint32_t>(end - table);
}

// Whether the removal was cut inside a step of its window that cannot be done again.
bool RemovalJournal::cutShort(const ChannelBlock& block, Progress at) const
{
    if (at.phase() == copyingWindow)
        return true;
    const Entry* const table = block.table();
    return at.phase() == movingBodies && at.windowEnd() > at.position() &&
           !movesAgain(table[at.windowEnd() - 1].end() - table[at.position()].offset, at.holeBytes());
}

// Ends the removal and counts what it dropped, in one store.
void RemovalJournal::close(std::uint32_t dropped) { markWord(record_.state, ((record_.state >> 1) + dropped) << 1); }

Repair RemovalJournal::repair(const ChannelBlock& block)
{
    Repair repair;
    if (!busy())
        return repair;
    const std::uint32_t n = record_.count;
    const std::uint32_t now = block.count();
    const Progress at = progress();
    const std::uint32_t position = at.position(), hole = at.holeEntries();
    repair.index = record_.index;
    repair.count = n;
    // The removal leaves the last entry as it was: a record that does not match it belongs
    // to a block that has gone (the record's object outlived it while a process joined).
    const bool ours = n >= 1 && n <= maxMessages && record_.index < n && hole >= 1 && position <= n &&
                      at.windowEnd() <= n && sameEntry(block.table()[n - 1], record_.last);
    if (!ours || (now != n && now != n - hole && now <= n)) {
        repair.outcome = Repair::stale;
    } else if (now > n) { // a sender appended since: not told of the death, it went on
        markWord(block.count(), record_.index);
        repair.outcome = Repair::truncated;
        repair.dropped = now - record_.index;
    } else if (now == n - hole) { // done but for the record
        repair.outcome = Repair::finished;
        repair.dropped = hole;
    } else if (at.phase() == movingBodies && hole == 1 && position == record_.index + 1 &&
               (at.holeBytes() == 0 || position == n)) {
        repair.outcome = Repair::undone; // nothing had to move: the message stays queued
    } else {
        repair.outcome = Repair::finished;
        if (record_.last.end() > block.capacity()) { // this process cannot move the bodies
            repair.outcome = Repair::truncated;
            const Progress reached = at.phase() == copyingEntries ? moveWindow(block, at) : at; // the table only
            mark(Progress(reached.holeBytes(), reached.holeEntries() + n - reached.position(), n, n, movingBodies));
        } else if (cutShort(block, at)) { // any body or entry of the window may be torn: its messages are dropped
            const std::uint32_t end = at.windowEnd();
            const std::uint64_t bytes = block.table()[end - 1].end() - block.endOf(position - hole);
            mark(Progress(static_cast<std::uint32_t>(bytes), hole + end - position, end, end, movingBodies));
        }
        run(block, progress());
        repair.dropped = progress().holeEntries();
    }
    close(repair.dropped);
    repair.total = record_.state >> 1;
    return repair;
}

} // namespace ipc
} // namespace ovo
