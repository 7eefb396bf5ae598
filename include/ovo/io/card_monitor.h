/// @file
/// Card readers and cards as they come and go: a monitor of the PC/SC service that a
/// caller asks for the next event, waiting a bounded time for one.
#ifndef OVO_IO_CARD_MONITOR_H
#define OVO_IO_CARD_MONITOR_H

#include <ovo/export.h>

#include <memory>
#include <string>
#include <vector>

namespace ovo {
namespace io {

/// One change of the readers or their cards, as CardMonitor::next() gives it.
struct CardEvent {
    /// What happened.
    enum Kind : int {
        /// A reader is there (at the start, or attached later).
        readerAdded,
        /// A reader was detached.
        readerRemoved,
        /// A card is in the reader (at the start, or inserted later); atr holds its ATR.
        cardInserted,
        /// The card left the reader, or the reader went with it.
        cardRemoved
    };
    /// What happened.
    Kind kind = readerAdded;
    /// The reader's name, as enumeratePCSCDevices() gives it.
    std::string reader;
    /// The card's ATR with cardInserted, else empty.
    std::vector<unsigned char> atr;
};

class CardMonitorImpl;

/// A monitor of the PC/SC service's readers and cards. One thread calls next(); any
/// thread may call stop().
///
/// A watch in one thread that another ends (from card_monitor.cpp): next() gives false
/// for a quiet second as well as after stop(), so the loop asks stopped().
/// @snippet card_monitor.cpp watch
class OVO_API CardMonitor {
public:
    /// Opens a service context of its own.
    /// @throws std::runtime_error ("::SCardEstablishContext() failed: SCard error:
    ///         0x8010001D") when the service cannot be asked.
    CardMonitor();
    /// Stops the monitor and releases its context.
    ~CardMonitor();
    CardMonitor(const CardMonitor&) = delete;
    CardMonitor& operator=(const CardMonitor&) = delete;

    /// The next event, waiting up to timeoutMs milliseconds for one (0: only a look).
    /// The first events tell what is there at the start: each reader (added), then each
    /// card in one (inserted). A reader that goes with its card gives cardRemoved first;
    /// a card swapped between two looks gives cardRemoved and cardInserted.
    /// @return false when the time ran out or once stop() was called; stopped() tells
    ///         the two apart.
    /// @throws std::runtime_error ("::SCardGetStatusChange() failed: SCard error: 0x...")
    ///         when the service fails the wait. One thread calls next().
    bool next(CardEvent& event, unsigned int timeoutMs);
    /// From any thread: ends the wait of next() and makes every later call answer false
    /// at once. Returns when no next() waits any more.
    void stop();
    /// Whether stop() was called: from then on next() answers false for good. From any thread.
    bool stopped() const;

private:
    std::unique_ptr<CardMonitorImpl> impl_;
};

} // namespace io
} // namespace ovo

#endif
