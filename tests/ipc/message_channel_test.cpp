#include "ipc/ipc_test.h"
#include "ipc/stress_message.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/shared_memory.h>

#include <atomic>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace {

using ovo::ipc::MessageChannel;
using ovo::ipc::SharedMemory;
using Bytes = std::vector<unsigned char>;

const unsigned int channelSize = 65536;

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

bool send(MessageChannel& channel, unsigned int id, const std::string& body)
{
    std::string copy = body;
    return channel.send(id, &copy[0], static_cast<unsigned int>(copy.size()));
}

// The block as a second process sees it: the same bytes through a SharedMemory of its own.
class BlockView {
public:
    explicit BlockView(const std::string& channelName) : memory_(channelName + "_data", channelSize) {}
    std::uint32_t word(std::size_t offset) const
    {
        std::uint32_t value;
        std::memcpy(&value, static_cast<const char*>(memory_.begin()) + offset, 4);
        return value;
    }
    std::uint32_t count() const { return word(0); }
    // id, size and offset of entry i
    std::vector<std::uint32_t> entry(unsigned i) const { return {word(16 + 16 * i), word(20 + 16 * i), word(24 + 16 * i)}; }
    std::string body(std::size_t offset, std::size_t size) const
    {
        return std::string(static_cast<const char*>(memory_.begin()) + offset, size);
    }

private:
    SharedMemory memory_;
};

class MessageChannelTest : public ovo_test::IpcTest {};

TEST_F(MessageChannelTest, TheBlockIsLaidOutByteForByte)
{
    MessageChannel channel(name("layout"), channelSize);
    BlockView block(name("layout"));
    EXPECT_EQ(channel.inQueue(), 0u);
    ASSERT_TRUE(send(channel, 7, "abc"));
    ASSERT_TRUE(send(channel, 9, "de"));
    EXPECT_EQ(block.count(), 2u);
    EXPECT_EQ(block.entry(0), (std::vector<std::uint32_t>{7, 3, 4113}));
    EXPECT_EQ(block.entry(1), (std::vector<std::uint32_t>{9, 2, 4116}));
    EXPECT_EQ(block.body(4113, 5), "abcde");

    Bytes received;
    ASSERT_TRUE(channel.recv(7, received));
    EXPECT_EQ(received, bytesOf("abc"));
    EXPECT_EQ(block.count(), 1u);
    EXPECT_EQ(block.entry(0), (std::vector<std::uint32_t>{9, 2, 4113}));
    EXPECT_EQ(block.body(4113, 2), "de");
}

TEST_F(MessageChannelTest, TheTableHolds256Messages)
{
    MessageChannel channel(name("full"), channelSize);
    for (unsigned i = 0; i < 256; ++i)
        ASSERT_TRUE(send(channel, 1, "x")) << i;
    EXPECT_FALSE(send(channel, 1, "x"));
    EXPECT_EQ(channel.inQueue(), 256u);
    unsigned char byte;
    ASSERT_TRUE(channel.recv(0, &byte, 1));
    EXPECT_TRUE(send(channel, 1, "y"));
}

TEST_F(MessageChannelTest, ReceiversTakeTheOldestOfTheirIdentifier)
{
    MessageChannel channel(name("select"), channelSize);
    BlockView block(name("select"));
    Bytes received;
    EXPECT_FALSE(channel.recv(0, received));
    ASSERT_TRUE(send(channel, 1, "one-a"));
    ASSERT_TRUE(send(channel, 2, "two"));
    ASSERT_TRUE(send(channel, 1, "one-b"));

    ASSERT_TRUE(channel.recv(2, received));
    EXPECT_EQ(received, bytesOf("two"));
    EXPECT_EQ(block.entry(0), (std::vector<std::uint32_t>{1, 5, 4113}));
    EXPECT_EQ(block.entry(1), (std::vector<std::uint32_t>{1, 5, 4118}));
    EXPECT_EQ(block.body(4113, 10), "one-aone-b");
    ASSERT_TRUE(send(channel, 3, "three"));
    EXPECT_EQ(block.entry(2), (std::vector<std::uint32_t>{3, 5, 4123})); // right behind the others

    received = bytesOf("untouched");
    EXPECT_FALSE(channel.recv(5, received)); // nothing of 5; 0 is no identifier of a message
    EXPECT_EQ(received, bytesOf("untouched"));
    for (const char* expected : {"one-a", "one-b"}) {
        ASSERT_TRUE(channel.recv(1, received));
        EXPECT_EQ(received, bytesOf(expected));
    }
    ASSERT_TRUE(channel.recv(0, received));
    EXPECT_EQ(received, bytesOf("three"));
    EXPECT_EQ(channel.inQueue(), 0u);
}

