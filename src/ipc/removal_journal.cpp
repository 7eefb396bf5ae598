#include "ipc/removal_journal.h"

#include <algorithm>
#include <cstring>

namespace ovo {
namespace ipc {
namespace {

// The steps of a window, each of which can be done again: the move of its bodies (when
// the window fits the hole), the staging of its entries, and their copy into the table.
enum Phase : std::uint32_t { movingBodies = 0, stagingEntries = 1, copyingEntries = 2 };

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

bool sameEntry(const Entry& a, const Entry& b) { return a.id == b.id && a.size == b.size && a.offset == b.offset; }

} // namespace

struct RemovalJournal::Progress {
    std::uint32_t holeBytes;   // how far the bodies behind move down
    std::uint32_t holeEntries; // how many places their entries move down: the message taken and those dropped
    std::uint32_t position;    // the window's first message
    std::uint32_t phase;

    std::uint64_t packed() const
    {
        return holeBytes | std::uint64_t(holeEntries) << 32 | std::uint64_t(position) << 41 |
               std::uint64_t(phase) << 50;
    }
    static Progress unpacked(std::uint64_t word)
    {
        return {static_cast<std::uint32_t>(word), static_cast<std::uint32_t>(word >> 32) & 0x1FF,
                static_cast<std::uint32_t>(word >> 41) & 0x1FF, static_cast<std::uint32_t>(word >> 50) & 3};
    }
};

RemovalJournal::Progress RemovalJournal::progress() const
{
    return Progress::unpacked(record_.progress.load(std::memory_order_relaxed));
}

void RemovalJournal::mark(const Progress& progress)
{
    inOrder();
    record_.progress.store(progress.packed(), std::memory_order_relaxed);
    inOrder();
}

void RemovalJournal::remove(const ChannelBlock& block, std::uint32_t k)
{
    record_.count = block.count();
    record_.index = k;
    record_.last = block.table()[record_.count - 1];
    record_.windowEnd = 0;
    mark({block.table()[k].size, 1, k + 1, movingBodies});
    markWord(record_.state, record_.state | 1);
    run(block);
    close(0);
}

// Goes on from where the record stands to the end of the removal.
void RemovalJournal::run(const ChannelBlock& block)
{
    for (Progress at = progress(); at.position < record_.count; at = progress())
        moveWindow(block, at);
    markWord(block.count(), record_.count - progress().holeEntries);
}

// Moves the window that begins at `at`, from the step the record names on.
void RemovalJournal::moveWindow(const ChannelBlock& block, Progress at)
{
    using EntryWords = std::uint32_t __attribute__((vector_size(sizeof(Entry))));
    Entry* const table = block.table();
    const std::uint32_t end = chooseWindow(block, at);
    switch (at.phase) {
    case movingBodies: {
        const std::uint64_t from = table[at.position].offset;
        const std::uint64_t length = table[end - 1].end() - from;
        unsigned char* const to = block.at(from - at.holeBytes);
        if (length <= at.holeBytes) // the window fits into the hole: it can be copied again
            std::memcpy(to, block.at(from), length);
        else
            std::memmove(to, block.at(from), length);
        at.phase = stagingEntries;
        mark(at);
    }
        // fall through
    case stagingEntries: { // each entry one 16-byte vector, its offset lowered by the hole
        const EntryWords lower = {0, 0, at.holeBytes, 0};
        const Entry* const window = table + at.position;
        Entry* const staged = record_.staged;
        for (std::uint32_t i = 0; i < end - at.position; ++i) {
            EntryWords words;
            std::memcpy(&words, &window[i], sizeof words);
            words -= lower;
            std::memcpy(&staged[i], &words, sizeof words);
        }
        at.phase = copyingEntries;
        mark(at);
    }
        // fall through
    default:
        std::memcpy(&table[at.position - at.holeEntries], record_.staged, (end - at.position) * sizeof(Entry));
        at.position = end;
        at.phase = movingBodies;
        mark(at);
    }
}

// The messages from `at` on whose bodies move next: up to the end of the queue when it
// fits. The entries from there on are as the removal found them, with their ends growing.
std::uint32_t RemovalJournal::chooseWindow(const ChannelBlock& block, const Progress& at)
{
    if (record_.windowEnd > at.position)
        return record_.windowEnd;
    const Entry* const table = block.table();
    const std::uint64_t start = table[at.position].offset;
    const std::uint64_t most = std::max<std::uint64_t>(at.holeBytes, windowSize);
    const Entry* end = table + record_.count;
    if (record_.last.end() - start > most)
        end = std::partition_point(table + at.position + 1, end,
                                   [&](const Entry& entry) { return entry.end() - start <= most; });
    markWord(record_.windowEnd, static_cast<std::uint32_t>(end - table));
    return record_.windowEnd;
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
    repair.index = record_.index;
    repair.count = n;
    // The removal leaves the last entry as it was: a record that does not match it belongs
    // to a block that has gone (the record's object outlived it while a process joined).
    const bool ours = n >= 1 && n <= maxMessages && record_.index < n && at.holeEntries >= 1 && at.position <= n &&
                      record_.windowEnd <= n && sameEntry(block.table()[n - 1], record_.last);
    if (!ours || (now != n && now != n - at.holeEntries && now <= n)) {
        repair.outcome = Repair::stale;
    } else if (now > n) { // a sender appended since: not told of the death, it went on
        markWord(block.count(), record_.index);
        repair.outcome = Repair::truncated;
        repair.dropped = now - record_.index;
    } else if (now == n - at.holeEntries) { // done but for the record
        repair.outcome = Repair::finished;
        repair.dropped = at.holeEntries;
    } else if (at.phase == movingBodies && at.holeEntries == 1 && at.position == record_.index + 1 &&
               (at.holeBytes == 0 || at.position == n)) {
        repair.outcome = Repair::undone; // nothing had to move: the message stays queued
    } else {
        repair.outcome = Repair::finished;
        if (record_.last.end() > block.capacity()) { // this process cannot move the bodies
            repair.outcome = Repair::truncated;
            if (at.phase != movingBodies)
                moveWindow(block, at); // the window's entries: the table only
            const Progress reached = progress();
            mark({reached.holeBytes, reached.holeEntries + n - reached.position, n, movingBodies});
        } else if (at.phase == movingBodies && record_.windowEnd > at.position) {
            const std::uint64_t length = block.table()[record_.windowEnd - 1].end() - block.table()[at.position].offset;
            if (length > at.holeBytes) // cut short inside one overlapping move: any body in it may be torn
                mark({static_cast<std::uint32_t>(at.holeBytes + length),
                      at.holeEntries + record_.windowEnd - at.position, record_.windowEnd, movingBodies});
        }
        run(block);
        repair.dropped = progress().holeEntries;
    }
    close(repair.dropped);
    repair.total = record_.state >> 1;
    return repair;
}

} // namespace ipc
} // namespace ovo
