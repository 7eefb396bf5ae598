// Two processes talking through a message channel: one asks, the other answers. Start
// both with the same name, in either order:
//   message_channel answer NAME &
//   message_channel ask NAME
#include <ovo/ipc/message_channel.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

const unsigned int questionId = 1;
const unsigned int answerId = 2;
const unsigned int channelSize = 8192; // the same in every process that joins

//! [poll]
// A receive does not wait: poll for a message of that identifier for up to ten seconds.
bool receive(ovo::ipc::MessageChannel& channel, unsigned int id, std::vector<unsigned char>& message)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!channel.recv(id, message)) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
//! [poll]

bool send(ovo::ipc::MessageChannel& channel, unsigned int id, const std::string& text)
{
    return channel.send(id, text.data(), static_cast<unsigned int>(text.size()));
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3 || (std::strcmp(argv[1], "ask") != 0 && std::strcmp(argv[1], "answer") != 0)) {
        std::fprintf(stderr, "usage: message_channel ask|answer NAME\n");
        return 2;
    }
    //! [join]
    // The first process makes the channel, the second joins it; it lives while either
    // holds it, so each stays until the other has taken its message.
    ovo::ipc::MessageChannel channel(argv[2], channelSize);
    //! [join]
    std::vector<unsigned char> message;
    if (std::strcmp(argv[1], "ask") == 0) {
        if (!send(channel, questionId, "what time is it?") || !receive(channel, answerId, message)) {
            std::fprintf(stderr, "no answer\n");
            return 1;
        }
        std::printf("answer: %s\n", std::string(message.begin(), message.end()).c_str());
        return 0;
    }
    if (!receive(channel, questionId, message)) {
        std::fprintf(stderr, "no question\n");
        return 1;
    }
    std::printf("question: %s\n", std::string(message.begin(), message.end()).c_str());
    send(channel, answerId, "time to answer");
    while (channel.inQueue() != 0) // stays until the answer is taken
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return 0;
}
