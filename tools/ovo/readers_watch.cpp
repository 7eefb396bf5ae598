// ovo readers --watch: the readers and cards as they come and go, through the service's
// restarts, until Ctrl-C.
#include "json.h"
#include "shown_text.h"
#include "system_words.h"
#include "tool.h"

#include <ovo/io/card_monitor.h>
#include <ovo/strings.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iostream>
#include <thread>

namespace ovo_tool {
namespace {

// The local time now to the millisecond: "2026-11-23T18:30:00.123".
std::string timestampNow()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millisecond =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    const std::tm local = localTime(seconds);
    char text[24] = {};
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return ovo::format("%s.%03d", text, static_cast<int>(millisecond));
}

// The lines of a watch: "18:30:00.123 card inserted: READER, ATR 3B ...", or a JSON
// object with the whole time. It keeps what it reported, so that a service that goes
// takes its readers and cards with it.
class WatchReport {
public:
    explicit WatchReport(bool json) : json_(json) {}

    void event(const ovo::io::CardEvent& event)
    {
        static const char* const kinds[] = {"reader added", "reader removed", "card inserted", "card removed"};
        const bool inserted = event.kind == ovo::io::CardEvent::cardInserted;
        const std::string atr = hex(event.atr);
        line(kinds[event.kind], "reader", event.reader, inserted ? &atr : nullptr);
        const auto known =
            std::find_if(present_.begin(), present_.end(), [&](const auto& r) { return r.first == event.reader; });
        if (event.kind == ovo::io::CardEvent::readerAdded)
            present_.emplace_back(event.reader, false);
        else if (known != present_.end() && event.kind == ovo::io::CardEvent::readerRemoved)
            present_.erase(known);
        else if (known != present_.end())
            known->second = inserted;
    }

    // The service went: what it reported goes with it, then one line that the watch waits.
    void serviceLost(const std::string& reason)
    {
        const std::vector<std::pair<std::string, bool>> lost = present_;
        for (const auto& [reader, card] : lost) {
            if (card)
                event(ovo::io::CardEvent{ovo::io::CardEvent::cardRemoved, reader, {}});
            event(ovo::io::CardEvent{ovo::io::CardEvent::readerRemoved, reader, {}});
        }
        line("waiting for the service", "reason", reason);
    }

private:
    // "TIME KIND: TEXT[, ATR ...]", or {"time":...,"event":KIND,KEY:TEXT[,"atr":...]}.
    void line(const char* kind, const char* key, const std::string& text, const std::string* atr = nullptr)
    {
        const std::string time = timestampNow();
        if (json_)
            std::cout << "{\"time\":" << jsonString(time) << ",\"event\":" << jsonString(kind) << ",\"" << key
                      << "\":" << jsonString(text) << (atr != nullptr ? ",\"atr\":" + jsonString(*atr) : "") << "}"
                      << std::endl;
        else
            std::cout << time.substr(11) << ' ' << kind << ": " << printable(text)
                      << (atr != nullptr ? ", ATR " + *atr : "") << std::endl;
    }

    bool json_;
    std::vector<std::pair<std::string, bool>> present_; // the readers reported, with a card or not
};

// Waits up to the time, in short steps so that Ctrl-C is seen soon.
void sleepUnlessInterrupted(std::chrono::milliseconds time)
{
    for (auto end = std::chrono::steady_clock::now() + time; !interrupted() && std::chrono::steady_clock::now() < end;)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

} // namespace

int watchReaders(bool json)
{
    watchInterrupts();
    WatchReport report(json);
    bool waiting = false;
    while (!interrupted()) {
        try {
            ovo::io::CardMonitor monitor; // a service back: its first events tell what is there
            // Short waits, so that Ctrl-C is seen soon; each that the service answers ends
            // the waiting for it.
            for (ovo::io::CardEvent event; !interrupted(); waiting = false)
                if (monitor.next(event, 200))
                    report.event(event);
        } catch (const std::exception& error) {
            if (!waiting)
                report.serviceLost(pcscWords(error.what()));
            waiting = true;
            sleepUnlessInterrupted(std::chrono::milliseconds(500));
        }
    }
    return 0;
}

} // namespace ovo_tool
