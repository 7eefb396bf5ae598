// Card readers and cards as they come and go: a monitor of the PC/SC service that a
// caller asks for the next event, waiting a bounded time for one.
#ifndef OVO_IO_CARD_MONITOR_H
#define OVO_IO_CARD_MONITOR_H

#include <ovo/export.h>

#include <memory>
#include <string>
#include <vector>

namespace ovo {
namespace io {

struct CardEvent {
    enum Kind : int { readerAdded, readerRemoved, cardInserted, cardRemoved };
    Kind kind = readerAdded;
    std::string reader;
    std::vector<unsigned char> atr; // the card's ATR with cardInserted, else empty
};

class CardMonitorImpl;

class OVO_API CardMonitor {
public:
    // Opens a service context of its own; throws std::runtime_error
    // ("::SCardEstablishContext() failed: SCard error: 0x8010001D") when the service
    // cannot be asked.
    CardMonitor();
    ~CardMonitor();
    CardMonitor(const CardMonitor&) = delete;
    CardMonitor& operator=(const CardMonitor&) = delete;

    // The next event, waiting up to timeoutMs milliseconds for one (0: only a look).
    // The first events tell what is there at the start: each reader (added), then each
    // card in one (inserted). A reader that goes with its card gives cardRemoved first;
    // a card swapped between two looks gives cardRemoved and cardInserted. False when
    // the time ran out or once stop() was called. One thread calls next().
    bool next(CardEvent& event, unsigned int timeoutMs);
    // From any thread: ends the wait of next() and makes every later call answer false
    // at once. Returns when no next() waits any more.
    void stop();

private:
    std::unique_ptr<CardMonitorImpl> impl_;
};

} // namespace io
} // namespace ovo

#endif
