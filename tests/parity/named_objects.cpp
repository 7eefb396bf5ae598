// Named objects: names, kinds, sizes, abandonment and the last close.
#include "observe.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>

#include <thread>

using namespace ovo::ipc;
using parity::show;
using parity::tagged;
using parity::yesNo;

// A block: the size it sees and whether it made the block.
static std::string seen(const SharedMemory& block)
{
    const auto size = static_cast<char*>(block.end()) - static_cast<char*>(block.begin());
    return std::to_string(size) + (block.isCreated() ? " created" : " joined");
}

int main()
{
    const auto longName = [](std::size_t size) { return tagged(std::string(size - parity::tag.size(), 'n')); };
    for (const std::string& name : {std::string(), tagged("a\\b"), tagged("/../x"), longName(254), longName(255)})
        show("mutex " + parity::quoted(name), [&] { return SystemMutex(name), "made"; });
    for (const auto& sizes : {std::make_pair(100, 100), {100, 4096}, {100, 4097}, {0, 0}})
        show("block of " + std::to_string(sizes.first) + ", joined with " + std::to_string(sizes.second), [&] {
            SharedMemory creator(tagged("b"), sizes.first), joiner(tagged("b"), sizes.second);
            return seen(creator) + ", " + seen(joiner);
        });
    show("mutex on an event's name", [] { return SystemEvent(tagged("k")), SystemMutex(tagged("k")), "made"; });
    show("channel: 1 byte, then beyond the room", [] {
        MessageChannel channel(tagged("q"), 4200);
        unsigned char body[200] = {};
        const bool small = channel.send(1, body, 1), large = channel.send(2, body, 200);
        return yesNo(small) + " " + yesNo(large) + " " + std::to_string(channel.inQueue());
    });
    show("mutex left by a thread that ended", [] {
        SystemMutex mutex(tagged("m"));
        std::thread([&mutex] { mutex.lock(); }).join();
        const bool abandoned = mutex.tryLock(0), next = mutex.tryLock(0);
        return mutex.unlock(), yesNo(abandoned) + " " + yesNo(next);
    });
}
