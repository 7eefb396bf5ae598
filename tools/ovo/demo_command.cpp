// ovo demo: one card command's road through the library, run for real, then a message
// channel between two processes and a serial exchange over a pseudo-terminal pair (or a
// port that is given).
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
#include <thread>

namespace ovo_tool {
namespace {

const char demoHelp[] =
    "usage: ovo demo [--log-dir=DIR] [--port=SETTINGS] [OPTIONS]\n"
    "Runs the library for real: logging to the console and a daily file (DIR, by default\n"
    "a directory under the system's temporary one), the first PC/SC reader's card (SELECT\n"
    "of the master file, READ BINARY, GET CHALLENGE, the traffic traced), a message\n"
    "channel between two processes, and a serial exchange over a pseudo-terminal pair, or\n"
    "with --port over that port, whose device must answer 02 41 03 with 06 (Windows has\n"
    "no pseudo-terminals: there the serial part needs --port).\n"
    "examples: ovo demo\n"
    "          ovo demo --log-dir=/tmp --port='device=ttyUSB0;baud=115200'\n";

const unsigned int channelSize = 8192;

void say(const std::string& text) { std::cout << "\n== " << text << std::endl; }

// How a part of the demo went.
const char ok[] = "ok", failed[] = "failed", notRun[] = "not run";

const char* cardPart(ovo::logger::ILogger& log)
{
    say("A card: the first reader of the enumeration, connect, three command units");
    const std::vector<std::string> readers = ovo::io::enumeratePCSCDevices();
    if (readers.empty()) {
        std::cout << "no PC/SC reader found (is " << pcscService << " running?)\n";
        return notRun;
    }
    std::cout << "readers: " << readers.size() << ", taking '" << readers.front() << "'\n";
    ovo::io::pcsc reader(readers.front(), log);
    if (!reader.isCardPresented()) {
        std::cout << "no card in '" << readers.front() << "'\n";
        return notRun;
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
    return ok;
}

// The second process of the channel part: waits for a question and answers it, then
// stays until the answer is taken.
int answerOn(const std::string& name)
{
    ovo::ipc::MessageChannel own(name, channelSize);
    Bytes question;
    while (!own.recv(1, question))
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::string answer = "pong to " + std::string(question.begin(), question.end());
    own.send(2, &answer[0], static_cast<unsigned int>(answer.size()));
    while (own.inQueue() != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return 0;
}

const char* channelPart(ovo::logger::ILogger& log)
{
    say("A message channel: this process and a second one exchange two messages");
    const std::string name = ovo::format("ovo-demo-%lu", currentProcessId());
    ovo::ipc::MessageChannel channel(name, channelSize);
    ToolProcess peer({"demo", "--answer-on=" + name});
    std::string question = "ping";
    channel.send(1, &question[0], static_cast<unsigned int>(question.size()));
    std::cout << "process " << currentProcessId() << " sent \"ping\" with identifier 1 to '" << name << "'\n";
    Bytes answer;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!channel.recv(2, answer) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    peer.wait();
    log.traceHex("channel <-", answer.data(), static_cast<unsigned int>(answer.size()));
    std::cout << "process " << peer.id() << " answered \"" << std::string(answer.begin(), answer.end())
              << "\" with identifier 2\n";
    return answer.empty() ? failed : ok;
}

// Sends STX 'A' ETX to the device of the settings and waits for its ACK.
bool exchangeFrame(const std::string& settings, ovo::logger::ILogger& log)
{
    ovo::io::SerialConfig config = ovo::io::SerialConfig::fromString(settings);
    config.setCommTimeouts({0, 2000, 0, 2000, 0});
    config.setBuffersSize({4096, 4096});
    std::cout << "port: " << config.toString() << '\n';
    ovo::io::SerialIO port(config, log);
    const unsigned char frame[] = {0x02, 0x41, 0x03};
    port.send(frame, sizeof frame);
    unsigned char reply = 0;
    const bool answered = port.recv(&reply, 1) == 1 && reply == 0x06;
    std::cout << "sent 02 41 03, the device answered " << (answered ? "06 (ACK)" : "nothing") << '\n';
    return answered;
}

const char* serialPart(const std::string& port, ovo::logger::ILogger& log)
{
    if (!port.empty()) {
        say("A serial exchange over the port given: this process is the host");
        return exchangeFrame(port, log) ? ok : failed;
    }
    say("A serial exchange over a pseudo-terminal pair: this process is the host, a thread the device");
    PseudoTerminal terminal;
    if (!terminal.opened()) {
        std::cout << "no pseudo-terminal on this system: give a port with --port\n";
        return notRun;
    }
    std::thread device([&terminal] { // answers STX 'A' ETX with ACK
        unsigned char frame[3];
        const unsigned char ack = 0x06;
        if (terminal.readAll(frame, sizeof frame))
            terminal.write(&ack, 1);
    });
    const bool answered = exchangeFrame(ovo::format("device=%s;baud=115200;data=8;parity=none;stop=1",
                                                    terminal.path().c_str()), log);
    device.join();
    return answered ? ok : failed;
}

} // namespace

int demoCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string port, answerChannel;
    line.addText("port", "SETTINGS", "a serial port whose device answers (device=...;baud=...)", port);
    line.addInternal("answer-on", answerChannel); // the second process of the channel part
    line.parse(args);
    if (line.printedHelp(demoHelp))
        return 0;
    line.expectNoWords("ovo demo");
    if (!answerChannel.empty())
        return answerOn(answerChannel);
    std::string directory = line.logDirectory();
    if (directory.empty()) {
        directory = (std::filesystem::temp_directory_path() / "ovo-demo").string();
        std::filesystem::create_directories(directory);
    }
    CommandLine demo; // the log options of the line, the traffic too unless it says otherwise
    demo.parse({"--log-dir=" + directory, ovo::format("--log-level=%d", line.logLevelGiven() ? line.logLevel() : 1)});
    std::cout << std::unitbuf; // in step with the log lines on standard error
    say("Logging: the console (standard error) and a daily file, through one split channel");
    ovo::logger::ILogger& log = setUpLogging(demo, "ovo.demo");
    log.info("the demo starts");
    const char* const card = cardPart(log);
    const char* const channel = channelPart(log);
    const char* const serial = serialPart(port, log);
    log.info("the demo ends");
    say("Done");
    std::cout << "card: " << card << ", channel: " << channel << ", serial: " << serial << '\n'
              << "the log file is " << logFilePath(directory) << '\n';
    return card == ok && channel == ok && serial == ok ? 0 : 1;
}

} // namespace ovo_tool
