// A peer killed inside an operation: processes repeat an operation on shared objects while
// a watcher kills some of them at random moments (SIGKILL; TerminateProcess on Windows) and
// starts them again; once they stop, the invariant must hold. The rows here are the message
// channel's: three senders and three receivers on one channel, the senders, the receivers
// or anyone killed.
#include "ipc/ipc_test.h"
#include "ipc/removal_journal.h"
#include "support/sanitizers.h"

#include <iostream>
#include <map>
#include <random>
#include <set>

namespace {

using ovo_test::ChildProcess;
using ovo_test::Identity;
using ovo_test::Ledger;

struct KilledPeerRow {
    std::string name;
    std::set<std::string> victims; // the roles killed
    unsigned kills;                // fewer where starting a process costs much more
};

void PrintTo(const KilledPeerRow& row, std::ostream* out) { *out << row.name; }

#if defined(_WIN32) || defined(OVO_TEST_SANITIZED)
const unsigned kills = 25;
#else
const unsigned kills = 100;
#endif

const KilledPeerRow rows[] = {
    {"channel_senders_killed", {"sender"}, kills},
    {"channel_receivers_killed", {"receiver"}, kills},
    {"channel_anyone_killed", {"sender", "receiver"}, kills},
};

class KilledPeerTest : public ovo_test::IpcTest, public ::testing::WithParamInterface<KilledPeerRow> {};

// Under Wine a receiver killed inside a removal leaves torn bodies in about two runs of five,
// with every form of the journal: Wine seems to hand the mutex over as abandoned before the
// killed process has stopped. Linux and Windows stop it first, and the repair needs that.
bool underWine()
{
#if defined(_WIN32)
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
#else
    return false;
#endif
}

// Every message a sender committed is received, queued, or dropped by a repair, and each
// only once; nothing else turns up, and no body is torn. What a killed receiver had copied
// out is in its slot: taken by it, unless it turns up elsewhere (the removal had not begun).
TEST_P(KilledPeerTest, EveryMessageCommittedIsReceivedQueuedOrCountedAsDroppedAndNoneIsTorn)
{
    const KilledPeerRow& row = GetParam();
    if (underWine() && row.victims.count("receiver") != 0)
        GTEST_SKIP() << "Wine hands a killed process's mutex over before the process has stopped";
    const std::string channelName = name(row.name);
    ovo::ipc::SharedMemory book(channelName + "-ledger", sizeof(Ledger));
    Ledger& ledger = *static_cast<Ledger*>(book.begin());
    ovo::ipc::MessageChannel channel(channelName, ovo_test::ledgerChannelSize);
    const std::vector<std::string> roles{"sender", "receiver", "sender", "receiver", "sender", "receiver"};
    std::vector<std::unique_ptr<ChildProcess>> processes(roles.size());
    std::vector<std::size_t> slotOf(roles.size()), peerOf; // slot -> peer
    std::vector<bool> killed;                              // slot -> killed
    auto start = [&](std::size_t peer) {
        slotOf[peer] = peerOf.size();
        processes[peer] = std::make_unique<ChildProcess>(
            "ipc_peer", std::vector<std::string>{"ledger-" + roles[peer], channelName, channelName + "-ledger",
                                                 std::to_string(peerOf.size())});
        peerOf.push_back(peer);
        killed.push_back(false);
    };
    for (std::size_t peer = 0; peer < roles.size(); ++peer)
        start(peer);
    std::mt19937 random(std::random_device{}());
    for (unsigned kill = 0; kill < row.kills; ++kill) {
        std::size_t victim = random() % roles.size();
        while (row.victims.count(roles[victim]) == 0)
            victim = (victim + 1) % roles.size();
        // Mostly inside its loop; now and then while it still starts (and joins, and repairs).
        if (random() % 8 != 0) {
            ASSERT_TRUE(ovo_test::waitUntil([&] { return ledger.slots[slotOf[victim]].running != 0; },
                                            std::chrono::seconds(60)));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 10000));
        processes[victim]->kill();
        killed[slotOf[victim]] = true;
        start(victim);
    }
    ledger.stop = 1;
    for (auto& process : processes)
        EXPECT_EQ(process->wait(), 0);

    std::map<Identity, unsigned> found; // received or queued, and how often
    unsigned received = 0, queued = 0, corrupt = ledger.corrupt;
    for (std::uint32_t i = 0; i < ledger.receipts; ++i)
        received += ledger.receipt[i].valid ? ++found[{ledger.receipt[i].slot, ledger.receipt[i].sequence}], 1 : 0;
    std::vector<unsigned char> body;
    for (Identity message; channel.recv(0, body); ++queued) {
        if (ovo_test::bodyIsIntact(body.data(), static_cast<std::uint32_t>(body.size()), message))
            ++found[message];
        else
            ++corrupt;
    }
    std::set<Identity> inHand; // taken by a killed receiver
    for (std::size_t slot = 0; slot < peerOf.size(); ++slot) {
        Identity message;
        std::uint32_t size = 0;
        std::memcpy(&size, ledger.slots[slot].body + 8, 4);
        if (killed[slot] && roles[peerOf[slot]] == "receiver" && size <= ovo_test::maxBody &&
            ovo_test::bodyIsIntact(ledger.slots[slot].body, size, message) && found.count(message) == 0)
            inHand.insert(message);
    }
    unsigned sent = 0, missing = 0, extra = 0;
    for (std::size_t slot = 0; slot < peerOf.size(); ++slot) {
        if (roles[peerOf[slot]] != "sender")
            continue;
        const std::uint32_t committed = ledger.slots[slot].committed; // a killed one's next may be out too
        for (std::uint32_t sequence = 0; sequence < committed + (killed[slot] ? 1 : 0); ++sequence) {
            const Identity message(static_cast<std::uint32_t>(slot), sequence);
            const unsigned times = found.count(message) != 0 ? found[message] : 0;
            const bool there = times != 0 || inHand.count(message) != 0;
            sent += sequence < committed || there ? 1 : 0;
            missing += sequence < committed && !there ? 1 : 0;
            extra += times > 1 ? times - 1 : 0;
            found.erase(message);
        }
    }
    for (const auto& never : found) // never sent
        extra += never.second;
    const ovo::ipc::SharedMemory journal(channelName + "_journal", sizeof(ovo::ipc::RemovalRecord));
    const std::uint32_t dropped = static_cast<const ovo::ipc::RemovalRecord*>(journal.begin())->state >> 1;
    std::cout << std::count(killed.begin(), killed.end(), true) << " kills: sent " << sent << ", received " << received
              << " (and " << inHand.size() << " in killed receivers' hands), queued " << queued << ", dropped "
              << dropped << " (logged " << ledger.loggedDrops << "), missing " << missing << ", corrupt " << corrupt
              << "\n";
    EXPECT_EQ(corrupt, 0u);
    EXPECT_EQ(extra, 0u) << "messages repeated or never sent";
    // A repair drops the message taken (in a killed receiver's hands) and those of at most
    // one window behind it, which are missing then: nothing is lost unaccounted.
    EXPECT_LE(missing, dropped);
    EXPECT_LE(dropped, missing + inHand.size());
    EXPECT_LE(ledger.loggedDrops.load(), dropped) << "a repair logged twice";
}

INSTANTIATE_TEST_SUITE_P(Rows, KilledPeerTest, ::testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

} // namespace
