#include "platform/local_time.h"

#include <chrono>

namespace ovo {
namespace platform {

std::int64_t systemTicks()
{
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::tm localTime(std::int64_t seconds)
{
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &time);
#else
    localtime_r(&time, &local);
#endif
    return local;
}

} // namespace platform
} // namespace ovo
