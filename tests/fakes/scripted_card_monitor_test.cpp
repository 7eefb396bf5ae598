// The card monitor against scripted PC/SC calls: readers that come and go, a card swapped
// between two looks and a failing service, which the virtual reader cannot be made to do.
#include <ovo/io/card_monitor.h>

#include "fakes/scripted_pcsc.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using ovo::io::CardEvent;
using ovo::io::CardMonitor;
using ovo_fake::pcscScript;
using Events = std::vector<std::string>;

namespace {

// Every event the monitor has now, as text.
Events eventsNow(CardMonitor& monitor)
{
    static const char* const kinds[] = {"reader added", "reader removed", "card inserted", "card removed"};
    Events events;
    for (CardEvent event; monitor.next(event, 0);) {
        events.push_back(std::string(kinds[event.kind]) + ": " + event.reader);
        for (unsigned char byte : event.atr)
            events.back() += " " + std::to_string(byte);
    }
    return events;
}

TEST(ScriptedCardMonitor, EventsInTheOrderOfWhatChanged)
{
    ovo_fake::resetPcscScript();
    CardMonitor monitor;
    const struct {
        std::string readers;
        std::uint32_t state; // of every reader; the upper half counts insertions and removals
        Events events;
    } steps[] = {
        {std::string("Reader A 00 00\0Reader B 01 00\0", 31), 0x22,
         {"reader added: Reader A 00 00", "reader added: Reader B 01 00", "card inserted: Reader A 00 00 59 2 20 80",
          "card inserted: Reader B 01 00 59 2 20 80"}},
        {std::string("Reader B 01 00\0", 16), 0x22, {"card removed: Reader A 00 00", "reader removed: Reader A 00 00"}},
        {std::string("Reader B 01 00\0", 16), 0x12, {"card removed: Reader B 01 00"}},
        {std::string("Reader B 01 00\0", 16), 0x10022, {"card inserted: Reader B 01 00 59 2 20 80"}},
        {std::string("Reader B 01 00\0", 16), 0x30022,
         {"card removed: Reader B 01 00", "card inserted: Reader B 01 00 59 2 20 80"}},
        {std::string("\0", 1), 0x30022, {"card removed: Reader B 01 00", "reader removed: Reader B 01 00"}},
    };
    for (const auto& step : steps) {
        pcscScript().readerList = step.readers + '\0';
        pcscScript().eventState = step.state;
        EXPECT_EQ(eventsNow(monitor), step.events) << step.readers;
    }
    pcscScript().statusChangeResult = 0x8010000A; // a time-out is no event
    EXPECT_EQ(eventsNow(monitor), Events{});
}

TEST(ScriptedCardMonitor, FailuresOfTheServiceAndStop)
{
    ovo_fake::resetPcscScript();
    pcscScript().establishResult = 0x8010001D;
    try {
        CardMonitor monitor;
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), "::SCardEstablishContext() failed: SCard error: 0x8010001D");
    }

    ovo_fake::resetPcscScript();
    CardMonitor monitor;
    EXPECT_EQ(eventsNow(monitor).size(), 4u);
    pcscScript().statusChangeResult = 0x80100017; // the reader is unavailable
    CardEvent event;
    try {
        monitor.next(event, 0);
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), "::SCardGetStatusChange() failed: SCard error: 0x80100017");
    }

    monitor.stop();
    pcscScript().calls.clear();
    pcscScript().statusChangeResult = 0;
    pcscScript().readerList = std::string("Reader C 02 00\0\0", 16);
    EXPECT_FALSE(monitor.next(event, 1000));
    EXPECT_EQ(pcscScript().calls, Events{}); // not asked: a stopped monitor reports nothing
}

} // namespace
