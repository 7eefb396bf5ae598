// The messages of the channel stress runs: a sender's n-th message has the sender as its
// identifier, 8 to 512 bytes, and every byte a function of the sender, n and its place,
// so that a torn, misplaced or repeated body shows.
#ifndef OVO_TESTS_IPC_STRESS_MESSAGE_H
#define OVO_TESTS_IPC_STRESS_MESSAGE_H

#include <cstdint>
#include <cstring>
#include <vector>

namespace ovo_test {

// Room for a full table of the longest bodies.
const unsigned int stressChannelSize = 4113 + 256 * 512;

inline std::vector<unsigned char> stressBody(std::uint32_t sender, std::uint32_t sequence)
{
    std::vector<unsigned char> body(8 + (sequence * 7919u + sender * 31u) % 505);
    std::memcpy(body.data(), &sender, 4);
    std::memcpy(body.data() + 4, &sequence, 4);
    for (std::size_t i = 8; i < body.size(); ++i)
        body[i] = static_cast<unsigned char>(sender * 131 + sequence * 7 + i);
    return body;
}

} // namespace ovo_test

#endif
