// One command unit to a card with the traffic traced: a reader (the first of the PC/SC
// service's, or the one named), SELECT of the master file, and the card's answer.
//   card_exchange ["READER NAME"]
//! [task]
#include <ovo/io/apdu.h>
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/logger/channels.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

int main(int argc, char* argv[])
{
    if (argc > 2) {
        std::fprintf(stderr, "usage: card_exchange [\"READER NAME\"]\n");
        return 2;
    }
    auto console = std::make_shared<ovo::logger::ConsoleLogChannel>();
    console->setFormatter(std::make_shared<ovo::logger::ConsoleFormatter>());
    ovo::logger::ILogger& log = ovo::logger::add("card", console);
    log.setLevel(1); // traces every command and response

    try {
        const std::vector<std::string> readers = ovo::io::enumeratePCSCDevices();
        if (argc < 2 && readers.empty()) {
            std::fprintf(stderr, "no reader: is the PC/SC service running?\n");
            return 1;
        }
        const std::string readerName = argc > 1 ? argv[1] : readers.front();
        //! [exchange]
        ovo::io::pcsc reader(readerName, log);
        if (!reader.isCardPresented()) {
            std::fprintf(stderr, "no card in the reader '%s'\n", readerName.c_str());
            return 1;
        }
        reader.connect();
        const unsigned char masterFile[] = {0x3F, 0x00};
        const ovo::io::apdu select(0x00, 0xA4, 0x00, 0x0C, sizeof masterFile, masterFile);
        const ovo::io::apdu response = reader.exchange(select); // traced: "-> 00 A4 00 0C 02 3F 00 "
        reader.disconnect();
        //! [exchange]
        // A status word other than 9000 is the card's answer, not a failure of the call.
        std::printf("status word %02X%02X\n", response.sw1(), response.sw2());
        return response.sw1() == 0x90 && response.sw2() == 0x00 ? 0 : 1;
    } catch (const std::exception& e) { // no service, the reader gone, the card removed
        std::fprintf(stderr, "failed: %s\n", e.what());
        return 1;
    }
}
//! [task]
