#include <ovo/io/reader_status.h>

#include "io/scard_failure.h"
#include "platform/pcsc_calls.h"

namespace scard = ovo::platform::scard;

namespace ovo {
namespace io {

namespace {

// The reader states as WinSCard and pcsc-lite both number them.
const std::uint32_t unavailableBit = 0x8, presentBit = 0x20, exclusiveBit = 0x80, inUseBit = 0x100, muteBit = 0x200;

// A service context for one look, released whatever happens.
class Context {
public:
    Context()
    {
        const scard::Result code = scard::SCardEstablishContext(scard::scopeUser, context_);
        if (code != 0)
            failScard("SCardEstablishContext", code);
    }
    ~Context() { scard::SCardReleaseContext(context_); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    operator scard::Context() const { return context_; }

private:
    scard::Context context_ = 0;
};

std::vector<scard::ReaderState> readerList(const Context& context)
{
    char* list = nullptr;
    std::uint32_t length = scard::autoAllocate;
    const scard::Result code = scard::SCardListReadersA(context, list, length);
    if (code == scard::noReadersAvailable)
        return {};
    if (code != 0)
        failScard("SCardListReaders", code);
    std::vector<scard::ReaderState> states;
    for (const char* name = list; name != nullptr && *name != '\0'; name += states.back().reader.size() + 1) {
        states.emplace_back();
        states.back().reader = name;
    }
    scard::SCardFreeMemory(context, list);
    return states;
}

ReaderStatus statusOf(const scard::ReaderState& state)
{
    ReaderStatus status;
    status.reader = state.reader;
    const std::uint32_t bits = state.eventState;
    status.cardPresent = (bits & presentBit) != 0;
    status.exclusive = (bits & exclusiveBit) != 0;
    status.inUse = (bits & inUseBit) != 0;
    status.mute = (bits & muteBit) != 0;
    status.unavailable = (bits & unavailableBit) != 0;
    if (status.cardPresent && !status.mute)
        status.atr = state.atr;
    return status;
}

} // namespace

std::vector<ReaderStatus> readerStatuses()
{
    const Context context;
    // A reader that goes between the list and the look makes the look fail: look again.
    for (int attempt = 1;; ++attempt) {
        std::vector<scard::ReaderState> states = readerList(context);
        if (states.empty())
            return {};
        // States "unaware": the service answers at once with what it knows.
        const scard::Result code = scard::SCardGetStatusChangeA(context, 0, states);
        if (code == scard::unknownReader && attempt < 3)
            continue;
        if (code != 0)
            failScard("SCardGetStatusChange", code);
        std::vector<ReaderStatus> statuses;
        for (const scard::ReaderState& state : states)
            statuses.push_back(statusOf(state));
        return statuses;
    }
}

} // namespace io
} // namespace ovo
