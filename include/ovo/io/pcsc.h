/// @file
/// One smart-card reader through the PC/SC service.
#ifndef OVO_IO_PCSC_H
#define OVO_IO_PCSC_H

#include <ovo/export.h>
#include <ovo/io/apdu.h>
#include <ovo/logger/logger.h>

#include <memory>
#include <string>
#include <vector>

namespace ovo {
namespace io {

/// The state of the card in a connected reader, as cardStatus gives it.
enum CardStatus : int {
    /// The service reported a state outside this list.
    cardUnknown = 0,
    /// No card in the reader.
    cardAbsent = 1,
    /// A card is in the reader but not in position for use.
    cardPresent = 2,
    /// A card is in position, without power.
    cardSwallowed = 3,
    /// The card is powered, but the reader does not know its mode.
    cardPowered = 4,
    /// The card is reset and waits for the negotiation of its protocol.
    cardNegotiable = 5,
    /// The card is reset and a specific protocol is set up.
    cardSpecific = 6,
};

class pcscImpl;

/// One smart-card reader through the PC/SC service: a service context for the life of the
/// object, a card connection on demand, traced exchanges of units.
///
/// Every failure is std::runtime_error with the service's code as "SCard error: 0x%08X",
/// behind "::SCardConnect() failed: ", "::SCardStatus() failed: " or
/// "::SCardTransmit() failed: " (the constructor's has no prefix). A card's error status
/// word is no failure: read it with isSuccess(), sw1() and sw2().
///
/// One object is used by one thread at a time; the caller serialises.
///
/// SELECT of the master file, traced (from card_exchange.cpp):
/// @snippet card_exchange.cpp exchange
class OVO_API pcsc {
public:
    /// The reader readerName (as enumeratePCSCDevices gives it), logging to the null logger.
    /// @throws std::runtime_error "SCard error: 0x%08X" when no service context can be had.
    explicit pcsc(const std::string& readerName);
    /// The reader readerName, with its exchanges traced on logger.
    ///
    /// The logger is not owned and must outlive the object; exchanges are traced with
    /// traceHex ("->" and "<-"), which shows at level 1.
    /// @throws std::runtime_error "SCard error: 0x%08X" when no service context can be had.
    pcsc(const std::string& readerName, ovo::logger::ILogger& logger);
    /// Releases the context; disconnect first if connected.
    ~pcsc();
    /// Not copyable: the object owns its service context and connection.
    ///@{
    pcsc(const pcsc&) = delete;
    pcsc& operator=(const pcsc&) = delete;
    ///@}

    /// Connects to the card, shared, with T=0 or T=1; nothing happens when connected.
    /// @throws std::runtime_error "::SCardConnect() failed: SCard error: 0x%08X" (no card,
    ///         an unknown reader, ...).
    void connect();
    /// Leaves the card as it is and ends the connection; nothing happens when not connected.
    void disconnect();
    /// Sends command to the card and gives its response (at most 261 bytes).
    ///
    /// Both are traced on the logger. Without a connection the service's own failure is
    /// reported.
    /// @throws std::runtime_error "::SCardTransmit() failed: SCard error: 0x%08X".
    apdu exchange(const apdu& command);
    /// The card's state, and its whole ATR in atr (left untouched when the ATR is empty).
    /// @throws std::runtime_error "not connected" without a connection, or
    ///         "::SCardStatus() failed: SCard error: 0x%08X".
    CardStatus cardStatus(std::vector<unsigned char>& atr);
    /// Whether a card is in the reader; needs no connection, false when the service cannot tell.
    bool isCardPresented();

private:
    std::unique_ptr<pcscImpl> impl_;
};

} // namespace io
} // namespace ovo

#endif
