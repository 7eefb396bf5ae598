#include <ovo/io/pcsc.h>
#include <ovo/strings.h>

#include "io/scard_failure.h"
#include "platform/pcsc_calls.h"

#include <algorithm>
#include <stdexcept>

namespace scard = ovo::platform::scard;

namespace ovo {
namespace io {

namespace {

const std::uint32_t responseRoom = 261; // the longest short-form response: 256 data bytes and more
const std::uint32_t nameRoom = 200;
// The longest ATR that ISO/IEC 7816-3 allows, so that a caller always gets the whole ATR.
const std::uint32_t atrRoom = 33;

// Made once: a filtered trace then costs no string construction.
const std::string commandTitle = "->";
const std::string responseTitle = "<-";

} // namespace

class pcscImpl {
public:
    pcscImpl(const std::string& readerName, ovo::logger::ILogger& logger)
        : readerName(readerName), logger(&logger), activeProtocol(0), context(0), card(0)
    {
    }

    std::string readerName;
    ovo::logger::ILogger* logger; // not owned, never null
    std::uint32_t activeProtocol;
    scard::Context context;
    scard::Card card;
};

pcsc::pcsc(const std::string& readerName) : pcsc(readerName, ovo::logger::null()) {}

pcsc::pcsc(const std::string& readerName, ovo::logger::ILogger& logger) : impl_(new pcscImpl(readerName, logger))
{
    const scard::Result code = scard::SCardEstablishContext(scard::scopeUser, impl_->context);
    if (code != 0)
        throw std::runtime_error(scardErrorText(code));
}

pcsc::~pcsc() { scard::SCardReleaseContext(impl_->context); }

void pcsc::connect()
{
    if (impl_->card != 0)
        return;
    const scard::Result code = scard::SCardConnectA(impl_->context, impl_->readerName.c_str(), scard::shareShared,
                                                    scard::protocolT0orT1, impl_->card, impl_->activeProtocol);
    if (code != 0) {
        impl_->card = 0;
        failScard("SCardConnect", code);
    }
}

void pcsc::disconnect()
{
    if (impl_->card == 0)
        return;
    scard::SCardDisconnect(impl_->card, scard::leaveCard);
    impl_->card = 0;
}

// Not tested for a connection: without one the platform's own failure is reported.
apdu pcsc::exchange(const apdu& command)
{
    const unsigned char* const bytes = command.raw();
    const unsigned int size = command.size();
    unsigned char response[responseRoom] = {};
    std::uint32_t received = responseRoom;
    impl_->logger->traceHex(commandTitle, bytes, size);
    const scard::Result code =
        scard::SCardTransmit(impl_->card, impl_->activeProtocol, bytes, size, response, received);
    // Whatever length a failing platform reports, the trace stays inside the buffer.
    impl_->logger->traceHex(responseTitle, response, std::min(received, responseRoom));
    if (code != 0)
        failScard("SCardTransmit", code);
    return apdu::fromBuffer(response, std::min(received, responseRoom));
}

CardStatus pcsc::cardStatus(std::vector<unsigned char>& atr)
{
    if (impl_->card == 0)
        throw std::runtime_error("not connected");
    char names[nameRoom] = {};
    std::uint32_t namesLength = nameRoom;
    std::uint32_t state = 0;
    std::uint32_t protocol = 0;
    unsigned char atrBytes[atrRoom] = {};
    std::uint32_t atrLength = atrRoom;
    const scard::Result code =
        scard::SCardStatusA(impl_->card, names, namesLength, state, protocol, atrBytes, atrLength);
    if (code != 0)
        failScard("SCardStatus", code);
    if (atrLength != 0)
        atr.assign(atrBytes, atrBytes + std::min(atrLength, atrRoom));
    return state >= cardAbsent && state <= cardSpecific ? static_cast<CardStatus>(state) : cardUnknown;
}

// A failing status call leaves the event state at 0: no card.
bool pcsc::isCardPresented()
{
    std::uint32_t eventState = 0;
    if (scard::SCardGetStatusChangeA(impl_->context, 0, impl_->readerName.c_str(), scard::stateUnaware,
                                     eventState) != 0)
        return false;
    return (eventState & scard::statePresent) != 0;
}

} // namespace io
} // namespace ovo
