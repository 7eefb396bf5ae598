#include "platform/local_time.h"

#include <limits>

namespace ovo {
namespace platform {

std::tm localTime(std::int64_t seconds)
{
    struct CachedSecond {
        std::int64_t second = std::numeric_limits<std::int64_t>::min();
        std::tm local{};
    };
    thread_local CachedSecond cache;
    if (seconds != cache.second) {
        const std::time_t time = static_cast<std::time_t>(seconds);
        std::tm local{};
#if defined(_WIN32)
        localtime_s(&local, &time);
#else
        localtime_r(&time, &local);
#endif
        cache = {seconds, local};
    }
    return cache.local;
}

} // namespace platform
} // namespace ovo
