#include "fakes/scripted_clock.h"

#include "platform/local_time.h"

#include <chrono>
#include <deque>
#include <mutex>

namespace {

std::mutex scriptMutex;
std::deque<std::int64_t> script;

} // namespace

namespace ovo_fake {

void scriptClock(const std::vector<std::int64_t>& ticks)
{
    std::lock_guard<std::mutex> lock(scriptMutex);
    script.assign(ticks.begin(), ticks.end());
}

} // namespace ovo_fake

namespace ovo {
namespace platform {

std::int64_t systemTicks()
{
    {
        std::lock_guard<std::mutex> lock(scriptMutex);
        if (!script.empty()) {
            const std::int64_t next = script.front();
            script.pop_front();
            return next;
        }
    }
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace platform
} // namespace ovo
