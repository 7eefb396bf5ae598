// The message channel and the named mutex between processes, against their peers in the
// same run: Boost.Interprocess's message_queue and named_mutex, POSIX message queues, and a
// bare robust process-shared pthread mutex (the floor of a named mutex here).
//
// Ping-pong, the latency: one round trip through two queues between two processes.
// Throughput, scheduling-bound: a forked sender process and this process as the receiver
// move 50,000 messages of 64 bytes through queues of a depth of 1, 16, 64 and 256 messages;
// both poll, so the figures show how the two processes share the machine's cores more
// than the queues (channel_bench measures the structure). Mutex: an uncontended lock and
// unlock.
#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/system_mutex.h>

#include "ratio_report.h"

#include <benchmark/benchmark.h>
#include <boost/interprocess/ipc/message_queue.hpp>
#include <boost/interprocess/sync/named_mutex.hpp>

#include <fcntl.h>
#include <mqueue.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>

namespace {

namespace bip = boost::interprocess;

const unsigned messageSize = 64;
const unsigned slots = 256;

std::string uniqueName(const char* what) { return std::string("ovobench-") + what + "-" + std::to_string(getpid()); }

// Runs `child` in a forked process and gives its pid; the child ends with it.
template <typename Child>
pid_t forkChild(Child child)
{
    const pid_t pid = fork();
    if (pid == 0) {
        child();
        _exit(0);
    }
    return pid;
}

// How a polling peer of a channel waits for room or a message, afresh for each: a short
// pause off the lock, so that the other side gets it, for the first tries; then it gives
// its processor up at each try, as the peer may be waiting for one. (A sleep would cost
// a wake-up for every message of a short queue.)
class BackOff {
public:
    void operator()()
    {
        if (++tries_ >= 16) {
            sched_yield();
            return;
        }
        for (int i = 0; i < 8; ++i)
            __builtin_ia32_pause();
    }

private:
    unsigned tries_ = 0;
};

void reap(pid_t pid)
{
    int status;
    waitpid(pid, &status, 0);
}

// --- throughput at a queue depth, scheduling-bound ---------------------------------------
// Each queue holds at most `depth` messages of 64 bytes (a channel of minimumSize plus
// that many bodies), and the sender keeps it nearly full.

const unsigned sweepMessages = 50000;
const int depths[] = {1, 16, 64, 256};

unsigned depthOf(const benchmark::State& state) { return static_cast<unsigned>(state.range(0)); }

void messageChannelThroughput(benchmark::State& state)
{
    const std::string name = uniqueName("channel");
    const unsigned size = ovo::ipc::MessageChannel::minimumSize + depthOf(state) * messageSize;
    ovo::ipc::MessageChannel receiver(name, size);
    unsigned char buffer[messageSize] = {};
    for (auto _ : state) {
        const pid_t sender = forkChild([&] {
            ovo::ipc::MessageChannel channel(name, size);
            unsigned char body[messageSize] = {};
            for (unsigned i = 0; i < sweepMessages; ++i)
                for (BackOff backOff; !channel.send(1, body, messageSize);)
                    backOff();
        });
        for (unsigned i = 0; i < sweepMessages; ++i)
            for (BackOff backOff; !receiver.recv(1, buffer, messageSize);)
                backOff();
        reap(sender);
    }
    state.SetItemsProcessed(state.iterations() * sweepMessages);
}
BENCHMARK(messageChannelThroughput)->ArgName("depth")->Arg(1)->Arg(16)->Arg(64)->Arg(256)
    ->Unit(benchmark::kMillisecond)->UseRealTime();

void boostQueueThroughput(benchmark::State& state)
{
    const std::string name = uniqueName("boostq");
    bip::message_queue::remove(name.c_str());
    bip::message_queue queue(bip::create_only, name.c_str(), depthOf(state), messageSize);
    unsigned char buffer[messageSize] = {};
    for (auto _ : state) {
        const pid_t sender = forkChild([&] {
            bip::message_queue peer(bip::open_only, name.c_str());
            unsigned char body[messageSize] = {};
            for (unsigned i = 0; i < sweepMessages; ++i)
                peer.send(body, messageSize, 0);
        });
        bip::message_queue::size_type received;
        unsigned int priority;
        for (unsigned i = 0; i < sweepMessages; ++i)
            queue.receive(buffer, messageSize, received, priority);
        reap(sender);
    }
    bip::message_queue::remove(name.c_str());
    state.SetItemsProcessed(state.iterations() * sweepMessages);
}
BENCHMARK(boostQueueThroughput)->ArgName("depth")->Arg(1)->Arg(16)->Arg(64)->Arg(256)
    ->Unit(benchmark::kMillisecond)->UseRealTime();

// The system caps the depth of a queue (/proc/sys/fs/mqueue/msg_max, often 10) unless the
// process may exceed it; deeper queues are then skipped.
void posixQueueThroughput(benchmark::State& state)
{
    const std::string name = "/" + uniqueName("mq");
    mq_attr attributes = {};
    attributes.mq_maxmsg = depthOf(state);
    attributes.mq_msgsize = messageSize;
    const mqd_t queue = mq_open(name.c_str(), O_CREAT | O_RDWR, 0600, &attributes);
    if (queue == mqd_t(-1)) {
        state.SkipWithError("mq_open refused the depth (see /proc/sys/fs/mqueue/msg_max)");
        return;
    }
    char buffer[messageSize] = {};
    for (auto _ : state) {
        const pid_t sender = forkChild([&] {
            const mqd_t peer = mq_open(name.c_str(), O_WRONLY);
            char body[messageSize] = {};
            for (unsigned i = 0; i < sweepMessages; ++i)
                mq_send(peer, body, messageSize, 0);
        });
        for (unsigned i = 0; i < sweepMessages; ++i)
            mq_receive(queue, buffer, messageSize, nullptr);
        reap(sender);
    }
    mq_close(queue);
    mq_unlink(name.c_str());
    state.SetItemsProcessed(state.iterations() * sweepMessages);
}
BENCHMARK(posixQueueThroughput)->ArgName("depth")->Arg(1)->Arg(16)->Arg(64)->Arg(256)
    ->Unit(benchmark::kMillisecond)->UseRealTime();

// --- ping-pong --------------------------------------------------------------------------

const unsigned char stop = 0xFF;

void messageChannelPingPong(benchmark::State& state)
{
    const std::string name = uniqueName("pingpong");
    const unsigned size = ovo::ipc::MessageChannel::minimumSize + slots * messageSize;
    ovo::ipc::MessageChannel ping(name + "-ping", size), pong(name + "-pong", size);
    const pid_t echo = forkChild([&] {
        ovo::ipc::MessageChannel in(name + "-ping", size), out(name + "-pong", size);
        unsigned char body[messageSize] = {};
        do {
            while (!in.recv(0, body, messageSize))
                std::this_thread::yield();
            out.send(1, body, messageSize);
        } while (body[0] != stop);
    });
    unsigned char body[messageSize] = {};
    for (auto _ : state) {
        ping.send(1, body, messageSize);
        while (!pong.recv(0, body, messageSize))
            std::this_thread::yield();
    }
    body[0] = stop;
    ping.send(1, body, messageSize);
    reap(echo);
}
BENCHMARK(messageChannelPingPong)->UseRealTime();

void boostQueuePingPong(benchmark::State& state)
{
    const std::string ping = uniqueName("bping"), pong = uniqueName("bpong");
    bip::message_queue::remove(ping.c_str());
    bip::message_queue::remove(pong.c_str());
    bip::message_queue out(bip::create_only, ping.c_str(), slots, messageSize);
    bip::message_queue in(bip::create_only, pong.c_str(), slots, messageSize);
    const pid_t echo = forkChild([&] {
        bip::message_queue peerIn(bip::open_only, ping.c_str()), peerOut(bip::open_only, pong.c_str());
        unsigned char body[messageSize] = {};
        bip::message_queue::size_type received;
        unsigned int priority;
        do {
            peerIn.receive(body, messageSize, received, priority);
            peerOut.send(body, messageSize, 0);
        } while (body[0] != stop);
    });
    unsigned char body[messageSize] = {};
    bip::message_queue::size_type received;
    unsigned int priority;
    for (auto _ : state) {
        out.send(body, messageSize, 0);
        in.receive(body, messageSize, received, priority);
    }
    body[0] = stop;
    out.send(body, messageSize, 0);
    reap(echo);
    bip::message_queue::remove(ping.c_str());
    bip::message_queue::remove(pong.c_str());
}
BENCHMARK(boostQueuePingPong)->UseRealTime();

// --- uncontended mutex ------------------------------------------------------------------

void systemMutexLockUnlock(benchmark::State& state)
{
    ovo::ipc::SystemMutex mutex(uniqueName("mutex"));
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}
BENCHMARK(systemMutexLockUnlock);

void boostNamedMutexLockUnlock(benchmark::State& state)
{
    const std::string name = uniqueName("bmutex");
    bip::named_mutex::remove(name.c_str());
    bip::named_mutex mutex(bip::create_only, name.c_str());
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
    bip::named_mutex::remove(name.c_str());
}
BENCHMARK(boostNamedMutexLockUnlock);

void robustPthreadMutexLockUnlock(benchmark::State& state)
{
    void* memory = mmap(nullptr, sizeof(pthread_mutex_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* mutex = static_cast<pthread_mutex_t*>(memory);
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(mutex, &attributes);
    for (auto _ : state) {
        pthread_mutex_lock(mutex);
        pthread_mutex_unlock(mutex);
    }
    pthread_mutex_destroy(mutex);
    munmap(memory, sizeof(pthread_mutex_t));
}
BENCHMARK(robustPthreadMutexLockUnlock);

} // namespace

int main(int argc, char** argv)
{
    std::vector<ovo_bench::Comparison> comparisons{
        {"messageChannelPingPong/real_time", "boostQueuePingPong/real_time", 1.0},
        {"systemMutexLockUnlock", "robustPthreadMutexLockUnlock", 1.5},
        {"systemMutexLockUnlock", "boostNamedMutexLockUnlock", 0}};
    // The throughput ratios carry no target: they are scheduling-bound.
    for (int depth : depths) {
        const std::string at = "Throughput/depth:" + std::to_string(depth) + "/real_time";
        comparisons.push_back({"messageChannel" + at, "boostQueue" + at, 0});
        comparisons.push_back({"messageChannel" + at, "posixQueue" + at, 0});
    }
    const int status = ovo_bench::runAndCompare(argc, argv, comparisons);
    std::printf("Throughput ratios are scheduling-bound (two polling processes); channel_bench has the structure's.\n");
    return status;
}
