// The other process of the inter-process tests. A command with READY and RELEASE files
// takes its objects, leaves READY as its sign that it got so far, and waits for RELEASE
// ("-": for the kill that ends it); its exit status is its answer.
#include "ipc/ipc_test.h"

#include <ovo/logger/logger.h>
#include <ovo/number_parser.h>

#include <cstdlib>
#include <iostream>
#include <random>

namespace {

using Args = std::vector<std::string>;

// Leaves `text` in READY (whole, or not there) and waits for RELEASE.
void standBy(const std::string& ready, const std::string& text, const std::string& release)
{
    std::ofstream(ready + ".part") << text;
    std::filesystem::rename(ready + ".part", ready);
    while (release == "-" || !std::filesystem::exists(release))
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

unsigned number(const std::string& text) { return static_cast<unsigned>(ovo::NumberParser::parseUInt32(text)); }

// Adds up what the channel's repair lines say was dropped ("...; N dropped, ...").
struct LedgerLogChannel : ovo::logger::AbstractLogChannel {
    explicit LedgerLogChannel(ovo_test::Ledger& ledger) : ledger(ledger) {}
    void write(const std::string&, const std::string& message) override
    {
        const std::size_t numbers = message.rfind("; ");
        if (numbers != std::string::npos)
            ledger.loggedDrops += static_cast<std::uint32_t>(std::strtoul(message.c_str() + numbers + 2, nullptr, 10));
    }
    ovo_test::Ledger& ledger;
};

// A sender or receiver of the channel kill test, in slot SLOT of the ledger, until the
// ledger says stop. A sender's messages take a random size class; a receiver asks for a
// random class, or for the oldest message of all in that class's size.
int ledgerPeer(bool sender, const std::string& channelName, const std::string& ledgerName, unsigned slot)
{
    using namespace ovo_test;
    ovo::ipc::SharedMemory book(ledgerName, sizeof(Ledger));
    Ledger& ledger = *static_cast<Ledger*>(book.begin());
    ovo::logger::add("ovo.ipc.channel", std::make_shared<LedgerLogChannel>(ledger));
    ovo::ipc::MessageChannel channel(channelName, ledgerChannelSize);
    LedgerSlot& mine = ledger.slots[slot];
    std::mt19937 random(slot);
    std::vector<unsigned char> body(maxBody);
    mine.running = 1;
    while (!ledger.stop) {
        const unsigned id = 1 + random() % classCount;
        Identity taken;
        if (sender && ledger.receipts >= maxReceipts / 2) { // enough for one row
            std::this_thread::yield();
        } else if (sender) {
            writeBody(body.data(), bodySize(id), {slot, mine.committed});
            for (; !channel.send(id, body.data(), bodySize(id)); std::this_thread::yield())
                if (ledger.stop)
                    return 0;
            ++mine.committed;
        } else if (!channel.recv(random() % 4 == 0 ? 0 : id, mine.body, bodySize(id))) {
            std::this_thread::yield();
        } else if (!bodyIsIntact(mine.body, bodySize(id), taken)) {
            ++ledger.corrupt;
        } else {
            Receipt& receipt = ledger.receipt[ledger.receipts++];
            receipt.slot = taken.first;
            receipt.sequence = taken.second;
            receipt.valid = 1;
        }
    }
    return 0;
}

int run(const Args& a)
{
    const std::string& command = a.at(0);
    if (command == "hold-mutex" || command == "drop-held-mutex") { // NAME READY RELEASE
        auto mutex = std::make_unique<ovo::ipc::SystemMutex>(a.at(1));
        mutex->lock();
        if (command == "drop-held-mutex")
            mutex.reset(); // without unlocking
        standBy(a.at(2), "held", a.at(3));
        if (mutex)
            mutex->unlock();
        return 0;
    }
    if (command == "try-mutex") { // NAME MILLISECONDS: 0 when granted
        ovo::ipc::SystemMutex mutex(a.at(1));
        return mutex.tryLock(ovo::NumberParser::parseInt32(a.at(2))) ? (mutex.unlock(), 0) : 1;
    }
    if (command == "memory") { // NAME SIZE OFFSET BYTE READY RELEASE: READY says created/joined
        ovo::ipc::SharedMemory memory(a.at(1), number(a.at(2)));
        static_cast<unsigned char*>(memory.begin())[number(a.at(3))] = static_cast<unsigned char>(number(a.at(4)));
        standBy(a.at(5), memory.isCreated() ? "created" : "joined", a.at(6));
        return 0;
    }
    if (command == "memory-fill") { // NAME SIZE FILLER: the block made, its file system filled up
        ovo::ipc::SharedMemory memory(a.at(1), number(a.at(2))); // (FILLER), then every byte written
        const std::string chunk(65536, 'f');
        for (std::ofstream filler(a.at(3), std::ios::binary); filler.write(chunk.data(), chunk.size()).flush();) {
        }
        std::memset(memory.begin(), 1, number(a.at(2)));
        return 0;
    }
    if (command == "channel-send") { // NAME SIZE COUNT READY RELEASE: ids 1..COUNT, body "message N";
        ovo::ipc::MessageChannel channel(a.at(1), number(a.at(2))); // 0 when they are all queued
        for (unsigned id = 1; id <= number(a.at(3)); ++id) {
            std::string body = "message " + std::to_string(id);
            channel.send(id, &body[0], static_cast<unsigned int>(body.size()));
        }
        standBy(a.at(4), "sent", a.at(5));
        return channel.inQueue() == number(a.at(3)) ? 0 : 1;
    }
    if (command == "channel-recv") { // NAME SIZE ID: 0 when a message was taken
        ovo::ipc::MessageChannel channel(a.at(1), number(a.at(2)));
        std::vector<unsigned char> body;
        return channel.recv(number(a.at(3)), body) ? 0 : 1;
    }
    if (command == "ledger-sender" || command == "ledger-receiver") // CHANNEL LEDGER SLOT
        return ledgerPeer(command == "ledger-sender", a.at(1), a.at(2), number(a.at(3)));
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(Args(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        std::cerr << "ipc_peer: " << error.what() << '\n';
        return 4;
    }
}
