#include "platform/local_time.h"

namespace ovo {
namespace platform {

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
