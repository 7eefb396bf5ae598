// A system clock that gives the readings a test scripts, linked in place of the real
// one in the library build `ovosystem_scripted_clock`.
#ifndef OVO_TESTS_FAKES_SCRIPTED_CLOCK_H
#define OVO_TESTS_FAKES_SCRIPTED_CLOCK_H

#include <ovo/export.h>

#include <cstdint>
#include <vector>

namespace ovo_fake {

// The next readings, in 100-nanosecond ticks since 1970 UTC, one per reading; when they
// run out the real clock answers again.
OVO_API void scriptClock(const std::vector<std::int64_t>& ticks);

} // namespace ovo_fake

#endif
