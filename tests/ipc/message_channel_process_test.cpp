#include "ipc/ipc_test.h"
#include "ipc/stress_message.h"

#include <ovo/ipc/message_channel.h>

#include <map>
#include <thread>

namespace {

using ovo::ipc::MessageChannel;
using ovo_test::ChildProcess;
using ovo_test::waitForFile;
using Bytes = std::vector<unsigned char>;

const unsigned int channelSize = 65536;

std::string received(MessageChannel& channel, unsigned int id)
{
    Bytes body;
    return channel.recv(id, body) ? std::string(body.begin(), body.end()) : "(none)";
}

class MessageChannelProcessTest : public ovo_test::IpcTest {};

TEST_F(MessageChannelProcessTest, AProcessThatJoinsFindsTheMessagesQueued)
{
    ChildProcess sender("ipc_peer", {"channel-send", name("queued"), std::to_string(channelSize), "3", file("sent"), file("exit")});
    ASSERT_TRUE(waitForFile(file("sent")));
    {
        MessageChannel channel(name("queued"), channelSize);
        EXPECT_EQ(channel.inQueue(), 3u);
        EXPECT_EQ(received(channel, 2), "message 2");
        EXPECT_EQ(received(channel, 0), "message 1");
    }
    release("exit");
    EXPECT_EQ(sender.wait(), 1); // one message left of three
}

// A killed holder of the lock leaves the queue as it was; a channel whose every holder
// was killed starts empty.
TEST_F(MessageChannelProcessTest, KilledHoldersStopNobody)
{
    MessageChannel channel(name("crash"), channelSize);
    unsigned char byte = 1;
    ASSERT_TRUE(channel.send(1, &byte, 1));
    ChildProcess holder("ipc_peer", {"hold-mutex", name("crash") + "_lock", file("held"), "-"});
    ASSERT_TRUE(waitForFile(file("held")));
    holder.kill();
    EXPECT_EQ(channel.inQueue(), 1u);
    ASSERT_TRUE(channel.send(2, &byte, 1));
    EXPECT_TRUE(channel.recv(1, &byte, 1));

    ChildProcess sender("ipc_peer", {"channel-send", name("killed"), std::to_string(channelSize), "5", file("sent"), "-"});
    ASSERT_TRUE(waitForFile(file("sent")));
    sender.kill();
    EXPECT_EQ(MessageChannel(name("killed"), channelSize).inQueue(), 0u);
}

// A process that joined with a smaller size takes nothing while the queue reaches past its
// block (the removal would move bytes it cannot see), and tears nothing for the others.
TEST_F(MessageChannelProcessTest, AProcessWithASmallerViewTakesAllOrNothing)
{
    MessageChannel channel(name("view"), 4113 + 1000);
    const std::string first(100, 'a'), second(800, 'b');
    for (const auto& message : {std::make_pair(1u, first), std::make_pair(2u, second)})
        ASSERT_TRUE(channel.send(message.first, const_cast<char*>(message.second.data()), message.second.size()));
    EXPECT_EQ(ChildProcess("ipc_peer", {"channel-recv", name("view"), "4313", "1"}).wait(), 1);
    EXPECT_EQ(received(channel, 1), first);
    EXPECT_EQ(ChildProcess("ipc_peer", {"channel-recv", name("view"), "4313", "1"}).wait(), 1); // nothing of 1
    EXPECT_EQ(received(channel, 2), second);
    ASSERT_TRUE(channel.send(3, const_cast<char*>(first.data()), first.size()));
    EXPECT_EQ(ChildProcess("ipc_peer", {"channel-recv", name("view"), "4313", "3"}).wait(), 0); // within its view
}

// Two sender processes, 100,000 messages; this process takes them, the oldest of any or
// of one sender in turn (so also from the middle of the queue).
TEST_F(MessageChannelProcessTest, ProcessesExchangeEveryMessageOnceIntactAndInOrder)
{
    const unsigned perSender = 50000;
    MessageChannel channel(name("stress"), ovo_test::stressChannelSize);
    ChildProcess first("ipc_peer", {"stress-send", name("stress"), "1", std::to_string(perSender)});
    ChildProcess second("ipc_peer", {"stress-send", name("stress"), "2", std::to_string(perSender)});
    std::map<std::uint32_t, std::uint32_t> next{{1, 0}, {2, 0}}; // the sequence due of each sender
    Bytes body;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(90);
    for (unsigned turn = 0; next[1] + next[2] < 2 * perSender && std::chrono::steady_clock::now() < end; ++turn) {
        const unsigned id = turn % 3; // any, sender 1 or sender 2
        if (!channel.recv(id, body)) {
            std::this_thread::yield();
            continue;
        }
        std::uint32_t sender = 0, sequence = 0;
        std::memcpy(&sender, body.data(), body.size() >= 4 ? 4 : 0);
        std::memcpy(&sequence, body.data() + 4, body.size() >= 8 ? 4 : 0);
        ASSERT_TRUE(next.count(sender) == 1 && (id == 0 || id == sender)) << turn;
        ASSERT_EQ(sequence, next[sender]) << "sender " << sender;
        ASSERT_EQ(body, ovo_test::stressBody(sender, sequence)) << "torn: sender " << sender << ", message " << sequence;
        ++next[sender];
    }
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_EQ(next[1] + next[2], 2 * perSender);
    EXPECT_EQ(channel.inQueue(), 0u);
}

} // namespace
