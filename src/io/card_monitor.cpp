#include <ovo/io/card_monitor.h>
#include <ovo/strings.h>

#include "io/scard_failure.h"
#include "platform/pcsc_calls.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <stdexcept>
#include <thread>

namespace scard = ovo::platform::scard;

namespace ovo {
namespace io {

namespace {

bool cardIn(std::uint32_t state) { return (state & scard::statePresent) != 0; }
// The service counts insertions and removals in the upper half of a reader's state.
std::uint32_t cardEvents(std::uint32_t state) { return state >> 16; }

} // namespace

class CardMonitorImpl {
public:
    scard::Context context = 0;
    std::vector<scard::ReaderState> readers; // currentState: what was last reported
    std::deque<CardEvent> pending;
    bool started = false;
    std::atomic<bool> stopping{false};
    std::atomic<bool> waiting{false};

    void push(CardEvent::Kind kind, const std::string& reader, std::vector<unsigned char> atr = {})
    {
        pending.push_back(CardEvent{kind, reader, std::move(atr)});
    }

    // Compares the service's list with the readers known: the new ones are added (state
    // not yet known), the missing ones removed, a card in them first.
    void refreshReaders()
    {
        char* list = nullptr;
        std::uint32_t length = scard::autoAllocate;
        const scard::Result code = scard::SCardListReadersA(context, list, length);
        if (code != 0 && code != scard::noReadersAvailable)
            return; // keep what is known: a failed look says nothing about the readers
        std::vector<std::string> names;
        for (const char* name = list; name != nullptr && *name != '\0'; name += names.back().size() + 1)
            names.emplace_back(name);
        if (list != nullptr)
            scard::SCardFreeMemory(context, list);

        for (auto known = readers.begin(); known != readers.end();) {
            if (std::find(names.begin(), names.end(), known->reader) != names.end()) {
                ++known;
                continue;
            }
            if (cardIn(known->currentState))
                push(CardEvent::cardRemoved, known->reader);
            push(CardEvent::readerRemoved, known->reader);
            known = readers.erase(known);
        }
        for (const std::string& name : names) {
            const bool known = std::any_of(readers.begin(), readers.end(),
                                           [&](const scard::ReaderState& reader) { return reader.reader == name; });
            if (!known) {
                push(CardEvent::readerAdded, name);
                readers.emplace_back();
                readers.back().reader = name;
            }
        }
    }

    void compareCard(scard::ReaderState& known, const scard::ReaderState& now)
    {
        const bool swapped = cardEvents(known.currentState) != cardEvents(now.eventState);
        if (cardIn(known.currentState) && (!cardIn(now.eventState) || swapped))
            push(CardEvent::cardRemoved, known.reader);
        if (cardIn(now.eventState) && (!cardIn(known.currentState) || swapped))
            push(CardEvent::cardInserted, known.reader, now.atr);
        known.currentState = now.eventState & ~scard::stateChanged;
    }

    // One wait of the service for a change of any reader known or of the reader list.
    void waitForChange(std::uint32_t timeoutMs)
    {
        std::vector<scard::ReaderState> states = readers;
        states.emplace_back();
        states.back().reader = scard::plugAndPlayReader;
        states.back().currentState = static_cast<std::uint32_t>(readers.size()) << 16; // the readers it knows

        waiting = true; // before the look at `stopping`, so that stop() cancels this wait
        const scard::Result code =
            stopping ? scard::cancelled : scard::SCardGetStatusChangeA(context, timeoutMs, states);
        waiting = false;
        if (code == scard::cancelled || code == scard::timedOut)
            return;
        if (code != 0 && code != scard::unknownReader)
            failScard("SCardGetStatusChange", code);
        if (code == 0)
            for (std::size_t i = 0; i < readers.size(); ++i)
                if ((states[i].eventState & scard::stateChanged) != 0)
                    compareCard(readers[i], states[i]);
        refreshReaders();
    }
};

CardMonitor::CardMonitor() : impl_(new CardMonitorImpl)
{
    const scard::Result code = scard::SCardEstablishContext(scard::scopeUser, impl_->context);
    if (code != 0)
        failScard("SCardEstablishContext", code);
}

CardMonitor::~CardMonitor() { scard::SCardReleaseContext(impl_->context); }

bool CardMonitor::next(CardEvent& event, unsigned int timeoutMs)
{
    CardMonitorImpl& monitor = *impl_;
    if (!monitor.started) {
        monitor.started = true;
        monitor.refreshReaders();
    }
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (monitor.pending.empty() && !monitor.stopping) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        monitor.waitForChange(static_cast<std::uint32_t>(std::max<long long>(left, 0)));
        if (left <= 0)
            break;
    }
    if (monitor.pending.empty() || monitor.stopping)
        return false;
    event = std::move(monitor.pending.front());
    monitor.pending.pop_front();
    return true;
}

void CardMonitor::stop()
{
    impl_->stopping = true;
    // A cancel that comes just before the wait begins is lost: cancel until it ended.
    while (impl_->waiting) {
        scard::SCardCancel(impl_->context);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

bool CardMonitor::stopped() const { return impl_->stopping; }

} // namespace io
} // namespace ovo
