#include "ipc/ipc_test.h"

#include <algorithm>

namespace {

using ovo::ipc::MessageChannel;
using ovo_test::ChildProcess;

const unsigned int channelSize = 65536;

bool send(MessageChannel& c, unsigned id, std::string body)
{
    return c.send(id, &body[0], static_cast<unsigned>(body.size()));
}

std::string received(MessageChannel& channel, unsigned int id)
{
    std::vector<unsigned char> body;
    return channel.recv(id, body) ? std::string(body.begin(), body.end()) : "(none)";
}

// The table (the count, then each entry as id/size@offset) and the bytes of the bodies it
// holds, as a second process sees the block through a SharedMemory of its own.
std::string layout(const std::string& channelName)
{
    const ovo::ipc::SharedMemory memory(channelName + "_data", channelSize);
    const auto* block = static_cast<const char*>(memory.begin());
    std::uint32_t count, entry[3], end = 4113;
    std::memcpy(&count, block, 4);
    std::string text = std::to_string(count) + ":";
    for (std::uint32_t i = 0; i < count && i < 256; ++i) {
        std::memcpy(entry, block + 16 + 16 * i, 12);
        text += " " + std::to_string(entry[0]) + "/" + std::to_string(entry[1]) + "@" + std::to_string(entry[2]);
        end = std::min(std::max(end, entry[1] + entry[2]), channelSize);
    }
    return text + " | " + std::string(block + 4113, end - 4113);
}

class MessageChannelTest : public ovo_test::IpcTest {};

// Receivers take the oldest message of their identifier (0: of any); the gap closes.
TEST_F(MessageChannelTest, TheBlockIsLaidOutByteForByte)
{
    MessageChannel channel(name("layout"), channelSize);
    EXPECT_EQ(received(channel, 0), "(none)");
    for (const auto& message : {std::make_pair(1u, "one-a"), std::make_pair(2u, "two"), std::make_pair(1u, "one-b")})
        ASSERT_TRUE(send(channel, message.first, message.second));
    EXPECT_EQ(layout(name("layout")), "3: 1/5@4113 2/3@4118 1/5@4121 | one-atwoone-b");
    EXPECT_EQ(received(channel, 2), "two");
    EXPECT_EQ(layout(name("layout")), "2: 1/5@4113 1/5@4118 | one-aone-b");
    ASSERT_TRUE(send(channel, 3, "three"));
    EXPECT_EQ(layout(name("layout")), "3: 1/5@4113 1/5@4118 3/5@4123 | one-aone-bthree"); // right behind the others
    EXPECT_EQ(received(channel, 5), "(none)"); // nothing of 5; 0 is no identifier of a message
    for (const auto& expected : {std::make_pair(1u, "one-a"), std::make_pair(1u, "one-b"), std::make_pair(0u, "three")})
        EXPECT_EQ(received(channel, expected.first), expected.second);
}

TEST_F(MessageChannelTest, TheBufferFormTakesOnlyTheSizeAskedForAndAnEmptyBodyIsAMessage)
{
    MessageChannel channel(name("size"), channelSize);
    ASSERT_TRUE(send(channel, 6, "four") && channel.send(6, nullptr, 0) && send(channel, 6, "xyz"));
    char buffer[4] = {};
    EXPECT_FALSE(channel.recv(6, buffer, 3)); // the oldest has 4 bytes; the younger waits
    ASSERT_TRUE(channel.recv(6, buffer, 4) && channel.recv(6, buffer, 0));
    EXPECT_EQ(std::string(buffer, 4), "four"); // untouched by the empty one
    EXPECT_EQ(received(channel, 6), "xyz");
    ASSERT_TRUE(channel.send(2, nullptr, 3)); // a null body queues what the area held
    EXPECT_EQ(received(channel, 2), "xyz");
}

// Constant bodies compile and go through as writable ones do; the calls that took the void*
// form before (a char*, nullptr, NULL, 0) still take it, without ambiguity.
TEST_F(MessageChannelTest, ConstantAndWritableBodiesAlike)
{
    MessageChannel channel(name("const"), channelSize);
    const char text[] = "abc";
    const std::string word = "de";
    const unsigned char bytes[] = {'f', 'g'};
    char writable[] = "hi";
    ASSERT_TRUE(channel.send(1, text, 3) && channel.send(1, word.data(), 2) &&
                channel.send(1, static_cast<const void*>(bytes), 2) && channel.send(1, writable, 2) &&
                channel.send(1, static_cast<void*>(writable), 1) && channel.send(1, nullptr, 0) &&
                channel.send(1, NULL, 0) && channel.send(1, 0, 0));
    for (const char* body : {"abc", "de", "fg", "hi", "h", "", "", ""})
        EXPECT_EQ(received(channel, 1), body);
}

TEST_F(MessageChannelTest, SendRefusesWhatDoesNotFitAndChangesNothing)
{
    MessageChannel channel(name("full"), channelSize);
    for (unsigned i = 0; i < 256; ++i)
        ASSERT_TRUE(send(channel, 1, "x")) << i;
    EXPECT_FALSE(send(channel, 1, "x"));
    EXPECT_EQ(received(channel, 0), "x");
    EXPECT_TRUE(send(channel, 1, "y"));

    MessageChannel small(name("room"), 4113 + 10); // the last: an empty body still fits a full area
    EXPECT_EQ((std::vector<bool>{send(small, 1, "123456"), send(small, 2, "12345"), send(small, 3, "1234"),
                                 small.send(4, nullptr, 0)}),
              (std::vector<bool>{true, false, true, true}));
    for (unsigned int size : {0u, 4112u})
        EXPECT_EQ(ovo_test::failureOf([&] { MessageChannel channel(name("small"), size); }),
                  "MessageChannel( '" + name("small") + "' ): a size of " + std::to_string(size) +
                      " bytes cannot hold the table; the minimum is 4113");
}

// A channel lasts while any process holds it: a joiner finds the queue as it is (also after
// a holder of the lock was killed); after the last holder left, the next one starts empty.
TEST_F(MessageChannelTest, AChannelLastsWhileAnyProcessHoldsIt)
{
    ChildProcess sender("ipc_peer", {"channel-send", name("queued"), "65536", "3", file("sent"), file("exit")});
    ASSERT_TRUE(ovo_test::waitForFile(file("sent")));
    {
        MessageChannel channel(name("queued"), channelSize);
        ChildProcess holder("ipc_peer", {"hold-mutex", name("queued") + "_lock", file("held"), "-"});
        ASSERT_TRUE(ovo_test::waitForFile(file("held")));
        holder.kill();
        EXPECT_EQ(channel.inQueue(), 3u);
        EXPECT_EQ(received(channel, 2), "message 2");
        EXPECT_EQ(received(channel, 0), "message 1");
    }
    release("exit");
    EXPECT_EQ(sender.wait(), 1); // one message left of three
    EXPECT_EQ(MessageChannel(name("queued"), channelSize).inQueue(), 0u);
}

// A process that joined with a smaller size takes nothing while the queue reaches past its
// block (the removal would move bytes it cannot see), and tears nothing for the others.
TEST_F(MessageChannelTest, AProcessWithASmallerViewTakesAllOrNothing)
{
    MessageChannel channel(name("view"), 4113 + 1000);
    ASSERT_TRUE(send(channel, 1, std::string(100, 'a')) && send(channel, 2, std::string(800, 'b')));
    const std::vector<std::string> takeOne{"channel-recv", name("view"), "4313", "1"};
    EXPECT_EQ(ChildProcess("ipc_peer", takeOne).wait(), 1);
    EXPECT_EQ(received(channel, 1), std::string(100, 'a'));
    EXPECT_EQ(received(channel, 2), std::string(800, 'b'));
    ASSERT_TRUE(send(channel, 1, std::string(200, 'c')));
    EXPECT_EQ(ChildProcess("ipc_peer", takeOne).wait(), 0); // within its view
}

} // namespace
