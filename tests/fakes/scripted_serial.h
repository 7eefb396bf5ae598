// Serial calls that play a script, linked in place of the platform's in `ovosystem_scripted_serial`.
#ifndef OVO_TESTS_FAKES_SCRIPTED_SERIAL_H
#define OVO_TESTS_FAKES_SCRIPTED_SERIAL_H

#include <ovo/export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ovo_fake {

struct SerialScript {
    std::uint32_t getStateError = 0;                 // GetCommState fails with it when not 0
    std::vector<unsigned char> deviceDcb;            // what GetCommState delivers (28 bytes)
    std::vector<std::string> calls;                  // each call with its arguments, in order
    std::vector<std::vector<unsigned char>> dcbsSet; // the block of every SetCommState
};

// The script of the calls; reset() starts a fresh one.
OVO_API SerialScript& serialScript();
OVO_API void resetSerialScript();

} // namespace ovo_fake

#endif
