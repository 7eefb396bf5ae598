// pcsc against pcscd with the virtual reader (started by scripts/test.sh) and a virtual card that the test starts and
// stops itself. The tool's tests read its ATR and exchange units with it.
#include <ovo/io/pcsc.h>

#include "support/virtual_card.h"

#include <gtest/gtest.h>

using namespace ovo::io;

TEST(PcscService, TheCardIsReadWhileItIsThereAndGoneWhenItsProcessStops)
{
    OVO_SKIP_WITHOUT_VIRTUAL_READER();
    ovo_test::VirtualCard card;
    ASSERT_TRUE(ovo_test::waitForCard(true, std::chrono::seconds(30))) << "the virtual card did not appear";
    pcsc reader(ovo_test::readerName);
    reader.connect();
    std::vector<unsigned char> atr;
    // pcsc-lite reports the card negotiable or specific, depending on its version.
    const CardStatus state = reader.cardStatus(atr);
    EXPECT_TRUE(state == cardNegotiable || state == cardSpecific) << state;
    EXPECT_EQ(atr, ovo_test::virtualCardAtr);
    card.stop();
    EXPECT_TRUE(ovo_test::waitForCard(false, std::chrono::seconds(10)));
    EXPECT_FALSE(reader.isCardPresented());
}
