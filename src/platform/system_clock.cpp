// The system clock: the provider that test builds replace with a scripted one.
#include "platform/local_time.h"

#include <chrono>

namespace ovo {
namespace platform {

std::int64_t systemTicks()
{
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace platform
} // namespace ovo
