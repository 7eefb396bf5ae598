// The book that the processes of the channel kill test keep in shared memory, so that it
// survives the kills: what each sender committed, what each receiver took, and the body a
// receiver copies out (straight into its slot here, so a receiver killed after the copy
// leaves the message it took behind). Messages are self-checking: the identifier is a
// size class, the body carries its sender's slot, its sequence number and its size, and
// every byte after them is a function of the three and its place.
#ifndef OVO_TESTS_IPC_CHANNEL_LEDGER_H
#define OVO_TESTS_IPC_CHANNEL_LEDGER_H

#include <atomic>
#include <cstdint>
#include <cstring>
#include <utility>

namespace ovo_test {

const unsigned int ledgerChannelSize = 1024 * 1024;
// From slot, sequence and size alone up to 9000 bytes: below, around and above the 16 KiB
// windows in which a removal moves the bodies behind it (and the 1 MiB queue has room).
const std::uint32_t sizeClasses[] = {12, 40, 300, 1500, 5000, 9000};
const unsigned int classCount = sizeof sizeClasses / sizeof sizeClasses[0];
const unsigned int maxBody = 9000;
const unsigned int maxSlots = 512;        // processes started in one row, killed ones included
const unsigned int maxReceipts = 1 << 20; // messages received in one row; senders pause at half

struct Receipt {
    std::uint32_t slot;
    std::uint32_t sequence;
    std::atomic<std::uint32_t> valid;
};

struct LedgerSlot {
    std::atomic<std::uint32_t> running;   // the process got to its loop
    std::atomic<std::uint32_t> committed; // a sender's messages that send accepted
    unsigned char body[maxBody];          // a receiver's buffer
};

struct Ledger {
    std::atomic<std::uint32_t> stop;
    std::atomic<std::uint32_t> corrupt;     // bodies that failed their check in a receiver
    std::atomic<std::uint32_t> receipts;    // receipts handed out
    std::atomic<std::uint32_t> loggedDrops; // what the channel's repair lines said was dropped
    LedgerSlot slots[maxSlots];
    Receipt receipt[maxReceipts];
};

using Identity = std::pair<std::uint32_t, std::uint32_t>; // the sender's slot, the sequence

inline std::uint32_t bodySize(unsigned int id) { return sizeClasses[(id - 1) % classCount]; }

inline unsigned char patternByte(const Identity& message, std::size_t place)
{
    return static_cast<unsigned char>((message.first * 2654435761u + message.second * 40503u + place * 131u) >> 7);
}

inline void writeBody(unsigned char* body, std::uint32_t size, const Identity& message)
{
    std::memcpy(body, &message.first, 4);
    std::memcpy(body + 4, &message.second, 4);
    std::memcpy(body + 8, &size, 4);
    for (std::size_t i = 12; i < size; ++i)
        body[i] = patternByte(message, i);
}

// Whether the body of `size` bytes is whole (its size and every byte match what it names),
// and which message it is.
inline bool bodyIsIntact(const unsigned char* body, std::uint32_t size, Identity& message)
{
    std::uint32_t named = 0;
    if (size < 12)
        return false;
    std::memcpy(&message.first, body, 4);
    std::memcpy(&message.second, body + 4, 4);
    std::memcpy(&named, body + 8, 4);
    for (std::size_t i = 12; i < size; ++i)
        if (body[i] != patternByte(message, i))
            return false;
    return named == size && message.first < maxSlots;
}

} // namespace ovo_test

#endif
