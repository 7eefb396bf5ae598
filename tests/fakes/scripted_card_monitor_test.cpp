// The card monitor against scripted PC/SC calls: what the virtual reader cannot be made to do.
#include <ovo/io/card_monitor.h>

#include "fakes/scripted_pcsc.h"
#include "support/failure_of.h"

#include <gtest/gtest.h>

using ovo::io::CardMonitor;
using ovo_fake::pcscScript;
using ovo_test::failureOf;
using Texts = std::vector<std::string>;

namespace {

// The events the monitor has now: "+card A 59.2.20.80" for a card inserted into A.
Texts eventsNow(CardMonitor& monitor)
{
    static const char* const kinds[] = {"+reader ", "-reader ", "+card ", "-card "};
    Texts events;
    for (ovo::io::CardEvent event; monitor.next(event, 0);) {
        events.push_back(kinds[event.kind] + event.reader);
        for (std::size_t i = 0; i < event.atr.size(); ++i)
            events.back() += (i == 0 ? " " : ".") + std::to_string(event.atr[i]);
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
        Texts events;
    } steps[] = {
        {std::string("A\0B\0", 4), 0x22, {"+reader A", "+reader B", "+card A 59.2.20.80", "+card B 59.2.20.80"}},
        {std::string("B\0", 2), 0x22, {"-card A", "-reader A"}},
        {std::string("B\0", 2), 0x12, {"-card B"}},
        {std::string("B\0", 2), 0x10022, {"+card B 59.2.20.80"}},
        {std::string("B\0", 2), 0x30022, {"-card B", "+card B 59.2.20.80"}}, // swapped
        {std::string(), 0x30022, {"-card B", "-reader B"}},
    };
    for (const auto& step : steps) {
        pcscScript().readerList = step.readers + '\0';
        pcscScript().failures["SCardListReaders"] = step.readers.empty() ? 0x8010002E : 0; // the service's "no readers"
        pcscScript().eventState = step.state;
        EXPECT_EQ(eventsNow(monitor), step.events) << step.readers;
    }
    pcscScript().failures["SCardGetStatusChange"] = 0x8010000A; // a time-out is no event
    EXPECT_EQ(eventsNow(monitor), Texts{});
}

// next() gives false for a quiet wait and after stop(); stopped() tells which, so a watch loop
// goes on through quiet times and ends at stop().
TEST(ScriptedCardMonitor, StoppedTellsTheEndFromAQuietWait)
{
    ovo_fake::resetPcscScript();
    CardMonitor monitor;
    ovo::io::CardEvent event;
    EXPECT_EQ(eventsNow(monitor).size(), 4u);
    pcscScript().failures["SCardGetStatusChange"] = 0x8010000A; // the wait timed out
    EXPECT_FALSE(monitor.next(event, 0));
    EXPECT_FALSE(monitor.stopped());

    pcscScript().failures.clear();
    pcscScript().eventState = 0x10022; // a card swapped in each reader: four events
    ASSERT_TRUE(monitor.next(event, 0));
    monitor.stop();
    EXPECT_TRUE(monitor.stopped());
    EXPECT_FALSE(monitor.next(event, 0)) << "a stopped monitor hands out nothing more, not even what waits";
}

TEST(ScriptedCardMonitor, FailuresOfTheServiceAreReported)
{
    ovo_fake::resetPcscScript();
    pcscScript().failures["SCardEstablishContext"] = 0x8010001D;
    EXPECT_EQ(failureOf([] { CardMonitor monitor; }), "::SCardEstablishContext() failed: SCard error: 0x8010001D");

    ovo_fake::resetPcscScript();
    CardMonitor monitor;
    EXPECT_EQ(eventsNow(monitor).size(), 4u);
    pcscScript().failures["SCardGetStatusChange"] = 0x80100017; // the reader is unavailable
    EXPECT_EQ(failureOf([&] { eventsNow(monitor); }), "::SCardGetStatusChange() failed: SCard error: 0x80100017");
}

} // namespace
