/** @file
 * The C interface of the objects that processes of one login session share by name: the
 * message channel, the mutex and the event.
 */
#ifndef OVO_C_IPC_H
#define OVO_C_IPC_H

#include <ovo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A bounded queue of byte messages in shared memory, up to 256 of them. Any thread may
 * send and count; one thread at a time receives, since a received message's bytes belong
 * to the handle until its next receive. */
typedef struct ovo_channel ovo_channel;
/** A mutex of threads of any process; robust: a holder that died leaves it to the next. */
typedef struct ovo_mutex ovo_mutex;
/** An event that resets by itself: one set lets one wait through. */
typedef struct ovo_event ovo_event;

/** Creates the channel of that name, empty, or joins it.
 * @param name the channel's name, the same in every process
 * @param size the block's bytes, at least 4113 (the table), the same in every process
 * @param channel receives the handle, to be closed with ovo_channel_close()
 * @return #OVO_OK, or a failure (a size below 4113, a name the platform refuses). */
OVO_API ovo_status OVO_CDECL ovo_channel_open(const char* name, unsigned int size, ovo_channel** channel);
/** Appends a message behind the others.
 * @param channel the channel
 * @param id the message's identifier, 1 and above
 * @param data the body (may be NULL when size is 0)
 * @param size its number of bytes
 * @return #OVO_OK; #OVO_FULL, with nothing sent, when the table is full or the body does
 *         not fit the room left; or a failure. */
OVO_API ovo_status OVO_CDECL ovo_channel_send(ovo_channel* channel, unsigned int id, const void* data,
                                              unsigned int size);
/** Takes the oldest message with that identifier (0: the oldest of all). Nothing waits:
 * poll for a message that is yet to come.
 * @param channel the channel
 * @param id the identifier, or 0
 * @param data receives the body, which the handle keeps until its next receive
 * @param size receives the body's number of bytes
 * @return #OVO_OK; #OVO_EMPTY when there is none; or a failure. */
OVO_API ovo_status OVO_CDECL ovo_channel_receive(ovo_channel* channel, unsigned int id, const void** data,
                                                 unsigned int* size);
/** The number of messages in the queue.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_channel_count(ovo_channel* channel, unsigned int* count);
/** Leaves the channel; it ends with the last process that holds it. NULL is allowed. */
OVO_API void OVO_CDECL ovo_channel_close(ovo_channel* channel);

/** Creates the mutex of that name, not held, or joins it.
 * @param name the mutex's name
 * @param mutex receives the handle, to be closed with ovo_mutex_close()
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_mutex_open(const char* name, ovo_mutex** mutex);
/** Waits without limit until this thread holds the mutex.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_mutex_lock(ovo_mutex* mutex);
/** Waits at most milliseconds (0: a test; a negative number: without limit) for the mutex.
 * @return #OVO_OK when this thread holds it now; #OVO_TIMEOUT when it does not (the time
 *         ran out, or a dead holder had left it and it is free again); or a failure. */
OVO_API ovo_status OVO_CDECL ovo_mutex_try_lock(ovo_mutex* mutex, int milliseconds);
/** Ends this thread's hold of the mutex.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_mutex_unlock(ovo_mutex* mutex);
/** Closes this handle without unlocking. NULL is allowed. */
OVO_API void OVO_CDECL ovo_mutex_close(ovo_mutex* mutex);

/** Creates the event of that name, not set. The event grants others only the right to
 * wait, so a second open of a live name fails: share the handle between threads.
 * @param name the event's name
 * @param event receives the handle, to be closed with ovo_event_close()
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_event_open(const char* name, ovo_event** event);
/** Lets one waiter through, or the next wait if none waits.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_event_set(ovo_event* event);
/** Waits without limit until the event is set, and clears it.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_event_wait(ovo_event* event);
/** Closes this handle. NULL is allowed. */
OVO_API void OVO_CDECL ovo_event_close(ovo_event* event);

#ifdef __cplusplus
}
#endif

#endif
