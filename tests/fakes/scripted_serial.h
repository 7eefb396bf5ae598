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

// Plain mirrors of the platform records, so that tests need no platform header.
struct Timeouts {
    std::uint32_t readInterval, readMultiplier, readConstant, writeMultiplier, writeConstant;
};

struct Transfer {
    bool ok;
    std::uint32_t count; // bytes the call reports; a read delivers that many from `bytes`
    std::string bytes;
};

struct SerialScript {
    // What the calls answer.
    std::uint32_t openError = 0;           // CreateFileA fails with it when not 0
    std::uint32_t getStateError = 0;       // GetCommState fails with it when not 0
    std::vector<unsigned char> deviceDcb;  // what GetCommState delivers (28 bytes)
    std::deque<Transfer> reads;            // one entry per ReadFile; empty: fails
    std::deque<Transfer> writes;           // one entry per WriteFile; empty: fails
    bool statusFails = false;
    std::uint32_t inQueue = 0;

    // What the calls were given.
    std::string openedPath;
    std::uint32_t openedAccess = 0, openedShare = 0, openedDisposition = 0, openedAttributes = 0;
    std::vector<std::vector<unsigned char>> dcbsSet; // every SetCommState, 28 bytes each
    std::vector<Timeouts> timeoutsSet;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> queueSizes;
    std::vector<std::uint32_t> readSizes, writeSizes, purges;
    std::vector<std::string> calls; // names in order
    int closes = 0;
};

// The script of the calls; reset() starts a fresh one.
OVO_API SerialScript& serialScript();
OVO_API void resetSerialScript();

} // namespace ovo_fake

#endif
