// pcsc and the reader enumeration against the real PC/SC service: pcscd with the virtual
// reader driver (started by scripts/test.sh) and a virtual ISO 7816 card that this test
// starts and stops itself.
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/logger/logger.h>

#include "support/recording_channel.h"
#include "support/virtual_card.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ovo::io;
using Bytes = std::vector<unsigned char>;

namespace {

using ovo_test::readerListed;
using ovo_test::readerName;
using ovo_test::VirtualCard;
using ovo_test::waitForCard;

class PcscService : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        if (!readerListed())
            return;
        card = new VirtualCard;
        cardReady = waitForCard(true, std::chrono::seconds(15));
    }
    static void TearDownTestSuite()
    {
        delete card;
        card = nullptr;
    }

    void SetUp() override
    {
        if (!readerListed())
            GTEST_SKIP() << "needs pcscd with the virtual reader '" << readerName
                         << "' (scripts/test.sh installs and starts it)";
        ASSERT_TRUE(cardReady) << "the virtual card did not appear in the reader";
        const std::string name = std::string("card.") + testing::UnitTest::GetInstance()->current_test_info()->name();
        logger = &ovo::logger::add(name, channel);
    }

    static VirtualCard* card;
    static bool cardReady;
    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger* logger = nullptr;
};

VirtualCard* PcscService::card = nullptr;
bool PcscService::cardReady = false;

const unsigned char masterFile[] = {0x3F, 0x00};
const unsigned char missingFile[] = {0x12, 0x34};

} // namespace

TEST_F(PcscService, ReadersAreListedWithTheirBlanks)
{
    const std::vector<std::string> readers = enumeratePCSCDevices();
    ASSERT_GE(readers.size(), 1u);
    EXPECT_EQ(readers[0], "Virtual PCD 00 00");
}

TEST_F(PcscService, ConnectTwiceAndReadTheAtr)
{
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
    reader.connect();
    reader.disconnect();
}

TEST_F(PcscService, ExchangesGiveRealStatusWords)
{
    pcsc reader(readerName, *logger);
    logger->setLevel(1);
    reader.connect();
    const apdu selected = reader.exchange(apdu(0x00, 0xA4, 0x00, 0x0C, 2, masterFile));
    EXPECT_TRUE(selected.isSuccess());
    EXPECT_EQ(selected.size(), 2u);

    const apdu missing = reader.exchange(apdu(0x00, 0xA4, 0x00, 0x0C, 2, missingFile));
    EXPECT_FALSE(missing.isSuccess());
    EXPECT_EQ(missing.sw1(), 0x6A);
    EXPECT_EQ(missing.sw2(), 0x82);

    const apdu unknown = reader.exchange(apdu(0x00, 0xEE, 0x00, 0x00));
    EXPECT_EQ(unknown.sw1(), 0x6D);

    const apdu challenge = reader.exchange(apdu(0x00, 0x84, 0x00, 0x00, 0x08));
    EXPECT_TRUE(challenge.isSuccess());
    EXPECT_EQ(challenge.size(), 10u);
    reader.disconnect();

    const std::vector<std::string> traces = channel->messages();
    ASSERT_EQ(traces.size(), 8u);
    EXPECT_EQ(traces[0], "-> 00 A4 00 0C 02 3F 00 ");
    EXPECT_EQ(traces[1], "<- 90 00 ");
    EXPECT_EQ(traces[2], "-> 00 A4 00 0C 02 12 34 ");
    EXPECT_EQ(traces[3], "<- 6A 82 ");
    EXPECT_EQ(traces[4], "-> 00 EE 00 00 ");
    EXPECT_EQ(traces[5], "<- 6D 00 ");
    EXPECT_EQ(traces[7].size(), 3u + 10u * 3u);
}

TEST_F(PcscService, NoTracesAtLevelZero)
{
    pcsc reader(readerName, *logger);
    reader.connect();
    EXPECT_TRUE(reader.exchange(apdu(0x00, 0xA4, 0x00, 0x0C, 2, masterFile)).isSuccess());
    reader.disconnect();
    EXPECT_TRUE(channel->messages().empty());
}

TEST_F(PcscService, FailuresOfTheService)
{
    pcsc fresh(readerName, *logger);
    logger->setLevel(1);
    try {
        fresh.exchange(apdu(0x00, 0xA4, 0x00, 0x0C, 2, masterFile));
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()).substr(0, 43), "::SCardTransmit() failed: SCard error: 0x80");
    }
    ASSERT_EQ(channel->messages().size(), 2u);
    EXPECT_EQ(channel->messages()[0], "-> 00 A4 00 0C 02 3F 00 ");

    pcsc nowhere("No Such Reader 00 00");
    try {
        nowhere.connect();
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), "::SCardConnect() failed: SCard error: 0x80100009");
    }
    EXPECT_FALSE(nowhere.isCardPresented());
}

// Runs last: it takes the card away.
TEST_F(PcscService, CardGoneWhenItsProcessStops)
{
    pcsc reader(readerName);
    EXPECT_TRUE(reader.isCardPresented());
    card->stop();
    EXPECT_TRUE(waitForCard(false, std::chrono::seconds(10)));
    EXPECT_FALSE(reader.isCardPresented());
}
