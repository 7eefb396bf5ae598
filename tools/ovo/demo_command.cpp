// ovo demo: one card command's road through the library, run for real, then a message
// channel between two processes and a serial exchange over a pseudo-terminal pair.
#include "tool.h"

#include <ovo/io/apdu.h>
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/io/serial_config.h>
#include <ovo/io/serial_io.h>
#include <ovo/ipc/message_channel.h>
#include <ovo/strings.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace ovo_tool {
namespace {

const char demoHelp[] =
    "usage: ovo demo [--log-dir=DIR] [OPTIONS]\n"
    "Runs the library for real: logging to the console and a daily file (DIR, by default\n"
    "a directory under the system's temporary one), the first PC/SC reader's card (SELECT\n"
    "of the master file, READ BINARY, GET CHALLENGE, the traffic traced), a message\n"
    "channel between two processes, and a serial exchange over a pseudo-terminal pair.\n";

void say(const std::string& text) { std::cout << "\n== " << text << std::endl; }

bool cardPart(ovo::logger::ILogger& log)
{
    say("A card: the first reader of the enumeration, connect, three command units");
    const std::vector<std::string> readers = ovo::io::enumeratePCSCDevices();
    if (readers.empty()) {
        std::cout << "no PC/SC reader found: is pcscd running? (scripts/ovo demo starts one with a virtual card)\n";
        return false;
    }
    std::cout << "readers: " << readers.size() << ", taking '" << readers.front() << "'\n";
    ovo::io::pcsc reader(readers.front(), log);
    if (!reader.isCardPresented()) {
        std::cout << "no card in '" << readers.front() << "'\n";
        return false;
    }
    reader.connect();
    const unsigned char masterFile[] = {0x3F, 0x00};
    const struct {
        const char* what;
        ovo::io::apdu command;
    } steps[] = {
        {"SELECT the master file 3F00", ovo::io::apdu(0x00, 0xA4, 0x00, 0x0C, 2, masterFile)},
        {"READ BINARY of the current file", ovo::io::apdu(0x00, 0xB0, 0x00, 0x00, 0x10)},
        {"GET CHALLENGE of 8 bytes", ovo::io::apdu(0x00, 0x84, 0x00, 0x00, 0x08)},
    };
    for (const auto& step : steps) {
        const ovo::io::apdu response = reader.exchange(step.command);
        const Bytes bytes(response.raw(), response.raw() + response.size());
        std::cout << step.what << ": " << hex(bytes) << " -> "
                  << statusMeaning(response.sw1(), response.sw2()) << '\n';
    }
    std::cout << "(a status word that is no success is an answer of the card, not an exception)\n";
    reader.disconnect();
    return true;
}

bool channelPart(ovo::logger::ILogger& log)
{
    say("A message channel: this process and a second one exchange two messages");
    const std::string name = ovo::format("ovo-demo-%d", static_cast<int>(getpid()));
    ovo::ipc::MessageChannel channel(name, 8192);
    const pid_t peer = fork();
    if (peer == 0) { // the second process: waits for a question and answers it
        ovo::ipc::MessageChannel own(name, 8192);
        Bytes question;
        while (!own.recv(1, question))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::string answer = "pong to " + std::string(question.begin(), question.end());
        own.send(2, &answer[0], static_cast<unsigned int>(answer.size()));
        while (own.inQueue() != 0) // stays until the answer is taken
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        _exit(0);
    }
    std::string question = "ping";
    channel.send(1, &question[0], static_cast<unsigned int>(question.size()));
    std::cout << "process " << getpid() << " sent \"ping\" with identifier 1 to '" << name << "'\n";
    Bytes answer;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!channel.recv(2, answer) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    int status = 0;
    waitpid(peer, &status, 0);
    log.traceHex("channel <-", answer.data(), static_cast<unsigned int>(answer.size()));
    std::cout << "process " << peer << " answered \"" << std::string(answer.begin(), answer.end())
              << "\" with identifier 2\n";
    return !answer.empty();
}

bool serialPart(ovo::logger::ILogger& log)
{
    say("A serial exchange over a pseudo-terminal pair: this process is the host, a thread the device");
    int device = -1, host = -1;
    char path[256] = {};
    if (openpty(&device, &host, path, nullptr, nullptr) != 0) {
        std::cout << "no pseudo-terminal available\n";
        return false;
    }
    termios raw;
    tcgetattr(host, &raw);
    cfmakeraw(&raw);
    tcsetattr(host, TCSANOW, &raw);
    std::thread peer([device] { // answers STX 'A' ETX with ACK
        unsigned char frame[3];
        std::size_t got = 0;
        while (got < sizeof frame) {
            const ssize_t count = read(device, frame + got, sizeof frame - got);
            if (count <= 0)
                return;
            got += static_cast<std::size_t>(count);
        }
        const unsigned char ack = 0x06;
        (void)!write(device, &ack, 1);
    });
    bool answered = false;
    {
        ovo::io::SerialConfig config = ovo::io::SerialConfig::fromString(
            ovo::format("device=%s;baud=115200;data=8;parity=none;stop=1", path));
        config.setCommTimeouts({0, 2000, 0, 2000, 0});
        config.setBuffersSize({4096, 4096});
        std::cout << "port: " << config.toString() << '\n';
        ovo::io::SerialIO port(config, log);
        const unsigned char frame[] = {0x02, 0x41, 0x03};
        port.send(frame, sizeof frame);
        unsigned char reply = 0;
        answered = port.recv(&reply, 1) == 1 && reply == 0x06;
        std::cout << "sent 02 41 03, the device answered " << (answered ? "06 (ACK)" : "nothing") << '\n';
    }
    peer.join();
    close(device);
    close(host);
    return answered;
}

} // namespace

int demoCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    line.parse(args);
    if (line.printedHelp(demoHelp))
        return 0;
    line.expectNoWords("ovo demo");
    std::vector<std::string> words = args;
    std::string directory = line.logDirectory();
    if (directory.empty()) {
        directory = (std::filesystem::temp_directory_path() / "ovo-demo").string();
        std::filesystem::create_directories(directory);
        words.push_back("--log-dir=" + directory);
    }
    bool traced = false;
    for (const std::string& word : args)
        traced = traced || word.compare(0, 12, "--log-level=") == 0;
    if (!traced)
        words.push_back("--log-level=1"); // the traffic too
    CommandLine demo;
    demo.parse(words);
    std::cout << std::unitbuf; // in step with the log lines on standard error
    say("Logging: the console (standard error) and a daily file, through one split channel");
    ovo::logger::ILogger& log = setUpLogging(demo, "ovo.demo");
    log.info("the demo starts");
    const bool card = cardPart(log);
    const bool channel = channelPart(log);
    const bool serial = serialPart(log);
    log.info("the demo ends");
    say("Done");
    std::cout << "card: " << (card ? "ok" : "not run") << ", channel: " << (channel ? "ok" : "failed")
              << ", serial: " << (serial ? "ok" : "failed") << '\n'
              << "the log file is " << logFilePath(directory) << '\n';
    return card && channel && serial ? 0 : 1;
}

} // namespace ovo_tool
