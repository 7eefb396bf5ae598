/// @file
/// A bounded queue of byte messages that processes share by name.
#ifndef OVO_IPC_MESSAGE_CHANNEL_H
#define OVO_IPC_MESSAGE_CHANNEL_H

#include <ovo/export.h>

#include <string>
#include <type_traits>
#include <vector>

class MessageChannelImpl;

namespace ovo {
namespace ipc {

/// A bounded queue of byte messages that processes share by name.
///
/// The block "<name>_data" of `size` bytes holds a table of up to 256 messages (the first
/// 4113 bytes) and their bodies; the mutex "<name>_lock" guards it. Nothing waits for a
/// message: receivers poll. A process that joined with a smaller size than the creator's
/// sees only the start of the block: it receives nothing (false, the queue unchanged) while
/// the queue reaches past its part, since taking a message moves every body behind it.
/// The layout is shared by every process on the channel:
///   offset 0 count; 16 + 16 * i entry i (id, size, offset from the block's start);
///   4113 the bodies, oldest first, back to back.
///
/// Taking a message moves the bodies and entries behind it. A process that dies inside
/// that move (killed, say) leaves a record of how far it got in "<name>_journal", and the
/// next process to lock the channel is told by the mutex that its holder died: it finishes
/// the removal, or undoes it when nothing had moved yet. No process ever receives a torn
/// body. What such a death may cost is the message being taken and at most the messages
/// that were moving behind it in one step (16 KiB of bodies, or the size of the message
/// taken); the repair logs one line, with what it dropped, to the logger "ovo.ipc.channel".
///
/// Any thread of any process may call any operation at the same time.
///
/// Each process constructs the channel with the same name and size; a receiver polls
/// (from message_channel.cpp):
/// @snippet message_channel.cpp join
/// @snippet message_channel.cpp poll
class OVO_API MessageChannel {
public:
    /// The smallest block that holds the table.
    static constexpr unsigned int minimumSize = 4113;

    /// Creates the channel of that name (empty) or joins it.
    /// @throws std::runtime_error for a size below minimumSize ("MessageChannel( 'NAME' ): a
    ///         size of SIZE bytes cannot hold the table; the minimum is 4113"), and what
    ///         SharedMemory and SystemMutex throw.
    MessageChannel(const std::string& name, unsigned int size);
    /// Leaves the channel; it ends with the last process that holds it.
    ~MessageChannel();

    /// Appends a message of size bytes at data, with id, behind the others.
    /// @return false when the table is full or the body does not fit the room left;
    ///         nothing changes then.
    bool send(unsigned int id, void* data, unsigned int size);
    /// Appends a message from constant bytes (a `const char*`, a `const unsigned char[]`,
    /// a `const void*`), as the other send does.
    ///
    /// It takes pointers to const only, so that every call the other send takes (a `void*`,
    /// a `char*`, nullptr, NULL, 0) still goes there, without ambiguity.
    template <typename Byte, typename std::enable_if<std::is_const<Byte>::value, int>::type = 0>
    bool send(unsigned int id, Byte* data, unsigned int size)
    {
        return sendBody(id, data, size);
    }
    /// Takes the oldest message with this id (0: any message) when its body has exactly
    /// `size` bytes, into data.
    /// @return false, with nothing changed, when there is none or its size differs.
    bool recv(unsigned int id, void* data, unsigned int size);
    /// Takes the oldest message with this id (0: any message), whatever its size, into data.
    /// @return false, with nothing changed, when there is none.
    bool recv(unsigned int id, std::vector<unsigned char>& data);
    /// The number of messages in the queue.
    unsigned int inQueue() const;

private:
    bool sendBody(unsigned int id, const void* data, unsigned int size);

    MessageChannel(const MessageChannel&) = delete;
    MessageChannel& operator=(const MessageChannel&) = delete;

    MessageChannelImpl* impl_;
};

} // namespace ipc
} // namespace ovo

#endif
