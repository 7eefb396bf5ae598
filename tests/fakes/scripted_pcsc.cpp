#include "fakes/scripted_pcsc.h"

#include "platform/pcsc_calls.h"

#include <algorithm>
#include <cstring>

namespace ovo_fake {

namespace {

PcscScript script;
const ovo::platform::scard::Context fakeContext = 0x0C0C;
const ovo::platform::scard::Card fakeCard = 0x0CA4D;

} // namespace

PcscScript& pcscScript() { return script; }
void resetPcscScript() { script = PcscScript(); }

} // namespace ovo_fake

namespace ovo {
namespace platform {
namespace scard {

using ovo_fake::script;

Result SCardEstablishContext(std::uint32_t scope, Context& context)
{
    script.calls.push_back("SCardEstablishContext");
    script.scope = scope;
    context = script.establishResult == 0 ? ovo_fake::fakeContext : 0;
    return script.establishResult;
}

Result SCardReleaseContext(Context context)
{
    script.calls.push_back("SCardReleaseContext");
    script.released += context == ovo_fake::fakeContext ? 1 : 0;
    return 0;
}

Result SCardConnectA(Context, const char* reader, std::uint32_t shareMode, std::uint32_t protocols, Card& card,
                     std::uint32_t& activeProtocol)
{
    script.calls.push_back("SCardConnect");
    script.reader = reader;
    script.share = shareMode;
    script.protocols = protocols;
    if (script.connectResult != 0)
        return script.connectResult;
    card = ovo_fake::fakeCard;
    activeProtocol = script.activeProtocol;
    return 0;
}

Result SCardDisconnect(Card, std::uint32_t disposition)
{
    script.calls.push_back("SCardDisconnect");
    script.disposition = disposition;
    return 0;
}

Result SCardStatusA(Card, char* names, std::uint32_t& namesLength, std::uint32_t& state, std::uint32_t&,
                    unsigned char* atr, std::uint32_t& atrLength)
{
    script.calls.push_back("SCardStatus");
    script.nameRoom = namesLength;
    script.atrRoom = atrLength;
    if (script.statusResult != 0)
        return script.statusResult;
    std::strncpy(names, "Reader A 00 00", namesLength);
    const auto length = static_cast<std::uint32_t>(script.atr.size());
    if (length > atrLength)
        return 0x80100008u; // SCARD_E_INSUFFICIENT_BUFFER
    std::copy(script.atr.begin(), script.atr.end(), atr);
    atrLength = length;
    state = script.cardState;
    return 0;
}

Result SCardTransmit(Card, std::uint32_t protocol, const unsigned char* command, std::uint32_t commandLength,
                     unsigned char* response, std::uint32_t& responseLength)
{
    script.calls.push_back("SCardTransmit");
    script.transmitProtocol = protocol;
    script.command.assign(command, command + commandLength);
    script.receiveRoom = responseLength;
    const std::size_t copied = std::min<std::size_t>(script.response.size(), responseLength);
    std::copy(script.response.begin(), script.response.begin() + static_cast<std::ptrdiff_t>(copied), response);
    responseLength = script.reportedLength == 0xFFFFFFFFu ? static_cast<std::uint32_t>(copied) : script.reportedLength;
    return script.transmitResult;
}

Result SCardGetStatusChangeA(Context, std::uint32_t timeout, const char* reader, std::uint32_t currentState,
                             std::uint32_t& eventState)
{
    script.calls.push_back("SCardGetStatusChange");
    script.timeout = timeout;
    script.reader = reader;
    script.currentState = currentState;
    if (script.statusChangeResult != 0)
        return script.statusChangeResult;
    eventState = script.eventState;
    return 0;
}

// Every reader but the plug-and-play one reports the scripted state and ATR.
Result SCardGetStatusChangeA(Context, std::uint32_t, std::vector<ReaderState>& states)
{
    script.calls.push_back("SCardGetStatusChange");
    for (ReaderState& state : states) {
        if (state.reader != plugAndPlayReader) {
            state.eventState = script.eventState;
            state.atr = script.atr;
        }
    }
    return script.statusChangeResult;
}

Result SCardCancel(Context) { return 0; }

Result SCardListReadersA(Context, char*& list, std::uint32_t& length)
{
    script.calls.push_back("SCardListReaders");
    script.listLength = length;
    if (script.listResult != 0)
        return script.listResult;
    list = &script.readerList[0];
    length = static_cast<std::uint32_t>(script.readerList.size());
    return 0;
}

Result SCardFreeMemory(Context, const void* memory)
{
    script.calls.push_back("SCardFreeMemory");
    script.freed += memory == script.readerList.data() ? 1 : 0;
    return 0;
}

} // namespace scard
} // namespace platform
} // namespace ovo

namespace ovo_fake {

std::uint32_t bareTransmit(std::intptr_t card, std::uint32_t protocol, const unsigned char* command,
                           std::uint32_t commandLength, unsigned char* response, std::uint32_t& responseLength)
{
    return ovo::platform::scard::SCardTransmit(card, protocol, command, commandLength, response, responseLength);
}

} // namespace ovo_fake
