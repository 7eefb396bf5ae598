// ovo channel: messages of a message channel that other processes hold.
#include "system_words.h"
#include "tool.h"

#include <ovo/ipc/message_channel.h>
#include <ovo/strings.h>

#include <chrono>
#include <iostream>
#include <thread>

namespace ovo_tool {
namespace {

const char channelHelp[] =
    "usage: ovo channel NAME [--size=BYTES] [OPTIONS] send ID HEX | send ID --text=TEXT |\n"
    "                                                 recv [ID] | watch | count\n"
    "A channel lives while some process holds it: run these beside the processes that use\n"
    "it (or beside `ovo channel NAME watch`). --size must not exceed the size its creator\n"
    "gave (default 65536).\n"
    "  send ID HEX    queues a message with the identifier ID (1 or more)\n"
    "  recv [ID]      takes the oldest message of ID (of any without ID) and prints it;\n"
    "                 exit status 1 when there is none\n"
    "  watch          takes and prints every message as it comes, until interrupted\n"
    "  count          prints the number of messages queued\n"
    "examples: ovo channel reader-events send 7 '01 3B'\n"
    "          ovo channel reader-events send 7 --text='card inserted'\n"
    "          ovo channel reader-events recv 7\n";

using ovo::ipc::MessageChannel;

// The largest size that the live channel lets this process join with: above the size
// its creator gave, the view fails with 5 (access denied). 0 when even the least fails.
unsigned int largestSize(const std::string& name, unsigned int tooLarge)
{
    unsigned int fits = 0;
    for (unsigned int low = MessageChannel::minimumSize, high = tooLarge - 1; low <= high;) {
        const unsigned int size = low + (high - low) / 2;
        try {
            MessageChannel probe(name, size);
            fits = size;
            low = size + 1;
        } catch (const std::exception&) {
            high = size - 1;
        }
    }
    return fits;
}

// The channel, or a Failure that says what to do about it.
std::unique_ptr<MessageChannel> join(const std::string& name, unsigned int size)
{
    try {
        return std::unique_ptr<MessageChannel>(new MessageChannel(name, size));
    } catch (const std::exception& error) {
        const unsigned long code = errorCode(error.what());
        const bool viewTooLarge = std::string(error.what()).rfind("::MapViewOfFile", 0) == 0 && code == 5;
        if (const unsigned int fits = viewTooLarge ? largestSize(name, size) : 0)
            throw Failure(ovo::format("channel '%s' exists with a smaller size; pass --size=%u or less", name.c_str(), fits));
        throw Failure("cannot open channel '" + name + "': " + systemWords(code));
    }
}

// The body as hex, and as text too when it is all printable.
std::string shown(const Bytes& body)
{
    if (body.empty())
        return "(empty)";
    bool printable = true;
    for (unsigned char c : body)
        printable = printable && c >= 0x20 && c < 0x7F;
    return hex(body) + (printable ? "  \"" + std::string(body.begin(), body.end()) + "\"" : std::string());
}

} // namespace

int channelCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string text;
    bool textGiven = false;
    long size = 65536;
    line.addText("text", "TEXT", "the body of a message to send, as text", text, &textGiven);
    line.addNumber("size", "BYTES", "the channel's size in bytes (default 65536)", size, MessageChannel::minimumSize,
                   0x7FFFFFFF);
    line.parse(args);
    if (line.printedHelp(channelHelp))
        return 0;
    const std::vector<std::string>& words = line.words();
    const std::string action = words.size() > 1 ? words[1] : std::string();
    const std::size_t count = words.size();
    const bool known = (action == "send" && count == (textGiven ? 3u : 4u)) || (action == "recv" && count <= 3) ||
                       ((action == "watch" || action == "count") && count == 2);
    if (!known)
        throw UsageError("ovo channel needs NAME and send, recv, watch or count; see ovo channel --help");
    if (words[0].find('\\') != std::string::npos) // the system's namespace separator
        throw UsageError("a channel name has no backslash: '" + words[0] + "'");
    const unsigned int id =
        count > 2 ? static_cast<unsigned int>(number("a message identifier", words[2], action == "send" ? 1 : 0, 0xFFFFFFFF)) : 0;
    Bytes body = action != "send" ? Bytes() : textGiven ? Bytes(text.begin(), text.end()) : parseHex(words[3]);
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.channel");
    setUpLogging(line, "ovo.ipc.channel"); // the channel's repairs after a peer died inside a removal
    const std::unique_ptr<MessageChannel> channel = join(words[0], static_cast<unsigned int>(size));
    if (action == "send") {
        if (!channel->send(id, body.data(), static_cast<unsigned int>(body.size())))
            throw Failure("the channel is full (256 messages, or no room for the body)");
        log.traceHex(ovo::format("sent %u:", id), body.data(), static_cast<unsigned int>(body.size()));
        std::cout << "sent " << body.size() << " bytes with identifier " << id << '\n';
        return 0;
    }
    if (action == "count") {
        std::cout << channel->inQueue() << '\n';
        return 0;
    }
    if (action == "recv") {
        if (!channel->recv(id, body))
            throw Failure("no message" + (id != 0 ? ovo::format(" with identifier %u", id) : std::string()));
        std::cout << shown(body) << '\n';
        return 0;
    }
    watchInterrupts();
    log.info("watching '" + words[0] + "' until interrupted");
    while (!interrupted()) {
        if (channel->recv(0, body))
            std::cout << shown(body) << std::endl;
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    log.info("interrupted: the watch of '" + words[0] + "' ends");
    return 0;
}

} // namespace ovo_tool
