/// @file
/// The readers of the PC/SC service with the state of their cards, as the service reports
/// them: a look that connects to no card, so a card that another program holds or that
/// does not answer is listed like any other.
#ifndef OVO_IO_READER_STATUS_H
#define OVO_IO_READER_STATUS_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace io {

/// One reader and its card, as readerStatuses() gives them.
struct ReaderStatus {
    /// The reader's name, as enumeratePCSCDevices() gives it.
    std::string reader;
    /// A card is in the reader.
    bool cardPresent = false;
    /// A program holds the card exclusively: a connection fails until it lets go.
    bool exclusive = false;
    /// Programs hold the card in shared mode.
    bool inUse = false;
    /// The card gave no answer to reset: it cannot be used.
    bool mute = false;
    /// The service cannot use the reader (it failed, or another driver holds it).
    bool unavailable = false;
    /// The card's ATR, as the service read it at insertion; empty without a card or
    /// for a mute one.
    std::vector<unsigned char> atr;
};

/// Every reader of the service in its order, each with the state of its card. Asks the
/// service only: it connects to no card, so it neither waits for a card that does not
/// answer nor fails on one that another program holds exclusively.
///
/// Empty when the service knows no reader. Like every call of the service it waits for
/// the service's answer: a caller that must not wait for a stopped service bounds it.
/// Each call has a context of its own: safe from any thread.
/// @throws std::runtime_error ("::SCardEstablishContext() failed: SCard error: 0x8010001D",
///         or "::SCardListReaders() failed: ..." or "::SCardGetStatusChange() failed: ..."
///         with the service's code) when the service cannot be asked.
OVO_API std::vector<ReaderStatus> readerStatuses();

} // namespace io
} // namespace ovo

#endif
