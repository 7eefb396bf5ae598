// Serial calls that play a script, linked in place of the platform's in the library
// build `ovosystem_scripted_serial`: for the cases no real port produces on demand.
#ifndef OVO_TESTS_FAKES_SCRIPTED_SERIAL_H
#define OVO_TESTS_FAKES_SCRIPTED_SERIAL_H

#include <ovo/export.h>

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace ovo_fake {

struct Transfer {
    bool ok;
    std::uint32_t count; // bytes the call reports; a read delivers that many from `bytes`
    std::string bytes;
};

struct SerialScript {
    std::uint32_t openError = 0, getStateError = 0; // CreateFileA, GetCommState fail with them when not 0
    std::vector<unsigned char> deviceDcb;           // what GetCommState delivers (28 bytes)
    std::deque<Transfer> reads, writes;             // one per ReadFile, WriteFile; none left: they fail
    bool statusFails = false;
    std::uint32_t inQueue = 0;

    std::vector<std::string> calls;                  // each call with its arguments, in order
    std::vector<std::vector<unsigned char>> dcbsSet; // the block of every SetCommState
};

// The script of the calls; reset() starts a fresh one.
OVO_API SerialScript& serialScript();
OVO_API void resetSerialScript();

} // namespace ovo_fake

#endif
