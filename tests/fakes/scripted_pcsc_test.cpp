// pcsc and the reader enumeration against scripted PC/SC calls: exact arguments, and the
// answers a real service cannot be made to give.
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/logger/logger.h>

#include "fakes/scripted_pcsc.h"
#include "support/recording_channel.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ovo::io;
using ovo_fake::pcscScript;
using Bytes = std::vector<unsigned char>;
using Calls = std::vector<std::string>;

namespace {

template <typename Call>
void expectFailure(Call call, const std::string& message)
{
    try {
        call();
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(e.what(), message);
    }
}

class ScriptedService : public testing::Test {
protected:
    void SetUp() override
    {
        ovo_fake::resetPcscScript();
        const std::string name = std::string("pcsc.") + testing::UnitTest::GetInstance()->current_test_info()->name();
        logger = &ovo::logger::add(name, channel);
        logger->setLevel(1);
    }

    std::shared_ptr<ovo_test::RecordingChannel> channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger* logger = nullptr;
};

} // namespace

TEST_F(ScriptedService, ContextForTheObjectsLife)
{
    {
        pcsc reader("Reader A 00 00");
        EXPECT_EQ(pcscScript().scope, 0u);
        reader.connect();
    }
    // The destructor releases the context and does not disconnect.
    EXPECT_EQ(pcscScript().calls, (Calls{"SCardEstablishContext", "SCardConnect", "SCardReleaseContext"}));
    EXPECT_EQ(pcscScript().released, 1);

    ovo_fake::resetPcscScript();
    pcscScript().establishResult = 0x8010001Du;
    expectFailure([] { pcsc reader("Reader A 00 00"); }, "SCard error: 0x8010001D");
}

TEST_F(ScriptedService, ConnectAndDisconnectOnlyWhenNeeded)
{
    pcsc reader("Reader A 00 00", *logger);
    reader.disconnect();
    reader.connect();
    reader.connect();
    EXPECT_EQ(pcscScript().reader, "Reader A 00 00");
    EXPECT_EQ(pcscScript().share, 2u);
    EXPECT_EQ(pcscScript().protocols, 3u);
    reader.disconnect();
    reader.disconnect();
    EXPECT_EQ(pcscScript().disposition, 0u);
    EXPECT_EQ(pcscScript().calls, (Calls{"SCardEstablishContext", "SCardConnect", "SCardDisconnect"}));

    pcscScript().connectResult = 0x80100009u;
    expectFailure([&] { reader.connect(); }, "::SCardConnect() failed: SCard error: 0x80100009");
    expectFailure([&] { std::vector<unsigned char> atr; reader.cardStatus(atr); }, "not connected");
}

TEST_F(ScriptedService, ExchangeTracesBothWays)
{
    pcsc reader("Reader A 00 00", *logger);
    reader.connect();
    pcscScript().response = {0x6A, 0x82};
    const apdu response = reader.exchange(apdu(0x00, 0xA4, 0x04, 0x00));
    EXPECT_EQ(Bytes(response.raw(), response.raw() + response.size()), (Bytes{0x6A, 0x82}));
    EXPECT_FALSE(response.isSuccess());
    EXPECT_EQ(pcscScript().command, (Bytes{0x00, 0xA4, 0x04, 0x00}));
    EXPECT_EQ(pcscScript().transmitProtocol, 2u);
    EXPECT_EQ(pcscScript().receiveRoom, 261u);
    EXPECT_EQ(channel->messages(), (std::vector<std::string>{"-> 00 A4 04 00 ", "<- 6A 82 "}));

    logger->setLevel(0);
    pcscScript().response = {0x90, 0x00};
    EXPECT_TRUE(reader.exchange(apdu(0x00, 0xB0, 0x00, 0x00, 0x00)).isSuccess());
    EXPECT_EQ(channel->messages().size(), 2u);
}

