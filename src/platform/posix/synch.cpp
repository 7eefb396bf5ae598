#include "platform/posix/synch.h"

#include "platform/posix/handle.h"
#include "platform/posix/named_object.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <linux/futex.h>
#include <mutex>
#include <new>
#include <pthread.h>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using ovo::posix::handleOf;
using ovo::posix::NamedObject;
using ovo::posix::ObjectKind;

class WaitableObject : public ovo::posix::KernelObject {
public:
    static const unsigned kinds = waitableKind;

    WaitableObject(unsigned kinds, std::shared_ptr<NamedObject> object, DWORD access)
        : KernelObject(kinds), object_(std::move(object)), access_(access)
    {
    }
    virtual DWORD wait(DWORD milliseconds) = 0;
    bool allows(DWORD access) const { return (access_ & access) == access; }

protected:
    std::shared_ptr<NamedObject> object_;

private:
    DWORD access_;
};

// A mutex's state in its object: the pthread mutex, and whether the last close of a
// process that owned it gave it up (its next owner is told WAIT_ABANDONED).
struct MutexState {
    pthread_mutex_t mutex;
    std::uint32_t abandoned;
};

pid_t threadId() { return static_cast<pid_t>(syscall(SYS_gettid)); }

// The pages of mutexes that a thread of this process still owns after the process closed
// its last handle: the kernel writes into a mutex that is on a thread's robust list when
// the thread ends, so the page stays mapped until its owner let go (or ended).
class KeptMutexes {
public:
    void keep(void* page, MutexState* state, pid_t owner)
    {
        std::lock_guard<std::mutex> guard(lock_);
        kept_.push_back(Kept{page, state, owner});
    }

    void unmapReleased()
    {
        std::lock_guard<std::mutex> guard(lock_);
        for (auto kept = kept_.begin(); kept != kept_.end();) {
            // The kernel marks the word of a mutex whose owner ended; the owner is gone then.
            const int word = __atomic_load_n(&kept->state->mutex.__data.__lock, __ATOMIC_ACQUIRE);
            if ((word & FUTEX_TID_MASK) == static_cast<unsigned>(kept->owner)) {
                ++kept;
                continue;
            }
            NamedObject::unmapKept(kept->page);
            kept = kept_.erase(kept);
        }
    }

private:
    struct Kept {
        void* page;
        MutexState* state;
        pid_t owner;
    };
    std::mutex lock_;
    std::vector<Kept> kept_;
};

// The thread sanitizer's timedlock does not hand an abandoned mutex over to its new owner
// (it reports the owner's unlock as wrong): its builds wait by trying each millisecond.
// GCC names the sanitizer by a macro, clang by a feature (which only a directive may ask).
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define OVO_THREAD_SANITIZER
#endif
#endif
#if defined(__SANITIZE_THREAD__) || defined(OVO_THREAD_SANITIZER)
const bool pollingWaits = true;
#else
const bool pollingWaits = false;
#endif

class MutexObject final : public WaitableObject {
public:
    static const unsigned kinds = waitableKind | mutexKind;

    MutexObject(std::shared_ptr<NamedObject> object, DWORD access)
        : WaitableObject(kinds, std::move(object), access), state_(static_cast<MutexState*>(object_->state())),
          mutex_(&state_->mutex)
    {
    }

    // The process's last handle of a mutex that a thread of it owns. As on Windows nobody
    // could release it after this: the closing thread gives it up as abandoned; another
    // thread keeps it until it is done, its page mapped till then. Either way the object
    // closes, so that a name that nobody else holds gives the next creator a fresh mutex.
    ~MutexObject() override
    {
        keptMutexes().unmapReleased();
        if (object_.use_count() != 1)
            return;
        const pid_t owner = mutex_->__data.__owner;
        if (owner == threadId()) {
            state_->abandoned = 1;
            for (unsigned levels = mutex_->__data.__count; levels > 0; --levels) // of a recursive hold
                pthread_mutex_unlock(mutex_);
        } else if (owner != 0 && access(("/proc/self/task/" + std::to_string(owner)).c_str(), F_OK) == 0) {
            keptMutexes().keep(object_->keepMappedAfterClose(), state_, owner);
        }
    }

