// The clock and the local-time conversion: the one place where the platforms differ.
#ifndef OVO_SRC_PLATFORM_LOCAL_TIME_H
#define OVO_SRC_PLATFORM_LOCAL_TIME_H

#include <cstdint>
#include <ctime>

namespace ovo {
namespace platform {

// 100-nanosecond ticks since 1970-01-01 00:00:00 UTC (system_clock.cpp).
std::int64_t systemTicks();

// Seconds since 1970 as local broken-down time, safe in several threads at once. The
// conversion is cached per thread for the second asked last, so that a message costs one
// conversion a second (its file name and its stamp ask for the same one); a time-zone
// change (TZ and tzset()) shows from the next second on.
std::tm localTime(std::int64_t seconds);

} // namespace platform
} // namespace ovo

#endif
