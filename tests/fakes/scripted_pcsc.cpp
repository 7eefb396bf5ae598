#include "fakes/scripted_pcsc.h"

#include "platform/pcsc_calls.h"

#include <algorithm>
#include <cstdio>

namespace ovo_fake {
namespace {

PcscScript script;
const std::intptr_t ourContext = 0xC0C;
const std::intptr_t ourCard = 0xCA4D;
const std::size_t callsKept = 64; // a benchmark's millions of calls are not kept

std::string hex(std::uintptr_t value)
{
    char text[24];
    std::snprintf(text, sizeof text, "%02lX", static_cast<unsigned long>(value));
    return text;
}

// Logs the call and gives its scripted result.
std::uint32_t call(const std::string& name, const std::string& arguments)
{
    if (script.calls.size() < callsKept)
        script.calls.push_back(name + "(" + arguments + ")");
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
using std::to_string;

Result SCardEstablishContext(std::uint32_t scope, Context& context)
{
    const Result result = call("SCardEstablishContext", to_string(scope));
    context = result == 0 ? ourContext : 0;
    return result;
}

Result SCardReleaseContext(Context context) { return call("SCardReleaseContext", hex(context)); }

Result SCardConnectA(Context context, const char* reader, std::uint32_t shareMode, std::uint32_t protocols, Card& card,
                     std::uint32_t& activeProtocol)
{
    const Result result =
        call("SCardConnect", hex(context) + ", " + reader + ", " + to_string(shareMode) + ", " + to_string(protocols));
    card = ourCard; // also on failure, where the library must not take it
    activeProtocol = script.activeProtocol;
    return result;
}

Result SCardDisconnect(Card card, std::uint32_t disposition)
{
    return call("SCardDisconnect", hex(card) + ", " + to_string(disposition));
}

Result SCardStatusA(Card card, char*, std::uint32_t& namesLength, std::uint32_t& state, std::uint32_t&,
                    unsigned char* atr, std::uint32_t& atrLength)
{
    const Result result = call("SCardStatus", hex(card) + ", " + to_string(namesLength) + ", " + to_string(atrLength));
    if (result != 0)
        return result;
    if (script.atr.size() > atrLength)
        return 0x80100008u; // SCARD_E_INSUFFICIENT_BUFFER
    atrLength = static_cast<std::uint32_t>(std::copy(script.atr.begin(), script.atr.end(), atr) - atr);
    state = script.cardState;
    return 0;
}

Result SCardTransmit(Card card, std::uint32_t protocol, const unsigned char* command, std::uint32_t commandLength,
                     unsigned char* response, std::uint32_t& responseLength)
{
    std::string arguments;
    if (script.calls.size() < callsKept) {
        for (std::uint32_t i = 0; i < commandLength; ++i)
            arguments += (i == 0 ? "" : " ") + hex(command[i]);
        arguments = hex(card) + ", " + to_string(protocol) + ", [" + arguments + "], " + to_string(responseLength);
    }
    const Result result = call("SCardTransmit", arguments);
    const std::size_t copied = std::min<std::size_t>(script.response.size(), responseLength);
    std::copy(script.response.begin(), script.response.begin() + static_cast<std::ptrdiff_t>(copied), response);
    responseLength = script.reportedLength != 0 ? script.reportedLength : static_cast<std::uint32_t>(copied);
    return result;
}

Result SCardGetStatusChangeA(Context context, std::uint32_t timeout, const char* reader, std::uint32_t currentState,
                             std::uint32_t& eventState)
{
    const Result result = call("SCardGetStatusChange", hex(context) + ", " + to_string(timeout) + ", " + reader +
                                                           ", " + to_string(currentState));
    eventState = script.eventState; // also on failure, where the library must not read it
    return result;
}

Result SCardListReadersA(Context context, char*& list, std::uint32_t& length)
{
    const Result result = call("SCardListReaders", hex(context) + ", " + hex(length));
    list = result == 0 ? &script.readerList[0] : nullptr;
    return result;
}

Result SCardFreeMemory(Context context, const void* memory)
{
    return call("SCardFreeMemory", hex(context) + (memory == script.readerList.data() ? ", the list" : ", ?"));
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