    static void initialize(void* state)
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE); // a Win32 mutex is
        pthread_mutex_init(&static_cast<MutexState*>(state)->mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
        static_cast<MutexState*>(state)->abandoned = 0;
    }

    DWORD wait(DWORD milliseconds) override
    {
        int result = milliseconds == 0 ? pthread_mutex_trylock(mutex_) : spinWhileHeld();
        if (result == EBUSY && milliseconds != 0)
            result = pollingWaits ? lockByPolling(milliseconds) : lockWithin(milliseconds);
        switch (result) {
        case 0:
            if (state_->abandoned == 0)
                return WAIT_OBJECT_0;
            state_->abandoned = 0;
            return WAIT_ABANDONED;
        case EOWNERDEAD: // one abandonment, also of a closer killed between its flag and its unlock
            state_->abandoned = 0;
            pthread_mutex_consistent(mutex_);
            return WAIT_ABANDONED;
        case EBUSY:
        case ETIMEDOUT:
            return WAIT_TIMEOUT;
        default:
            ovo::posix::setLastErrorFromErrno(result);
            return WAIT_FAILED;
        }
    }

    // Holders keep the mutex for a short copy: a while of watching it, with a try whenever
    // it looks free, spares both sides a sleep in the kernel. EBUSY when it stayed taken.
    int spinWhileHeld()
    {
        for (int round = 0;; ++round) {
            const int result = pthread_mutex_trylock(mutex_);
            if (result != EBUSY || round == 50)
                return result;
            for (int i = 0; i < 16 && __atomic_load_n(&mutex_->__data.__lock, __ATOMIC_RELAXED) != 0; ++i) {
#if defined(__x86_64__) || defined(__i386__)
                __builtin_ia32_pause();
#endif
            }
        }
    }

    // A waiter woken by an unlock and killed before it took the mutex, while another thread
    // took it meanwhile, leaves the lock word without its mark of sleeping waiters: the next
    // unlock wakes nobody, and the kernel's repair of the killed thread wakes only when the
    // word is free. Sleeping in slices bounds what such a lost wake-up costs to one slice.
    int lockWithin(DWORD milliseconds)
    {
        const DWORD slice = 200;
        for (DWORD left = milliseconds;;) {
            const DWORD now = milliseconds == INFINITE ? slice : std::min(left, slice);
            const int result = lockBefore(now);
            if (result != ETIMEDOUT || (milliseconds != INFINITE && (left -= now) == 0))
                return result;
        }
    }

    int lockByPolling(DWORD milliseconds)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        for (;;) {
            const int result = pthread_mutex_trylock(mutex_);
            if (result != EBUSY || (milliseconds != INFINITE && std::chrono::steady_clock::now() >= end))
                return result;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    // timedlock takes the wall clock; a clock step during the wait moves its end.
    int lockBefore(DWORD milliseconds)
    {
        timespec deadline;
        clock_gettime(CLOCK_REALTIME, &deadline);
        deadline.tv_sec += milliseconds / 1000;
        deadline.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000L;
        if (deadline.tv_nsec >= 1000000000L) {
            deadline.tv_sec += 1;
            deadline.tv_nsec -= 1000000000L;
        }
        return pthread_mutex_timedlock(mutex_, &deadline);
    }

    BOOL release()
    {
        const int result = pthread_mutex_unlock(mutex_);
        if (result == 0)
            return TRUE;
        SetLastError(result == EPERM ? ERROR_NOT_OWNER : ovo::posix::setLastErrorFromErrno(result));
        return FALSE;
    }

private:
    static KeptMutexes& keptMutexes()
    {
        static auto* kept = new KeptMutexes; // never destroyed, as the pages it keeps
        return *kept;
    }

    MutexState* state_;
    pthread_mutex_t* mutex_;
};

class EventObject final : public WaitableObject {
public:
    static const unsigned kinds = waitableKind | eventKind;

    EventObject(std::shared_ptr<NamedObject> object, DWORD access)
        : WaitableObject(kinds, std::move(object), access),
          word_(static_cast<std::atomic<std::uint32_t>*>(object_->state()))
    {
    }

    static void initialize(void* state) { new (state) std::atomic<std::uint32_t>(0); }

    DWORD wait(DWORD milliseconds) override
    {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
        for (;;) {
            std::uint32_t set = 1;
            if (word_->compare_exchange_strong(set, 0))
                return WAIT_OBJECT_0;
            timespec remaining = {};
            if (milliseconds != INFINITE) {
                const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - Clock::now()).count();
                if (left <= 0)
                    return WAIT_TIMEOUT;
                remaining.tv_sec = static_cast<time_t>(left / 1000000000);
                remaining.tv_nsec = static_cast<long>(left % 1000000000);
            }
            // Sleeps only while the word is still 0; wakes on SetEvent, a signal or the end.
            syscall(SYS_futex, word_, FUTEX_WAIT, 0, milliseconds == INFINITE ? nullptr : &remaining, nullptr, 0);
        }
    }

    void set()
    {
        word_->store(1);
        syscall(SYS_futex, word_, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    }

private:
    std::atomic<std::uint32_t>* word_;
};
static_assert(sizeof(std::atomic<std::uint32_t>) == 4, "a futex word");

} // namespace

HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES security, BOOL initialOwner, LPCSTR name)
{
    bool existed = false;
    HANDLE handle = handleOf<MutexObject>(
        NamedObject::create(ObjectKind::mutex, name, security, MUTEX_ALL_ACCESS, 0, &MutexObject::initialize, existed),
        MUTEX_ALL_ACCESS);
    if (handle != nullptr && initialOwner && !existed) {
        const DWORD result = GetLastError();
        WaitForSingleObject(handle, 0);
        SetLastError(result);
    }
    return handle;
}

HANDLE OpenMutexA(DWORD desiredAccess, BOOL, LPCSTR name)
{
    return handleOf<MutexObject>(NamedObject::open(ObjectKind::mutex, name, desiredAccess), desiredAccess);
}

BOOL ReleaseMutex(HANDLE mutex)
{
    MutexObject* const object = ovo::posix::objectOf<MutexObject>(mutex);
    return object != nullptr ? object->release() : FALSE;
}

HANDLE CreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL initialState, LPCSTR name)
{
    if (manualReset) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    bool existed = false;
    HANDLE handle = handleOf<EventObject>(
        NamedObject::create(ObjectKind::event, name, security, EVENT_ALL_ACCESS, 0, &EventObject::initialize, existed),
        EVENT_ALL_ACCESS);
    if (handle != nullptr && initialState && !existed)
        SetEvent(handle);
    return handle;
}

BOOL SetEvent(HANDLE event)
{
    EventObject* const object = ovo::posix::objectOf<EventObject>(event);
    if (object == nullptr)
        return FALSE;
    if (!object->allows(EVENT_MODIFY_STATE)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    object->set();
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds)
{
    WaitableObject* const waitable = ovo::posix::objectOf<WaitableObject>(object);
    if (waitable == nullptr)
        return WAIT_FAILED;
    if (!waitable->allows(SYNCHRONIZE)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return WAIT_FAILED;
    }
    if (waitable->is(MutexObject::kinds)) // the hot path of every named mutex: a direct call
        return static_cast<MutexObject*>(waitable)->wait(milliseconds);
    return waitable->wait(milliseconds);
}
