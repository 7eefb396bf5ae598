#include "ipc/ipc_test.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/shared_memory.h>

#include <cstring>

namespace {

using ovo::ipc::MessageChannel;
using ovo::ipc::SharedMemory;
using Bytes = std::vector<unsigned char>;
using Entry = std::vector<std::uint32_t>; // id, size, offset

const unsigned int channelSize = 65536;

bool send(MessageChannel& channel, unsigned int id, std::string body)
{
    return channel.send(id, &body[0], static_cast<unsigned int>(body.size()));
}

std::string received(MessageChannel& channel, unsigned int id)
{
    Bytes body;
    return channel.recv(id, body) ? std::string(body.begin(), body.end()) : "(none)";
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
    Entry entry(unsigned i) const { return {word(16 + 16 * i), word(20 + 16 * i), word(24 + 16 * i)}; }
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
    EXPECT_EQ(received(channel, 0), "(none)");
    ASSERT_TRUE(send(channel, 7, "abc"));
    ASSERT_TRUE(send(channel, 9, "de"));
    EXPECT_EQ(block.word(0), 2u);
    EXPECT_EQ(block.entry(0), (Entry{7, 3, 4113}));
    EXPECT_EQ(block.entry(1), (Entry{9, 2, 4116}));
    EXPECT_EQ(block.body(4113, 5), "abcde");
    EXPECT_EQ(received(channel, 7), "abc");
    EXPECT_EQ(block.word(0), 1u);
    EXPECT_EQ(block.entry(0), (Entry{9, 2, 4113}));
    EXPECT_EQ(block.body(4113, 2), "de");
}

TEST_F(MessageChannelTest, ReceiversTakeTheOldestOfTheirIdentifier)
{
    MessageChannel channel(name("select"), channelSize);
    BlockView block(name("select"));
    for (const auto& message : {std::make_pair(1u, "one-a"), std::make_pair(2u, "two"), std::make_pair(1u, "one-b")})
        ASSERT_TRUE(send(channel, message.first, message.second));
    EXPECT_EQ(received(channel, 2), "two");
    EXPECT_EQ(block.entry(1), (Entry{1, 5, 4118}));
    EXPECT_EQ(block.body(4113, 10), "one-aone-b");
    ASSERT_TRUE(send(channel, 3, "three"));
    EXPECT_EQ(block.entry(2), (Entry{3, 5, 4123})); // right behind the others
    EXPECT_EQ(received(channel, 5), "(none)");      // nothing of 5; 0 is no identifier of a message
    for (const auto& expected : {std::make_pair(1u, "one-a"), std::make_pair(1u, "one-b"), std::make_pair(0u, "three")})
        EXPECT_EQ(received(channel, expected.first), expected.second);
    EXPECT_EQ(channel.inQueue(), 0u);
}

TEST_F(MessageChannelTest, TheBufferFormTakesOnlyTheSizeAskedForAndAnEmptyBodyIsAMessage)
{
    MessageChannel channel(name("size"), channelSize);
    BlockView block(name("size"));
    ASSERT_TRUE(send(channel, 6, "four"));
    ASSERT_TRUE(channel.send(6, nullptr, 0));
    ASSERT_TRUE(send(channel, 6, "xyz"));
    EXPECT_EQ(block.entry(1), (Entry{6, 0, 4117}));
    char buffer[4] = {'u', 'n', 't', '.'};
    EXPECT_FALSE(channel.recv(6, buffer, 3)); // the oldest has 4 bytes; the younger waits
    EXPECT_EQ(channel.inQueue(), 3u);
    ASSERT_TRUE(channel.recv(6, buffer, 4));
    EXPECT_EQ(std::string(buffer, 4), "four");
    ASSERT_TRUE(channel.recv(6, buffer, 0));
    EXPECT_EQ(std::string(buffer, 4), "four"); // untouched
    ASSERT_TRUE(channel.send(6, nullptr, 0));
    EXPECT_EQ(received(channel, 6), "xyz");
    EXPECT_EQ(received(channel, 6), "");
    ASSERT_TRUE(channel.send(2, nullptr, 3)); // a null body queues what the area held
    EXPECT_EQ(received(channel, 2), "xyz");
}

TEST_F(MessageChannelTest, SendRefusesWhatDoesNotFitAndChangesNothing)
{
    MessageChannel channel(name("full"), channelSize);
    for (unsigned i = 0; i < 256; ++i)
        ASSERT_TRUE(send(channel, 1, "x")) << i;
    EXPECT_FALSE(send(channel, 1, "x"));
    EXPECT_EQ(channel.inQueue(), 256u);
    EXPECT_EQ(received(channel, 0), "x");
    EXPECT_TRUE(send(channel, 1, "y"));

    MessageChannel small(name("room"), 4113 + 10);
    ASSERT_TRUE(send(small, 1, "123456"));
    EXPECT_FALSE(send(small, 2, "12345"));
    EXPECT_EQ(small.inQueue(), 1u);
    EXPECT_TRUE(send(small, 3, "1234"));
    EXPECT_TRUE(small.send(4, nullptr, 0)); // an empty body still fits a full area
}

TEST_F(MessageChannelTest, ABlockSmallerThanTheTableIsRefused)
{
    for (unsigned int size : {0u, 4112u})
        EXPECT_EQ(ovo_test::thrownBy([&] { MessageChannel channel(name("small"), size); }),
                  "MessageChannel( '" + name("small") + "' ): a size of " + std::to_string(size) +
                      " bytes cannot hold the table; the minimum is 4113");
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
    EXPECT_EQ(MessageChannel(name("life"), channelSize).inQueue(), 0u);
}

} // namespace