TEST_F(ScriptedService, EmptyCommandAndFailedTransmit)
{
    pcsc reader("Reader A 00 00", *logger);
    pcscScript().response = {0x67, 0x00};
    const apdu empty = apdu::fromBuffer(nullptr, 0);
    EXPECT_EQ(reader.exchange(empty).sw1(), 0x67);
    EXPECT_TRUE(pcscScript().command.empty());
    EXPECT_EQ(channel->messages().front(), "-> ");

    // Not connected: the platform's failure, with an over-long length that the trace must
    // not follow past the buffer.
    channel = std::make_shared<ovo_test::RecordingChannel>();
    logger->setChannel(channel);
    pcscScript().transmitResult = 0x80100016u;
    pcscScript().reportedLength = 100000;
    pcscScript().response = Bytes(300, 0xEE);
    expectFailure([&] { reader.exchange(apdu(0x00, 0xA4, 0x04, 0x00)); },
                  "::SCardTransmit() failed: SCard error: 0x80100016");
    ASSERT_EQ(channel->messages().size(), 2u);
    EXPECT_EQ(channel->messages()[1].size(), 3u + 261u * 3u);
}

TEST_F(ScriptedService, CardStatusAndTheAtr)
{
    pcsc reader("Reader A 00 00");
    std::vector<unsigned char> atr{1, 2, 3, 4, 5, 6};
    expectFailure([&] { reader.cardStatus(atr); }, "not connected");
    EXPECT_EQ(atr.size(), 6u);

    reader.connect();
    pcscScript().atr = Bytes{0x3B, 0x88};
    EXPECT_EQ(reader.cardStatus(atr), cardSpecific);
    EXPECT_EQ(atr, (Bytes{0x3B, 0x88})) << "a shorter ATR replaces the vector";
    EXPECT_GE(pcscScript().atrRoom, 33u);
    EXPECT_EQ(pcscScript().nameRoom, 200u);

    pcscScript().atr = Bytes(33, 0x3F); // the longest ATR comes back whole
    EXPECT_EQ(reader.cardStatus(atr), cardSpecific);
    EXPECT_EQ(atr, Bytes(33, 0x3F));

    pcscScript().atr = {};
    pcscScript().cardState = 7;
    EXPECT_EQ(reader.cardStatus(atr), cardUnknown);
    EXPECT_EQ(atr, Bytes(33, 0x3F)) << "an empty ATR leaves the vector alone";

    for (std::uint32_t state : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 100u}) {
        pcscScript().cardState = state;
        EXPECT_EQ(reader.cardStatus(atr), state <= 6 ? static_cast<CardStatus>(state) : cardUnknown);
    }
    pcscScript().statusResult = 0x80100017u;
    expectFailure([&] { reader.cardStatus(atr); }, "::SCardStatus() failed: SCard error: 0x80100017");
}

TEST_F(ScriptedService, CardPresence)
{
    pcsc reader("Reader B 01 00");
    EXPECT_TRUE(reader.isCardPresented());
    EXPECT_EQ(pcscScript().timeout, 0u);
    EXPECT_EQ(pcscScript().currentState, 0u);
    EXPECT_EQ(pcscScript().reader, "Reader B 01 00");
    pcscScript().eventState = 0x12;
    EXPECT_FALSE(reader.isCardPresented());
    pcscScript().eventState = 0x22;
    pcscScript().statusChangeResult = 0x8010002Eu;
    EXPECT_FALSE(reader.isCardPresented()) << "a failing status call answers no card";
}

TEST_F(ScriptedService, Enumeration)
{
    EXPECT_EQ(enumeratePCSCDevices(), (std::vector<std::string>{"Reader A 00 00", "Reader B 01 00"}));
    EXPECT_EQ(pcscScript().listLength, 0xFFFFFFFFu);
    EXPECT_EQ(pcscScript().freed, 1);
    EXPECT_EQ(pcscScript().released, 1);

    ovo_fake::resetPcscScript();
    pcscScript().readerList = std::string(2, '\0');
    EXPECT_TRUE(enumeratePCSCDevices().empty());

    ovo_fake::resetPcscScript();
    pcscScript().listResult = 0x8010002Eu;
    EXPECT_TRUE(enumeratePCSCDevices().empty());
    EXPECT_EQ(pcscScript().calls, (Calls{"SCardEstablishContext", "SCardListReaders", "SCardReleaseContext"}));

    ovo_fake::resetPcscScript();
    pcscScript().establishResult = 0x8010001Du;
    EXPECT_TRUE(enumeratePCSCDevices().empty());
    EXPECT_EQ(pcscScript().calls, Calls{"SCardEstablishContext"});

    EXPECT_TRUE(enumerateSerialDevices().empty());
}
