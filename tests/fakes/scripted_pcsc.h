// PC/SC calls that play a script, linked in place of the platform's in the library build
// `ovosystem_scripted_pcsc`: a service that answers at once and does what a real one
// cannot be made to do (a state of 7, an empty ATR, an over-long length on failure).
#ifndef OVO_TESTS_FAKES_SCRIPTED_PCSC_H
#define OVO_TESTS_FAKES_SCRIPTED_PCSC_H

#include <ovo/export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ovo_fake {

struct PcscScript {
    // What the calls answer (0 is success).
    std::uint32_t establishResult = 0, connectResult = 0, statusResult = 0, transmitResult = 0,
                  statusChangeResult = 0, listResult = 0;
    std::uint32_t activeProtocol = 2;
    std::uint32_t cardState = 6;
    std::vector<unsigned char> atr{0x3B, 0x02, 0x14, 0x50};
    std::vector<unsigned char> response{0x90, 0x00};
    std::uint32_t reportedLength = 0xFFFFFFFFu; // the response length reported; all bits: the response's own
    std::uint32_t eventState = 0x22;
    std::string readerList{"Reader A 00 00\0Reader B 01 00\0\0", 30};

    // What the calls were given.
    std::vector<std::string> calls;
    std::uint32_t scope = 99, share = 99, protocols = 99, disposition = 99, transmitProtocol = 99, timeout = 99,
                  currentState = 99, receiveRoom = 0, atrRoom = 0, nameRoom = 0, listLength = 0;
    std::string reader;
    std::vector<unsigned char> command;
    int freed = 0, released = 0;
};

OVO_API PcscScript& pcscScript();
OVO_API void resetPcscScript();

// The scripted transmit called directly: the bare call sequence that pcsc::exchange makes,
// for the benchmark's reference.
OVO_API std::uint32_t bareTransmit(std::intptr_t card, std::uint32_t protocol, const unsigned char* command,
                                   std::uint32_t commandLength, unsigned char* response,
                                   std::uint32_t& responseLength);

} // namespace ovo_fake

#endif