TEST_F(MessageChannelTest, AnEmptyBodyIsAMessage)
{
    MessageChannel channel(name("empty"), channelSize);
    BlockView block(name("empty"));
    ASSERT_TRUE(send(channel, 4, "ab"));
    ASSERT_TRUE(channel.send(4, nullptr, 0));
    ASSERT_TRUE(channel.send(4, nullptr, 0));
    EXPECT_EQ(channel.inQueue(), 3u);
    EXPECT_EQ(block.entry(1), (std::vector<std::uint32_t>{4, 0, 4115}));

    unsigned char two[2];
    ASSERT_TRUE(channel.recv(4, two, 2));
    unsigned char untouched = 0xEE;
    ASSERT_TRUE(channel.recv(4, &untouched, 0));
    EXPECT_EQ(untouched, 0xEE);
    Bytes received = bytesOf("old");
    ASSERT_TRUE(channel.recv(4, received));
    EXPECT_TRUE(received.empty());
}

TEST_F(MessageChannelTest, TheBufferFormTakesOnlyTheSizeAskedFor)
{
    MessageChannel channel(name("size"), channelSize);
    ASSERT_TRUE(send(channel, 6, "four"));
    ASSERT_TRUE(send(channel, 6, "xyz"));
    char buffer[4] = {};
    EXPECT_FALSE(channel.recv(6, buffer, 3)); // the older one has 4 bytes; the younger waits
    EXPECT_EQ(channel.inQueue(), 2u);
    ASSERT_TRUE(channel.recv(6, buffer, 4));
    EXPECT_EQ(std::string(buffer, 4), "four");
    ASSERT_TRUE(channel.recv(6, buffer, 3));
    EXPECT_EQ(std::string(buffer, 3), "xyz");
}

TEST_F(MessageChannelTest, ANullBodyQueuesWhatTheAreaHeld)
{
    MessageChannel channel(name("null"), channelSize);
    ASSERT_TRUE(send(channel, 1, "held"));
    Bytes received;
    ASSERT_TRUE(channel.recv(1, received));
    ASSERT_TRUE(channel.send(2, nullptr, 4));
    ASSERT_TRUE(channel.recv(2, received));
    EXPECT_EQ(received, bytesOf("held"));
}

TEST_F(MessageChannelTest, ABodyBeyondTheRoomLeftIsRefusedAndChangesNothing)
{
    const unsigned int size = 4113 + 10;
    MessageChannel channel(name("room"), size);
    ASSERT_TRUE(send(channel, 1, "123456"));
    EXPECT_FALSE(send(channel, 2, "12345"));
    EXPECT_EQ(channel.inQueue(), 1u);
    EXPECT_TRUE(send(channel, 3, "1234"));
    EXPECT_TRUE(channel.send(4, nullptr, 0)); // an empty body still fits a full area
}

TEST_F(MessageChannelTest, ABlockSmallerThanTheTableIsRefused)
{
    for (unsigned int size : {0u, 4112u}) {
        try {
            MessageChannel channel(name("small"), size);
            ADD_FAILURE() << size;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()), "MessageChannel( '" + name("small") + "' ): a size of " +
                                                     std::to_string(size) +
                                                     " bytes cannot hold the table; the minimum is 4113");
        }
    }
    MessageChannel smallest(name("small"), 4113);
    EXPECT_TRUE(smallest.send(1, nullptr, 0));
}

TEST_F(MessageChannelTest, AChannelLastsWhileAnyObjectHoldsIt)
{
    {
        MessageChannel first(name("life"), channelSize);
        ASSERT_TRUE(send(first, 1, "kept"));
        MessageChannel second(name("life"), channelSize);
        EXPECT_EQ(second.inQueue(), 1u); // a joiner clears nothing
    }
    MessageChannel fresh(name("life"), channelSize);
    EXPECT_EQ(fresh.inQueue(), 0u);
}

// Two sender and two receiver threads, each with an object of its own on the channel.
TEST_F(MessageChannelTest, ThreadsExchangeEveryMessageOnceIntactAndInOrder)
{
    const unsigned perSender = 10000;
    MessageChannel keeper(name("threads"), ovo_test::stressChannelSize);
    std::atomic<int> sending{2};
    std::vector<std::thread> threads;
    for (std::uint32_t sender = 1; sender <= 2; ++sender)
        threads.emplace_back([&, sender] {
            MessageChannel channel(name("threads"), ovo_test::stressChannelSize);
            ovo_test::sendStress(channel, sender, perSender, sender * 7919);
            --sending;
        });
    std::vector<ovo_test::StressMessage> received[2];
    bool intact[2] = {false, false};
    for (int receiver = 0; receiver < 2; ++receiver)
        threads.emplace_back([&, receiver] {
            MessageChannel channel(name("threads"), ovo_test::stressChannelSize);
            intact[receiver] = ovo_test::receiveStress(channel, receiver == 1, [&] { return sending == 0; }, received[receiver]);
        });
    for (auto& thread : threads)
        thread.join();
    std::map<std::vector<std::uint32_t>, unsigned> seen;
    for (int receiver = 0; receiver < 2; ++receiver) {
        EXPECT_TRUE(intact[receiver]);
        EXPECT_TRUE(ovo_test::inSendingOrder(received[receiver], seen));
    }
    EXPECT_EQ(seen.size(), 2 * perSender);
    EXPECT_TRUE(std::all_of(seen.begin(), seen.end(), [](const auto& s) { return s.second == 1; }));
}

} // namespace
