#include "fakes/scripted_pcsc.h"

#include "platform/pcsc_calls.h"

#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include <algorithm>

namespace ovo_fake {
namespace {

PcscScript script;
const std::intptr_t ourContext = 0xC0C;
const std::intptr_t ourCard = 0xCA4D;
const std::size_t callsKept = 64; // a benchmark's millions of calls are not kept

struct Data {
    const unsigned char* bytes;
    std::uint32_t length;
};

// Arguments as the log shows them: handles in hex, numbers in decimal, data as hex bytes.
std::string text(std::intptr_t handle) { return ovo::format("%lX", static_cast<unsigned long>(handle)); }
std::string text(std::uint32_t number) { return std::to_string(number); }
std::string text(const char* name) { return name; }
std::string text(Data data) { return "[" + ovo::NumberFormatter::buffer2stringU2(data.bytes, data.length) + "]"; }

// Logs the call and gives its scripted result.
template <typename... Arguments> std::uint32_t call(const std::string& name, const Arguments&... arguments)
{
    if (script.calls.size() < callsKept) {
        std::string list;
        ((list += (list.empty() ? "" : ", ") + text(arguments)), ...);
        script.calls.push_back(name + "(" + list + ")");
    }
    const auto failure = script.failures.find(name);
    return failure != script.failures.end() ? failure->second : 0;
}

} // namespace

PcscScript& pcscScript() { return script; }
void resetPcscScript() { script = PcscScript(); }

} // namespace ovo_fake

namespace ovo {
namespace platform {
namespace scard {

using namespace ovo_fake;

Result SCardEstablishContext(std::uint32_t scope, Context& context)
{
    const Result result = call("SCardEstablishContext", scope);
    context = result == 0 ? ourContext : 0;
    return result;
}

Result SCardReleaseContext(Context context) { return call("SCardReleaseContext", context); }

// The out-values are filled also on failure, where the library must not take them.
Result SCardConnectA(Context context, const char* reader, std::uint32_t shareMode, std::uint32_t protocols, Card& card,
                     std::uint32_t& activeProtocol)
{
    card = ourCard;
    activeProtocol = script.activeProtocol;
    return call("SCardConnect", context, reader, shareMode, protocols);
}

Result SCardDisconnect(Card card, std::uint32_t disposition) { return call("SCardDisconnect", card, disposition); }

Result SCardStatusA(Card card, char*, std::uint32_t& namesLength, std::uint32_t& state, std::uint32_t&,
                    unsigned char* atr, std::uint32_t& atrLength)
{
    const Result result = call("SCardStatus", card, namesLength, atrLength);
    if (result != 0 || script.atr.size() > atrLength)
        return result != 0 ? result : 0x80100008u; // SCARD_E_INSUFFICIENT_BUFFER
    atrLength = static_cast<std::uint32_t>(std::copy(script.atr.begin(), script.atr.end(), atr) - atr);
    state = script.cardState;
    return 0;
}

Result SCardTransmit(Card card, std::uint32_t protocol, const unsigned char* command, std::uint32_t commandLength,
                     unsigned char* response, std::uint32_t& responseLength)
{
    const Result result = call("SCardTransmit", card, protocol, Data{command, commandLength}, responseLength);
    const std::size_t copied = std::min<std::size_t>(script.response.size(), responseLength);
    std::copy(script.response.begin(), script.response.begin() + static_cast<std::ptrdiff_t>(copied), response);
    responseLength = script.reportedLength != 0 ? script.reportedLength : static_cast<std::uint32_t>(copied);
    return result;
}

Result SCardGetStatusChangeA(Context context, std::uint32_t timeout, const char* reader, std::uint32_t currentState,
                             std::uint32_t& eventState)
{
    eventState = script.eventState;
    return call("SCardGetStatusChange", context, timeout, reader, currentState);
}

// Every reader but the plug-and-play one reports the scripted state and ATR.
Result SCardGetStatusChangeA(Context context, std::uint32_t timeout, std::vector<ReaderState>& states)
{
    for (ReaderState& state : states) {
        if (state.reader != plugAndPlayReader) {
            state.eventState = script.eventState;
            state.atr = script.atr;
        }
    }
    return call("SCardGetStatusChange", context, timeout, static_cast<std::uint32_t>(states.size()));
}

Result SCardCancel(Context context) { return call("SCardCancel", context); }

Result SCardListReadersA(Context context, char*& list, std::uint32_t& length)
{
    list = &script.readerList[0];
    return call("SCardListReaders", context, length);
}

Result SCardFreeMemory(Context context, const void* memory)
{
    return call("SCardFreeMemory", context, memory == script.readerList.data() ? "the list" : "?");
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
