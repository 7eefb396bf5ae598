// The PC/SC calls (WinSCard) behind one seam, with types of fixed width: pcsc-lite's
// DWORD and LONG are `unsigned long` and `long` (64 bits on Linux), so they stay inside
// pcsc_calls.cpp, which converts at the boundary. A test build links scripted calls in
// place of the provider (tests/fakes/scripted_pcsc.cpp).
#ifndef OVO_SRC_PLATFORM_PCSC_CALLS_H
#define OVO_SRC_PLATFORM_PCSC_CALLS_H

#include <cstdint>
#include <string>
#include <vector>

namespace ovo {
namespace platform {
namespace scard {

using Context = std::intptr_t; // SCARDCONTEXT
using Card = std::intptr_t;    // SCARDHANDLE
using Result = std::uint32_t;  // 0 for success, else the SCARD_E_ / SCARD_W_ code

const std::uint32_t scopeUser = 0;          // SCARD_SCOPE_USER
const std::uint32_t shareShared = 2;        // SCARD_SHARE_SHARED
const std::uint32_t protocolT0orT1 = 3;     // SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1
const std::uint32_t leaveCard = 0;          // SCARD_LEAVE_CARD
const std::uint32_t stateUnaware = 0;       // SCARD_STATE_UNAWARE
const std::uint32_t statePresent = 0x20;    // SCARD_STATE_PRESENT
const std::uint32_t autoAllocate = 0xFFFFFFFFu; // SCARD_AUTOALLOCATE
const std::uint32_t stateChanged = 0x2;     // SCARD_STATE_CHANGED
// Results of a wait that are no failure of the service.
const Result cancelled = 0x80100002u;          // SCARD_E_CANCELLED
const Result timedOut = 0x8010000Au;           // SCARD_E_TIMEOUT
const Result unknownReader = 0x80100009u;      // SCARD_E_UNKNOWN_READER
const Result noReadersAvailable = 0x8010002Eu; // SCARD_E_NO_READERS_AVAILABLE
// The reader whose state changes when readers come and go.
const char* const plugAndPlayReader = "\\\\?PnP?\\Notification";

// One reader's state in a wait on several: what the caller knows, what came back, and
// the ATR of a card that is there.
struct ReaderState {
    std::string reader;
    std::uint32_t currentState = stateUnaware;
    std::uint32_t eventState = 0;
    std::vector<unsigned char> atr;
};

Result SCardEstablishContext(std::uint32_t scope, Context& context);
Result SCardReleaseContext(Context context);
Result SCardConnectA(Context context, const char* reader, std::uint32_t shareMode, std::uint32_t protocols,
                     Card& card, std::uint32_t& activeProtocol);
Result SCardDisconnect(Card card, std::uint32_t disposition);
// names/atr are buffers of the given lengths, which come back as the platform set them.
Result SCardStatusA(Card card, char* names, std::uint32_t& namesLength, std::uint32_t& state,
                    std::uint32_t& protocol, unsigned char* atr, std::uint32_t& atrLength);
// The send header carries the protocol (and its own size); no receive header.
Result SCardTransmit(Card card, std::uint32_t protocol, const unsigned char* command, std::uint32_t commandLength,
                     unsigned char* response, std::uint32_t& responseLength);
// One reader state, no waiting beyond the time-out; eventState comes back.
Result SCardGetStatusChangeA(Context context, std::uint32_t timeout, const char* reader,
                             std::uint32_t currentState, std::uint32_t& eventState);
// Several readers at once; eventState and atr come back for each.
Result SCardGetStatusChangeA(Context context, std::uint32_t timeout, std::vector<ReaderState>& states);
// Ends a wait of SCardGetStatusChangeA on the context, from another thread.
Result SCardCancel(Context context);
// All groups; the list is allocated by the service (length SCARD_AUTOALLOCATE).
Result SCardListReadersA(Context context, char*& list, std::uint32_t& length);
Result SCardFreeMemory(Context context, const void* memory);

} // namespace scard
} // namespace platform
} // namespace ovo

#endif
