// pcsc against the real PC/SC service: pcscd with the virtual reader driver (started by
// scripts/test.sh) and a virtual ISO 7816 card that this test starts and stops itself.
// The tool's tests exchange units with the same card; the calls' arguments and the
// failures a real service cannot be made to give are in the scripted test.
#include <ovo/io/pcsc.h>

#include "support/virtual_card.h"

#include <gtest/gtest.h>

using namespace ovo::io;
using ovo_test::readerName;

TEST(PcscService, TheCardIsReadWhileItIsThereAndGoneWhenItsProcessStops)
{
    if (!ovo_test::readerListed())
        GTEST_SKIP() << "needs pcscd with the virtual reader '" << readerName
                     << "' (scripts/test.sh installs and starts it)";
    ovo_test::VirtualCard card;
    ASSERT_TRUE(ovo_test::waitForCard(true, std::chrono::seconds(30))) << "the virtual card did not appear";
    pcsc reader(readerName);
    reader.connect();
    std::vector<unsigned char> atr;
    // pcsc-lite reports the card negotiable or specific, depending on its version.
    const CardStatus state = reader.cardStatus(atr);
    EXPECT_TRUE(state == cardNegotiable || state == cardSpecific) << state;
    EXPECT_EQ(atr, (std::vector<unsigned char>{0x3B, 0x95, 0x13, 0x81, 0x01, 0x80, 0x73, 0xFF, 0x01, 0x00, 0x0B}));
    card.stop();
    EXPECT_TRUE(ovo_test::waitForCard(false, std::chrono::seconds(10)));
    EXPECT_FALSE(reader.isCardPresented());
}
