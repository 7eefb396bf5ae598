// The layer's process-wide locks are held across fork(): taken before it and given up after it
// in both processes. A child made while another thread held one would inherit it held by a
// thread that the child does not have, and its first call that needs it would wait for ever.
#ifndef OVO_SRC_PLATFORM_POSIX_FORK_GUARD_H
#define OVO_SRC_PLATFORM_POSIX_FORK_GUARD_H

#include <mutex>
#include <pthread.h>

namespace ovo {
namespace posix {

// Registers the lock that `lockOf` gives (a process-wide one, never destroyed) to be held
// across every fork from now on.
template <std::mutex& (*lockOf)()>
void holdAcrossFork()
{
    pthread_atfork([] { lockOf().lock(); }, [] { lockOf().unlock(); }, [] { lockOf().unlock(); });
}

} // namespace posix
} // namespace ovo

#endif
