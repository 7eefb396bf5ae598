// pcsc and the reader enumeration against the real PC/SC service: pcscd with the virtual
// reader driver (started by scripts/test.sh) and a virtual ISO 7816 card that this test
// starts and stops itself.
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/logger/logger.h>

#include "support/failure_of.h"
#include "support/recording_channel.h"
#include "support/virtual_card.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

using namespace ovo::io;
using Bytes = std::vector<unsigned char>;
using ovo_test::failureOf;
using ovo_test::readerName;

namespace {

class PcscService : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        if (!ovo_test::readerListed())
            return;
        card = std::make_unique<ovo_test::VirtualCard>();
        cardReady = ovo_test::waitForCard(true, std::chrono::seconds(30)); // slow on a loaded machine
    }
    static void TearDownTestSuite() { card.reset(); }

    void SetUp() override
    {
        if (!ovo_test::readerListed())
            GTEST_SKIP() << "needs pcscd with the virtual reader '" << readerName
                         << "' (scripts/test.sh installs and starts it)";
        ASSERT_TRUE(cardReady) << "the virtual card did not appear in the reader";
        const std::string name = std::string("card.") + testing::UnitTest::GetInstance()->current_test_info()->name();
        logger = &ovo::logger::add(name, channel);
        logger->setLevel(1);
    }

    static inline std::unique_ptr<ovo_test::VirtualCard> card;
    static inline bool cardReady = false;
    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger* logger = nullptr;
};

const unsigned char masterFile[] = {0x3F, 0x00};
const unsigned char missingFile[] = {0x12, 0x34};

} // namespace

TEST_F(PcscService, TheReaderIsListedAndItsCardReadWhileConnected)
{
    EXPECT_EQ(enumeratePCSCDevices().at(0), "Virtual PCD 00 00");
    pcsc reader(readerName, *logger);
    EXPECT_TRUE(reader.isCardPresented());
    reader.connect();
    reader.connect();
    std::vector<unsigned char> atr;
    // pcsc-lite reports the card negotiable or specific, depending on its version.
    const CardStatus state = reader.cardStatus(atr);
    EXPECT_TRUE(state == cardNegotiable || state == cardSpecific) << state;
    EXPECT_EQ(atr, (Bytes{0x3B, 0x95, 0x13, 0x81, 0x01, 0x80, 0x73, 0xFF, 0x01, 0x00, 0x0B}));
    reader.disconnect();
    EXPECT_EQ(failureOf([&] { reader.cardStatus(atr); }), "not connected");
    reader.connect();
}

// The card's status words come back in the unit, failures of the card included, and
// each exchange is traced both ways at level 1 and not at all at level 0.
TEST_F(PcscService, ExchangesGiveTheCardsStatusWordsAndAreTraced)
{
    const struct {
        apdu command;
        unsigned int size;
        unsigned char sw1, sw2;
        const char *sent, *received;
    } cases[] = {
        {apdu(0x00, 0xA4, 0x00, 0x0C, 2, masterFile), 2, 0x90, 0x00, "-> 00 A4 00 0C 02 3F 00 ", "<- 90 00 "},
        {apdu(0x00, 0xA4, 0x00, 0x0C, 2, missingFile), 2, 0x6A, 0x82, "-> 00 A4 00 0C 02 12 34 ", "<- 6A 82 "},
        {apdu(0x00, 0x84, 0x00, 0x00, 0x08), 10, 0x90, 0x00, "-> 00 84 00 00 08 ", "<- "}, // 8 random bytes
    };
    pcsc reader(readerName, *logger);
    reader.connect();
    std::size_t traced = 0;
    for (const auto& c : cases) {
        const apdu response = reader.exchange(c.command);
        EXPECT_EQ(response.size(), c.size);
        EXPECT_EQ(response.sw1(), c.sw1);
        EXPECT_EQ(response.sw2(), c.sw2);
        const std::vector<std::string> traces = channel->messages();
        ASSERT_EQ(traces.size(), traced + 2);
        EXPECT_EQ(traces[traced], c.sent);
        EXPECT_EQ(traces[traced + 1].substr(0, std::string(c.received).size()), c.received);
        EXPECT_EQ(traces[traced + 1].size(), 3u + 3u * c.size);
        traced += 2;
    }
    logger->setLevel(0);
    EXPECT_TRUE(reader.exchange(cases[0].command).isSuccess());
    EXPECT_EQ(channel->messages().size(), traced);
}

// Runs last: it takes the card away.
TEST_F(PcscService, TheCardIsGoneWhenItsProcessStops)
{
    pcsc reader(readerName);
    EXPECT_TRUE(reader.isCardPresented());
    card->stop();
    EXPECT_TRUE(ovo_test::waitForCard(false, std::chrono::seconds(10)));
    EXPECT_FALSE(reader.isCardPresented());
}
