// The messages of the channel stress runs: each body carries its sender, identifier,
// sequence number (per sender and identifier) and a checksum of all that comes before it.
#ifndef OVO_TESTS_IPC_STRESS_MESSAGE_H
#define OVO_TESTS_IPC_STRESS_MESSAGE_H

#include <ovo/ipc/message_channel.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace ovo_test {

const unsigned int stressIdentifiers = 16;
const std::size_t stressMaxBody = 512;
// Room for a full table of the longest bodies.
const unsigned int stressChannelSize = 4113 + 256 * stressMaxBody;

struct StressMessage {
    std::uint32_t sender;
    std::uint32_t id;
    std::uint32_t sequence;
};

inline std::uint32_t checksum(const unsigned char* bytes, std::size_t size)
{
    std::uint32_t hash = 2166136261u;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ bytes[i]) * 16777619u;
    return hash;
}

// Sends `count` messages of random identifiers and lengths (header and checksum
// included, 16 to 512 bytes), retrying while the channel is full.
inline void sendStress(ovo::ipc::MessageChannel& channel, std::uint32_t sender, unsigned count, unsigned seed)
{
    std::mt19937 random(seed);
    std::map<std::uint32_t, std::uint32_t> sequences;
    std::vector<unsigned char> body;
    for (unsigned n = 0; n < count; ++n) {
        const std::uint32_t id = 1 + random() % stressIdentifiers;
        const StressMessage header{sender, id, sequences[id]++};
        body.resize(sizeof header + random() % (stressMaxBody - sizeof header - 4 + 1) + 4);
        std::memcpy(body.data(), &header, sizeof header);
        for (std::size_t i = sizeof header; i + 4 < body.size(); ++i)
            body[i] = static_cast<unsigned char>(random());
        const std::uint32_t sum = checksum(body.data(), body.size() - 4);
        std::memcpy(body.data() + body.size() - 4, &sum, 4);
        while (!channel.send(id, body.data(), static_cast<unsigned int>(body.size())))
            std::this_thread::yield();
    }
}

// The header of an intact body received for `id` (0: any); false when the body is torn.
inline bool readStress(const std::vector<unsigned char>& body, unsigned int id, StressMessage& message)
{
    if (body.size() < sizeof message + 4)
        return false;
    std::uint32_t sum;
    std::memcpy(&sum, body.data() + body.size() - 4, 4);
    std::memcpy(&message, body.data(), sizeof message);
    return sum == checksum(body.data(), body.size() - 4) && (id == 0 || message.id == id);
}

// Checks one receiver's messages in the order received: per sender and identifier the
// sequence numbers only grow. Adds them to `seen` (how often each arrived).
inline bool inSendingOrder(const std::vector<StressMessage>& received,
                           std::map<std::vector<std::uint32_t>, unsigned>& seen)
{
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::int64_t> last;
    bool ordered = true;
    for (const StressMessage& m : received) {
        auto& previous = last.emplace(std::make_pair(m.sender, m.id), -1).first->second;
        ordered = ordered && std::int64_t(m.sequence) > previous;
        previous = m.sequence;
        ++seen[{m.sender, m.id, m.sequence}];
    }
    return ordered;
}

// Takes messages until `done()` holds and the queue is empty; false on a torn body. A
// receiver by identifier cycles through them all, one recv each, instead of asking for any.
template <typename Done>
bool receiveStress(ovo::ipc::MessageChannel& channel, bool byIdentifier, Done done, std::vector<StressMessage>& received)
{
    std::vector<unsigned char> body;
    unsigned next = 0;
    for (;;) {
        const unsigned int id = byIdentifier ? 1 + next++ % stressIdentifiers : 0;
        if (channel.recv(id, body)) {
            StressMessage message;
            if (!readStress(body, id, message))
                return false;
            received.push_back(message);
        } else if (done() && channel.inQueue() == 0) {
            return true;
        } else if (id == 0 || id == stressIdentifiers) {
            std::this_thread::yield();
        }
    }
}

} // namespace ovo_test

#endif
