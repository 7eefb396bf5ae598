// The POSIX layer's system calls with failures on demand, linked in place of the real
// ones in the layer's own fault tests: each call does what the real one does until a
// failure is scripted for it.
#ifndef OVO_TESTS_FAKES_FAULTY_SYSTEM_CALLS_H
#define OVO_TESTS_FAKES_FAULTY_SYSTEM_CALLS_H

#include <string>

namespace ovo_fake {

// The call named ("open", "read", "write", "ftruncate", "rename", "fsync") fails with
// errno `error` `times` times in a row, after `passing` more calls of it have passed.
// An `error` of 0 clears every failure.
void failCall(const std::string& call, int error, int times = 1, int passing = 0);

} // namespace ovo_fake

#endif
