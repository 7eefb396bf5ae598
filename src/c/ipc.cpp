// The C interface of the named objects: message channel, mutex and event.
#include "c/guard.h"

#include <ovo/c/ipc.h>
#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>

#include <vector>

using ovo_c::guarded;
using ovo_c::required;

struct ovo_channel {
    ovo_channel(const char* name, unsigned int size) : channel(name, size) {}
    ovo::ipc::MessageChannel channel;
    std::vector<unsigned char> received; // the last message taken, until the next receive
};

struct ovo_mutex {
    explicit ovo_mutex(const char* name) : mutex(name) {}
    ovo::ipc::SystemMutex mutex;
};

struct ovo_event {
    explicit ovo_event(const char* name) : event(name) {}
    ovo::ipc::SystemEvent event;
};

extern "C" {

ovo_status ovo_channel_open(const char* name, unsigned int size, ovo_channel** channel)
{
    return guarded(__func__, [&] {
        ovo_channel*& made = required(channel, "channel");
        made = new ovo_channel(&required(name, "name"), size);
        return OVO_OK;
    });
}

ovo_status ovo_channel_send(ovo_channel* channel, unsigned int id, const void* data, unsigned int size)
{
    return guarded(__func__, [&] {
        ovo::ipc::MessageChannel& queue = required(channel, "channel").channel;
        ovo_c::requireBytes(data, size, "data");
        const unsigned char nothing = 0;
        const void* body = size == 0 ? &nothing : data;
        return queue.send(id, body, size) ? OVO_OK : OVO_FULL;
    });
}

ovo_status ovo_channel_receive(ovo_channel* channel, unsigned int id, const void** data, unsigned int* size)
{
    return guarded(__func__, [&] {
        ovo_channel& handle = required(channel, "channel");
        required(data, "data");
        required(size, "size");
        if (!handle.channel.recv(id, handle.received))
            return OVO_EMPTY;
        *data = handle.received.data();
        *size = static_cast<unsigned int>(handle.received.size());
        return OVO_OK;
    });
}

ovo_status ovo_channel_count(ovo_channel* channel, unsigned int* count)
{
    return guarded(__func__, [&] {
        required(count, "count") = required(channel, "channel").channel.inQueue();
        return OVO_OK;
    });
}

void ovo_channel_close(ovo_channel* channel) { delete channel; }

ovo_status ovo_mutex_open(const char* name, ovo_mutex** mutex)
{
    return guarded(__func__, [&] {
        ovo_mutex*& made = required(mutex, "mutex");
        made = new ovo_mutex(&required(name, "name"));
        return OVO_OK;
    });
}

ovo_status ovo_mutex_lock(ovo_mutex* mutex)
{
    return guarded(__func__, [&] {
        required(mutex, "mutex").mutex.lock();
        return OVO_OK;
    });
}

ovo_status ovo_mutex_try_lock(ovo_mutex* mutex, int milliseconds)
{
    return guarded(__func__, [&] {
        return required(mutex, "mutex").mutex.tryLock(milliseconds < 0 ? -1 : milliseconds) ? OVO_OK : OVO_TIMEOUT;
    });
}

ovo_status ovo_mutex_unlock(ovo_mutex* mutex)
{
    return guarded(__func__, [&] {
        required(mutex, "mutex").mutex.unlock();
        return OVO_OK;
    });
}

void ovo_mutex_close(ovo_mutex* mutex) { delete mutex; }

ovo_status ovo_event_open(const char* name, ovo_event** event)
{
    return guarded(__func__, [&] {
        ovo_event*& made = required(event, "event");
        made = new ovo_event(&required(name, "name"));
        return OVO_OK;
    });
}

ovo_status ovo_event_set(ovo_event* event)
{
    return guarded(__func__, [&] {
        required(event, "event").event.set();
        return OVO_OK;
    });
}

ovo_status ovo_event_wait(ovo_event* event)
{
    return guarded(__func__, [&] {
        required(event, "event").event.wait();
        return OVO_OK;
    });
}

void ovo_event_close(ovo_event* event) { delete event; }

} // extern "C"
