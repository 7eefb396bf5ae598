// The card monitor and pcsc against pcscd with the virtual reader (started by scripts/test.sh) and a virtual card
// that the test starts and stops itself. The tool's tests read its ATR and exchange units with it.
#include <ovo/io/card_monitor.h>
#include <ovo/io/pcsc.h>

#include "support/virtual_card.h"

#include <gtest/gtest.h>

using namespace ovo::io;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

TEST(CardService, TheMonitorAndTheReaderSeeTheCardComeAndGoAndAStopEndsAWait)
{
    OVO_SKIP_WITHOUT_VIRTUAL_READER();
    ASSERT_TRUE(ovo_test::waitForCard(false, std::chrono::seconds(10))) << "a card is already in the reader";
    CardMonitor monitor;
    CardEvent event;
    bool readerSeen = false;
    while (monitor.next(event, 200))
        readerSeen = readerSeen || (event.kind == CardEvent::readerAdded && event.reader == ovo_test::readerName);
    EXPECT_TRUE(readerSeen);
    EXPECT_FALSE(monitor.stopped()) << "the time ran out, nobody stopped the monitor";

    ovo_test::VirtualCard card;
    // The card process needs some seconds to start; the service tells at once when it is there.
    ASSERT_TRUE(monitor.next(event, 20000));
    EXPECT_TRUE(event.kind == CardEvent::cardInserted && event.reader == ovo_test::readerName);
    EXPECT_EQ(event.atr, ovo_test::virtualCardAtr);
    pcsc reader(ovo_test::readerName);
    reader.connect();
    std::vector<unsigned char> atr;
    const CardStatus state = reader.cardStatus(atr); // negotiable or specific, by pcsc-lite's version
    EXPECT_TRUE(state == cardNegotiable || state == cardSpecific) << state;
    EXPECT_EQ(atr, ovo_test::virtualCardAtr);

    // Each a wait of next() that another thread ends: the card going, then stop().
    for (const bool stopping : {false, true}) {
        std::thread other(
            [&] { std::this_thread::sleep_for(milliseconds(100)), stopping ? monitor.stop() : card.stop(); });
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(monitor.next(event, 30000), !stopping);
        EXPECT_LT(Clock::now() - start, milliseconds(1100)) << stopping;
        other.join();
        EXPECT_EQ(monitor.stopped(), stopping);
    }
    EXPECT_TRUE(event.kind == CardEvent::cardRemoved && event.reader == ovo_test::readerName);
    EXPECT_FALSE(reader.isCardPresented());
}
