// The PC/SC provider: WinSCard on Windows, pcsc-lite elsewhere (no A suffixes there,
// and DWORD/LONG of the width of `long`).
#include "platform/pcsc_calls.h"

#include <algorithm>

#if defined(_WIN32)
#  define WIN32_LEAN_AND_MEAN
#  include <windows.h>
#  include <winscard.h>
#  define OVO_SCARD(name) name##A
#else
#  include <PCSC/winscard.h>
#  define OVO_SCARD(name) name
#endif

namespace ovo {
namespace platform {
namespace scard {

namespace {

Result result(LONG code) { return static_cast<Result>(code); }

// The card state as WinSCard numbers it (0 unknown to 6 specific). pcsc-lite reports the
// same states as bits (SCARD_UNKNOWN 0x01 to SCARD_SPECIFIC 0x40): the highest one counts.
std::uint32_t cardState(DWORD state)
{
#if defined(_WIN32)
    return static_cast<std::uint32_t>(state);
#else
    std::uint32_t number = 0;
    for (std::uint32_t bit = 1; bit <= 6; ++bit)
        if ((state & (DWORD{1} << bit)) != 0)
            number = bit;
    return number;
#endif
}

} // namespace

Result SCardEstablishContext(std::uint32_t scope, Context& context)
{
    SCARDCONTEXT established = 0;
    const LONG code = ::SCardEstablishContext(scope, nullptr, nullptr, &established);
    context = static_cast<Context>(established);
    return result(code);
}

Result SCardReleaseContext(Context context) { return result(::SCardReleaseContext(static_cast<SCARDCONTEXT>(context))); }

Result SCardConnectA(Context context, const char* reader, std::uint32_t shareMode, std::uint32_t protocols,
                     Card& card, std::uint32_t& activeProtocol)
{
    SCARDHANDLE handle = 0;
    DWORD protocol = 0;
    const LONG code =
        OVO_SCARD(::SCardConnect)(static_cast<SCARDCONTEXT>(context), reader, shareMode, protocols, &handle, &protocol);
    card = static_cast<Card>(handle);
    activeProtocol = static_cast<std::uint32_t>(protocol);
    return result(code);
}

Result SCardDisconnect(Card card, std::uint32_t disposition)
{
    return result(::SCardDisconnect(static_cast<SCARDHANDLE>(card), disposition));
}

Result SCardStatusA(Card card, char* names, std::uint32_t& namesLength, std::uint32_t& state,
                    std::uint32_t& protocol, unsigned char* atr, std::uint32_t& atrLength)
{
    DWORD nameBytes = namesLength;
    DWORD cardState = state;
    DWORD cardProtocol = protocol;
    DWORD atrBytes = atrLength;
    const LONG code = OVO_SCARD(::SCardStatus)(static_cast<SCARDHANDLE>(card), names, &nameBytes, &cardState,
                                               &cardProtocol, atr, &atrBytes);
    namesLength = static_cast<std::uint32_t>(nameBytes);
    state = ovo::platform::scard::cardState(cardState);
    protocol = static_cast<std::uint32_t>(cardProtocol);
    atrLength = static_cast<std::uint32_t>(atrBytes);
    return result(code);
}

Result SCardTransmit(Card card, std::uint32_t protocol, const unsigned char* command, std::uint32_t commandLength,
                     unsigned char* response, std::uint32_t& responseLength)
{
    SCARD_IO_REQUEST header;
    header.dwProtocol = protocol;
    header.cbPciLength = sizeof header;
    DWORD received = responseLength;
    const LONG code = ::SCardTransmit(static_cast<SCARDHANDLE>(card), &header, command, commandLength, nullptr,
                                      response, &received);
    responseLength = static_cast<std::uint32_t>(received);
    return result(code);
}

Result SCardGetStatusChangeA(Context context, std::uint32_t timeout, const char* reader,
                             std::uint32_t currentState, std::uint32_t& eventState)
{
#if defined(_WIN32)
    SCARD_READERSTATEA state = {};
#else
    SCARD_READERSTATE state = {};
#endif
    state.szReader = reader;
    state.pvUserData = nullptr;
    state.dwCurrentState = currentState;
    const LONG code = OVO_SCARD(::SCardGetStatusChange)(static_cast<SCARDCONTEXT>(context), timeout, &state, 1);
    eventState = static_cast<std::uint32_t>(state.dwEventState);
    return result(code);
}

Result SCardGetStatusChangeA(Context context, std::uint32_t timeout, std::vector<ReaderState>& states)
{
#if defined(_WIN32)
    std::vector<SCARD_READERSTATEA> platformStates(states.size());
#else
    std::vector<SCARD_READERSTATE> platformStates(states.size());
#endif
    for (std::size_t i = 0; i < states.size(); ++i) {
        platformStates[i].szReader = states[i].reader.c_str();
        platformStates[i].dwCurrentState = states[i].currentState;
    }
    const LONG code = OVO_SCARD(::SCardGetStatusChange)(static_cast<SCARDCONTEXT>(context), timeout,
                                                         platformStates.data(), static_cast<DWORD>(states.size()));
    for (std::size_t i = 0; i < states.size(); ++i) {
        const auto& reported = platformStates[i];
        states[i].eventState = static_cast<std::uint32_t>(reported.dwEventState);
        const std::size_t atrLength = std::min<std::size_t>(reported.cbAtr, sizeof reported.rgbAtr);
        states[i].atr.assign(reported.rgbAtr, reported.rgbAtr + atrLength);
    }
    return result(code);
}

Result SCardCancel(Context context) { return result(::SCardCancel(static_cast<SCARDCONTEXT>(context))); }

Result SCardListReadersA(Context context, char*& list, std::uint32_t& length)
{
    LPSTR names = nullptr;
    DWORD size = SCARD_AUTOALLOCATE;
    const LONG code =
        OVO_SCARD(::SCardListReaders)(static_cast<SCARDCONTEXT>(context), nullptr, reinterpret_cast<LPSTR>(&names), &size);
    list = names;
    length = static_cast<std::uint32_t>(size);
    return result(code);
}

Result SCardFreeMemory(Context context, const void* memory)
{
    return result(::SCardFreeMemory(static_cast<SCARDCONTEXT>(context), memory));
}

} // namespace scard
} // namespace platform
} // namespace ovo
