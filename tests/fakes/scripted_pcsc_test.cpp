// pcsc, the reader enumeration, the reader states and the card monitor against scripted PC/SC calls: the
// arguments the library passes, and the answers a real service cannot be made to give.
#include <ovo/io/card_monitor.h>
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/io/reader_status.h>
#include <ovo/logger/logger.h>
#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include "fakes/scripted_pcsc.h"
#include "support/failure_of.h"
#include "support/recording_channel.h"

#include <gtest/gtest.h>

using namespace ovo::io;
using ovo_fake::pcscScript;
using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::string>;
using ovo_test::failureOf;

namespace {

const char* const readerA = "Reader A 00 00";

class ScriptedService : public testing::Test {
protected:
    void SetUp() override { ovo_fake::resetPcscScript(); }
};

// The events the monitor has now: "+card A 59.2.20.80" for a card inserted into A.
Texts eventsNow(CardMonitor& monitor)
{
    static const char* const kinds[] = {"+reader ", "-reader ", "+card ", "-card "};
    Texts events;
    for (CardEvent event; monitor.next(event, 0);) {
        events.push_back(kinds[event.kind] + event.reader);
        for (std::size_t i = 0; i < event.atr.size(); ++i)
            events.back() += (i == 0 ? " " : ".") + std::to_string(event.atr[i]);
    }
    return events;
}

} // namespace

TEST_F(ScriptedService, EachOperationMakesItsOneCallWithTheSpecifiedArguments)
{
    std::vector<unsigned char> atr;
    {
        pcsc reader(readerA);
        reader.disconnect();
        reader.connect();
        reader.connect();
        reader.exchange(apdu(0x00, 0xA4, 0x04, 0x00));
        reader.cardStatus(atr);
        reader.isCardPresented();
        reader.disconnect();
        reader.disconnect();
        reader.connect(); // still connected when destroyed: the context goes, no disconnect
    }
    EXPECT_EQ(pcscScript().calls, (Texts{"SCardEstablishContext(0)", "SCardConnect(C0C, Reader A 00 00, 2, 3)",
                                         "SCardTransmit(CA4D, 1, [00 A4 04 00 ], 261)", "SCardStatus(CA4D, 200, 33)",
                                         "SCardGetStatusChange(C0C, 0, Reader A 00 00, 0)", "SCardDisconnect(CA4D, 0)",
                                         "SCardConnect(C0C, Reader A 00 00, 2, 3)", "SCardReleaseContext(C0C)"}));
}

// Each failure names its call and gives the code in eight digits; the connection stays
// as it was. A failed exchange is traced both ways, within its buffer whatever length
// the platform reports.
TEST_F(ScriptedService, FailuresCarryTheCodeAndLeaveTheStateAlone)
{
    const auto channel = std::make_shared<ovo_test::RecordingChannel>();
    ovo::logger::ILogger& logger = ovo::logger::add("pcsc.scripted", channel);
    logger.setLevel(1);
    std::vector<unsigned char> atr{1, 2, 3};
    pcsc reader(readerA, logger);
    EXPECT_EQ(failureOf([&] { reader.cardStatus(atr); }), "not connected");
    auto& failures = pcscScript().failures;
    failures["SCardConnect"] = 0x80100009u;
    EXPECT_EQ(failureOf([&] { reader.connect(); }), "::SCardConnect() failed: SCard error: 0x80100009");
    EXPECT_EQ(failureOf([&] { reader.cardStatus(atr); }), "not connected");
    failures = {{"SCardStatus", 6}, {"SCardTransmit", 0x80100016u}}; // 6: a system code, as Windows may give
    reader.connect();
    EXPECT_EQ(failureOf([&] { reader.cardStatus(atr); }), "::SCardStatus() failed: SCard error: 0x00000006");
    pcscScript().reportedLength = 100000;
    pcscScript().response = Bytes(300, 0xEE);
    EXPECT_EQ(failureOf([&] { reader.exchange(apdu::fromBuffer(nullptr, 0)); }),
              "::SCardTransmit() failed: SCard error: 0x80100016");
    EXPECT_EQ(channel->messages(),
              (Texts{"-> ", "<- " + ovo::NumberFormatter::buffer2stringU2(Bytes(261, 0xEE).data(), 261)}));
    failures = {{"SCardEstablishContext", 0x8010001Du}};
    EXPECT_EQ(failureOf([] { pcsc other(readerA); }), "SCard error: 0x8010001D");
    failures = {{"SCardGetStatusChange", 0x8010002Eu}};
    EXPECT_FALSE(reader.isCardPresented()) << "no answer is no card";
    EXPECT_EQ(atr, (Bytes{1, 2, 3}));
}

