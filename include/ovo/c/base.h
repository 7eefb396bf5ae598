/** @file
 * The C interface: what all its functions share.
 *
 * Plain C89 for any compiler and any language that calls C: opaque handles, plain types
 * and byte buffers cross it, nothing else. Each handle is made by an `_open` function and
 * ended by its `_close` (a list by its `_free`), always the library's own: a caller never
 * frees what the library gives with its own `free`. Every function that can fail answers
 * an #ovo_status; below zero it failed, and ovo_last_error() tells why in the library's
 * own words. No exception leaves a function of the C interface.
 */
#ifndef OVO_C_BASE_H
#define OVO_C_BASE_H

#include <ovo/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What a function of the C interface answers: one of #ovo_status_code. Zero and above is
 * an answer, below zero a failure whose text ovo_last_error() gives. */
typedef int ovo_status;

/** The values of #ovo_status. */
enum ovo_status_code {
    /** Done. */
    OVO_OK = 0,
    /** The time ran out: no card event came, the mutex stayed held, or the serial port's
     * time-outs ended a transfer short. */
    OVO_TIMEOUT = 1,
    /** The card monitor was stopped. */
    OVO_STOPPED = 2,
    /** The message channel holds no message of that identifier. */
    OVO_EMPTY = 3,
    /** The message channel has no room for the message; nothing was sent. */
    OVO_FULL = 4,
    /** A null handle or pointer, or a value or text that the library refuses. */
    OVO_ERROR_ARGUMENT = -1,
    /** The platform or a service failed (the text carries its code). */
    OVO_ERROR_SYSTEM = -2,
    /** Memory ran out. */
    OVO_ERROR_MEMORY = -3,
    /** A failure of an unknown kind. */
    OVO_ERROR_INTERNAL = -4
};

/** The text of the last failure of a C function on the calling thread, such as
 * "can't open '/dev/ttyUSB3'. error = 2"; "" before the first. A later failure on the same
 * thread replaces it, an answer of zero or above leaves it as it is.
 * @return text owned by the library, valid on this thread until its next failure. */
OVO_API const char* OVO_CDECL ovo_last_error(void);

/** The version of the library that runs, "MAJOR.MINOR.PATCH".
 * @return a constant text of the library. */
OVO_API const char* OVO_CDECL ovo_version(void);

/** A logger of the process-wide registry, found by name with ovo_logger_get(). */
typedef struct ovo_logger ovo_logger;

#ifdef __cplusplus
}
#endif

#endif
