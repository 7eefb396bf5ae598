// PC/SC calls that play a script, linked in place of the platform's in the library build
// `ovosystem_scripted_pcsc`: a service that answers at once, logs each call with its
// arguments, and does what a real one cannot be made to do (a state of 7, an empty ATR,
// a failing call, an over-long length on failure).
#ifndef OVO_TESTS_FAKES_SCRIPTED_PCSC_H
#define OVO_TESTS_FAKES_SCRIPTED_PCSC_H

#include <ovo/export.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ovo_fake {

struct PcscScript {
    std::map<std::string, std::uint32_t> failures; // by call name ("SCardConnect"): its code
    std::uint32_t activeProtocol = 1, cardState = 6, eventState = 0x22;
    std::vector<unsigned char> atr{0x3B, 0x02, 0x14, 0x50};
    std::vector<unsigned char> response{0x90, 0x00};
    std::uint32_t reportedLength = 0; // the response length reported when not 0, else the response's own
    std::string readerList{"Reader A 00 00\0Reader B 01 00\0", 31};

    // The first 64 calls, as "Name(arguments)" with handles in hex.
    std::vector<std::string> calls;
};

OVO_API PcscScript& pcscScript();
OVO_API void resetPcscScript();

// The scripted transmit called directly: the bare call sequence that pcsc::exchange makes,
// for the benchmark's reference.
OVO_API std::uint32_t bareTransmit(std::intptr_t card, std::uint32_t protocol, const unsigned char* command,
                                   std::uint32_t commandLength, unsigned char* response, std::uint32_t& responseLength);

} // namespace ovo_fake

#endif
