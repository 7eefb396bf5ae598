#include "ipc/ipc_test.h"
#include "ipc/stress_message.h"

#include <ovo/ipc/message_channel.h>

#include <fstream>
#include <sstream>

namespace {

using ovo::ipc::MessageChannel;
using ovo_test::ChildProcess;
using ovo_test::readFile;
using ovo_test::waitForFile;

const unsigned int channelSize = 65536;

class MessageChannelProcessTest : public ovo_test::IpcTest {};

TEST_F(MessageChannelProcessTest, AProcessThatJoinsFindsTheMessagesQueued)
{
    ChildProcess sender("ipc_peer", {"channel-send", name("queued"), std::to_string(channelSize), "3", file("sent"), file("release")});
    ASSERT_TRUE(waitForFile(file("sent")));
    EXPECT_EQ(readFile(file("sent")), "sent");
    {
        MessageChannel channel(name("queued"), channelSize);
        EXPECT_EQ(channel.inQueue(), 3u);
        std::vector<unsigned char> body;
        ASSERT_TRUE(channel.recv(2, body));
        EXPECT_EQ(std::string(body.begin(), body.end()), "message 2");
        ASSERT_TRUE(channel.recv(0, body));
        EXPECT_EQ(std::string(body.begin(), body.end()), "message 1");
    }
    std::ofstream(file("release")).put('x');
    EXPECT_EQ(sender.wait(), 0);
}

TEST_F(MessageChannelProcessTest, AHolderOfTheLockKilledDoesNotStopTheOthers)
{
    MessageChannel channel(name("crash"), channelSize);
    unsigned char byte = 1;
    ASSERT_TRUE(channel.send(1, &byte, 1));
    ChildProcess holder("ipc_peer", {"hold-mutex", name("crash") + "_lock", file("held"), "-"});
    ASSERT_TRUE(waitForFile(file("held")));
    holder.kill();
    EXPECT_EQ(channel.inQueue(), 1u); // the queue as it was
    ASSERT_TRUE(channel.send(2, &byte, 1));
    EXPECT_TRUE(channel.recv(1, &byte, 1));
    EXPECT_EQ(channel.inQueue(), 1u);
}

TEST_F(MessageChannelProcessTest, AChannelWhoseHoldersWereKilledStartsEmpty)
{
    ChildProcess sender("ipc_peer", {"channel-send", name("killed"), std::to_string(channelSize), "5", file("sent"), "-"});
    ASSERT_TRUE(waitForFile(file("sent")));
    sender.kill();
    MessageChannel channel(name("killed"), channelSize);
    EXPECT_EQ(channel.inQueue(), 0u);
}

std::vector<ovo_test::StressMessage> readLog(const std::string& path)
{
    std::vector<ovo_test::StressMessage> messages;
    std::istringstream in(readFile(path));
    ovo_test::StressMessage m;
    while (in >> m.sender >> m.id >> m.sequence)
        messages.push_back(m);
    return messages;
}

// 2 sender and 2 receiver processes, 100,000 messages of 16 to 512 bytes.
TEST_F(MessageChannelProcessTest, ProcessesExchangeEveryMessageOnceIntactAndInOrder)
{
    const unsigned perSender = 50000;
    MessageChannel keeper(name("stress"), ovo_test::stressChannelSize);
    ChildProcess receiverAny("ipc_peer", {"stress-recv", name("stress"), "0", file("stop"), file("any.log")});
    ChildProcess receiverById("ipc_peer", {"stress-recv", name("stress"), "1", file("stop"), file("byid.log")});
    ChildProcess first("ipc_peer", {"stress-send", name("stress"), "1", std::to_string(perSender), "11"});
    ChildProcess second("ipc_peer", {"stress-send", name("stress"), "2", std::to_string(perSender), "23"});
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    std::ofstream(file("stop")).put('x');
    EXPECT_EQ(receiverAny.wait(), 0);
    EXPECT_EQ(receiverById.wait(), 0);

    std::map<std::vector<std::uint32_t>, unsigned> seen;
    const auto any = readLog(file("any.log"));
    const auto byId = readLog(file("byid.log"));
    EXPECT_TRUE(ovo_test::inSendingOrder(any, seen));
    EXPECT_TRUE(ovo_test::inSendingOrder(byId, seen));
    EXPECT_EQ(any.size() + byId.size(), 2 * perSender);
    EXPECT_EQ(seen.size(), 2 * perSender);
    EXPECT_EQ(keeper.inQueue(), 0u);
}

} // namespace
