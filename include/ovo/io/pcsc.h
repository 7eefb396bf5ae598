// One smart-card reader through the PC/SC service: a service context for the life of the
// object, a card connection on demand, traced exchanges of units.
//
// Every failure is std::runtime_error with the service's code as "SCard error: 0x%08X",
// behind "::SCardConnect() failed: ", "::SCardStatus() failed: " or
// "::SCardTransmit() failed: " (the constructor's has no prefix). A card's error status
// word is no failure: read it with isSuccess(), sw1() and sw2().
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

enum CardStatus : int {
    cardUnknown = 0,
    cardAbsent = 1,
    cardPresent = 2,
    cardSwallowed = 3,
    cardPowered = 4,
    cardNegotiable = 5,
    cardSpecific = 6,
};

class pcscImpl;

class OVO_API pcsc {
public:
    explicit pcsc(const std::string& readerName);
    // The logger is not owned and must outlive the object; exchanges are traced with
    // traceHex ("->" and "<-"), which shows at level 1.
    pcsc(const std::string& readerName, ovo::logger::ILogger& logger);
    ~pcsc(); // releases the context; disconnect first if connected
    pcsc(const pcsc&) = delete;
    pcsc& operator=(const pcsc&) = delete;

    void connect();    // shared, T=0 or T=1; nothing happens when connected
    void disconnect(); // leaves the card; nothing happens when not connected
    apdu exchange(const apdu& command);
    // The card's state, and its whole ATR in atr (left untouched when the ATR is empty).
    // Throws "not connected" without a connection.
    CardStatus cardStatus(std::vector<unsigned char>& atr);
    // Whether a card is in the reader; needs no connection, false when the service cannot tell.
    bool isCardPresented();

private:
    std::unique_ptr<pcscImpl> impl_;
};

} // namespace io
} // namespace ovo

#endif
