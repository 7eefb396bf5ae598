// The monitor of readers and cards against the real PC/SC service: pcscd with the virtual
// reader driver (started by scripts/test.sh) and a virtual card that the test starts and
// stops itself.
#include <ovo/io/card_monitor.h>

#include "support/virtual_card.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using ovo::io::CardEvent;
using ovo::io::CardMonitor;
using Clock = std::chrono::steady_clock;

namespace {

class CardMonitorService : public testing::Test {
protected:
    void SetUp() override
    {
        if (!ovo_test::readerListed())
            GTEST_SKIP() << "needs pcscd with the virtual reader '" << ovo_test::readerName
                         << "' (scripts/test.sh installs and starts it)";
        ASSERT_TRUE(ovo_test::waitForCard(false, std::chrono::seconds(10))) << "a card is already in the reader";
    }

    // The events of what is there at the start: the virtual reader among the readers.
    static void expectStartWithTheReader(CardMonitor& monitor)
    {
        bool readerSeen = false;
        for (CardEvent event; monitor.next(event, 200);)
            readerSeen = readerSeen || (event.kind == CardEvent::readerAdded && event.reader == ovo_test::readerName);
        EXPECT_TRUE(readerSeen);
    }
};

TEST_F(CardMonitorService, InsertWithItsAtrAndRemoveWithinASecond)
{
    CardMonitor monitor;
    expectStartWithTheReader(monitor);

    ovo_test::VirtualCard card;
    CardEvent event;
    // The card process needs some seconds to start; the service tells at once when it is there.
    ASSERT_TRUE(monitor.next(event, 20000));
    EXPECT_EQ(event.kind, CardEvent::cardInserted);
    EXPECT_EQ(event.reader, ovo_test::readerName);
    EXPECT_EQ(event.atr, (std::vector<unsigned char>{0x3B, 0x95, 0x13, 0x81, 0x01, 0x80, 0x73, 0xFF, 0x01, 0x00, 0x0B}));

    std::thread remover([&card] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        card.stop();
    });
    const Clock::time_point start = Clock::now();
    const bool removed = monitor.next(event, 3000);
    const auto waited = Clock::now() - start;
    remover.join();
    ASSERT_TRUE(removed);
    EXPECT_EQ(event.kind, CardEvent::cardRemoved);
    EXPECT_EQ(event.reader, ovo_test::readerName);
    EXPECT_TRUE(event.atr.empty());
    EXPECT_LT(waited, std::chrono::milliseconds(1100));
    EXPECT_FALSE(monitor.next(event, 0));
}

TEST_F(CardMonitorService, StopFromAnotherThreadEndsTheWait)
{
    CardMonitor monitor;
    expectStartWithTheReader(monitor);
    std::thread stopper([&monitor] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        monitor.stop();
    });
    const Clock::time_point start = Clock::now();
    CardEvent event;
    EXPECT_FALSE(monitor.next(event, 30000));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
    stopper.join();
}

} // namespace