TEST_F(ScriptedService, StatesOutsideOneToSixAreUnknownAndAnEmptyAtrKeepsTheVector)
{
    const struct {
        std::uint32_t state;
        Bytes atr;
        CardStatus status;
        Bytes after;
    } cases[] = {
        {1, {0x3B, 0x88}, cardAbsent, {0x3B, 0x88}},         // shorter than before: replaces
        {6, Bytes(33, 0x3F), cardSpecific, Bytes(33, 0x3F)}, // the longest ATR, whole
        {7, {}, cardUnknown, Bytes(33, 0x3F)},               // empty: the vector as it was
        {0, {0x3B}, cardUnknown, {0x3B}},
    };
    pcsc reader(readerA);
    reader.connect();
    std::vector<unsigned char> atr{1, 2, 3, 4, 5, 6};
    for (const auto& c : cases) {
        pcscScript().cardState = c.state;
        pcscScript().atr = c.atr;
        EXPECT_EQ(reader.cardStatus(atr), c.status) << c.state;
        EXPECT_EQ(atr, c.after) << c.state;
    }
    for (std::uint32_t event : {0x22u, 0x20u, 0x12u, 0x10u, 0x02u}) {
        pcscScript().eventState = event;
        EXPECT_EQ(reader.isCardPresented(), event >= 0x20) << event;
    }
}

TEST_F(ScriptedService, EnumerationWalksTheListAndReleasesWhatItTook)
{
    const std::string established = "SCardEstablishContext(0)", listed = "SCardListReaders(C0C, 4294967295)",
                      freed = "SCardFreeMemory(C0C, the list)", released = "SCardReleaseContext(C0C)";
    const struct {
        const char* failing;
        std::string readerList; // "": the script's two readers
        Texts readers, calls;
    } cases[] = {
        {"", "", {readerA, "Reader B 01 00"}, {established, listed, freed, released}},
        {"", std::string(1, '\0'), {}, {established, listed, freed, released}},
        {"SCardListReaders", "", {}, {established, listed, released}},
        {"SCardEstablishContext", "", {}, {established}},
    };
    for (const auto& c : cases) {
        ovo_fake::resetPcscScript();
        pcscScript().failures[c.failing] = 0x8010002Eu;
        if (!c.readerList.empty())
            pcscScript().readerList = c.readerList;
        EXPECT_EQ(enumeratePCSCDevices(), c.readers);
        EXPECT_EQ(pcscScript().calls, c.calls);
    }
}

// What the service's state bits say of each card, and a look that fails as a whole. (An empty
// reader, a card and a card held exclusively: the tool's tests, against the service itself.)
TEST_F(ScriptedService, ReaderStatesTellTheCardFromTheServiceAlone)
{
    const struct {
        std::uint32_t state;
        std::string shown; // present, exclusive, in use, mute, unavailable; the ATR
    } cases[] = {
        {0x122, "P-U-- 3B 02 14 50"},
        {0x222, "P--M-"},
        {0x8, "----N"},
    };
    for (const auto& c : cases) {
        pcscScript().eventState = c.state;
        const std::vector<ReaderStatus> statuses = readerStatuses();
        ASSERT_EQ(statuses.size(), 2u);
        const ReaderStatus& a = statuses[0];
        std::string shown = {a.cardPresent ? 'P' : '-', a.exclusive ? 'X' : '-', a.inUse ? 'U' : '-',
                             a.mute ? 'M' : '-', a.unavailable ? 'N' : '-'};
        for (unsigned char byte : a.atr)
            shown += ovo::format(" %02X", byte);
        EXPECT_EQ(a.reader + ": " + shown, std::string(readerA) + ": " + c.shown);
    }
    EXPECT_EQ(pcscScript().calls.back(), "SCardReleaseContext(C0C)");

    auto& failures = pcscScript().failures;
    failures = {{"SCardListReaders", 0x8010002Eu}};
    EXPECT_TRUE(readerStatuses().empty()) << "no reader is no failure";
    failures = {{"SCardGetStatusChange", 0x80100009u}}; // a reader that went, every time
    EXPECT_EQ(failureOf([] { readerStatuses(); }), "::SCardGetStatusChange() failed: SCard error: 0x80100009");
    failures = {{"SCardEstablishContext", 0x8010001Du}};
    EXPECT_EQ(failureOf([] { readerStatuses(); }), "::SCardEstablishContext() failed: SCard error: 0x8010001D");
}

// next() gives false for a quiet wait and after stop(); stopped() tells which, so a watch loop
// goes on through quiet times and ends at stop().
TEST_F(ScriptedService, TheMonitorGivesEventsInTheOrderOfWhatChangedUntilItStops)
{
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
    pcscScript().failures["SCardGetStatusChange"] = 0x8010000A; // a time-out is no event, and no end
    EXPECT_EQ(eventsNow(monitor), Texts{});
    EXPECT_FALSE(monitor.stopped());

    pcscScript().failures.clear();
    pcscScript().readerList = std::string("A\0B\0\0", 5);
    EXPECT_EQ(eventsNow(monitor).size(), 4u);
    pcscScript().eventState = 0x40022; // a card swapped in each reader: four events at once
    CardEvent event;
    ASSERT_TRUE(monitor.next(event, 0));
    monitor.stop();
    EXPECT_TRUE(monitor.stopped());
    EXPECT_FALSE(monitor.next(event, 0)) << "a stopped monitor hands out nothing more, not even what waits";
}
