// The other process of the inter-process tests. Each command takes its objects, leaves
// a file as its sign that it got so far, and then waits for a file that lets it go (or
// for the kill that ends it); its exit status is its answer.
#include "ipc/stress_message.h"
#include "support/child_process.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>
#include <ovo/number_parser.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

namespace {

void signal(const std::string& file, const std::string& text = std::string())
{
    const std::string temporary = file + ".part";
    std::ofstream(temporary) << text;
    std::filesystem::rename(temporary, file); // whole, or not there
}

// "-" waits for ever (for the kill).
void waitFor(const std::string& file)
{
    while (file == "-" || !std::filesystem::exists(file))
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

unsigned number(const std::string& text) { return static_cast<unsigned>(ovo::NumberParser::parseUInt32(text)); }

int run(const std::vector<std::string>& a)
{
    const std::string& command = a.at(0);
    if (command == "hold-mutex") { // NAME READY RELEASE
        ovo::ipc::SystemMutex mutex(a.at(1));
        mutex.lock();
        signal(a.at(2));
        waitFor(a.at(3));
        mutex.unlock();
        return 0;
    }
    if (command == "try-mutex") { // NAME MILLISECONDS: 0 when granted
        ovo::ipc::SystemMutex mutex(a.at(1));
        if (!mutex.tryLock(ovo::NumberParser::parseInt32(a.at(2))))
            return 1;
        mutex.unlock();
        return 0;
    }
    if (command == "event") { // NAME: 0 when the event could be made, else 3 and the text
        try {
            ovo::ipc::SystemEvent event(a.at(1));
        } catch (const std::exception& error) {
            std::cout << error.what();
            return 3;
        }
        return 0;
    }
    if (command == "memory") { // NAME SIZE OFFSET BYTE READY RELEASE: READY says created/joined
        ovo::ipc::SharedMemory memory(a.at(1), number(a.at(2)));
        static_cast<unsigned char*>(memory.begin())[number(a.at(3))] = static_cast<unsigned char>(number(a.at(4)));
        signal(a.at(5), memory.isCreated() ? "created" : "joined");
        waitFor(a.at(6));
        return 0;
    }
    if (command == "channel-send") { // NAME SIZE COUNT READY RELEASE: ids 1..COUNT, body "message N"
        ovo::ipc::MessageChannel channel(a.at(1), number(a.at(2)));
        for (unsigned id = 1; id <= number(a.at(3)); ++id) {
            std::string body = "message " + std::to_string(id);
            if (!channel.send(id, &body[0], static_cast<unsigned int>(body.size())))
                return 1;
        }
        signal(a.at(4), channel.inQueue() == number(a.at(3)) ? "sent" : "lost");
        waitFor(a.at(5));
        return 0;
    }
    if (command == "stress-send") { // NAME SENDER COUNT SEED
        ovo::ipc::MessageChannel channel(a.at(1), ovo_test::stressChannelSize);
        ovo_test::sendStress(channel, number(a.at(2)), number(a.at(3)), number(a.at(4)));
        return 0;
    }
    if (command == "stress-recv") { // NAME BY-ID(0|1) STOP LOG: 1 on a torn body
        ovo::ipc::MessageChannel channel(a.at(1), ovo_test::stressChannelSize);
        std::vector<ovo_test::StressMessage> received;
        const std::string stop = a.at(3);
        const bool intact = ovo_test::receiveStress(channel, a.at(2) == "1",
                                                    [&] { return std::filesystem::exists(stop); }, received);
        std::ofstream log(a.at(4));
        for (const auto& m : received)
            log << m.sender << ' ' << m.id << ' ' << m.sequence << '\n';
        return intact ? 0 : 1;
    }
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        std::cerr << "ipc_peer: " << error.what() << '\n';
        return 4;
    }
}
