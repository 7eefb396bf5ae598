/** @file
 * The C interface of logging: the root logger to the console and a daily file, loggers by
 * name, messages at a level, and traced bytes.
 *
 * Set up first, before loggers are taken by name and before other threads log: a logger
 * copies its channel and level from its nearest ancestor when it is first taken.
 */
#ifndef OVO_C_LOG_H
#define OVO_C_LOG_H

#include <ovo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The two families of messages. A logger's level lets the info family pass from 0, the
 * trace family too from 1; below 0 nothing passes. */
enum ovo_log_level {
    /** What happens: shown at logger level 0 and above. */
    OVO_LOG_INFO = 0,
    /** The traffic: shown at logger level 1 and above. */
    OVO_LOG_TRACE = 1
};

/** Sends the root logger, and so every logger taken later, to the console (standard
 * error, the bare message) and to a daily file (DIRECTORY/YYYY-MM-DD-SUFFIX.log, each line
 * stamped with the time and the logger's name), at a level.
 * @param console nonzero for the console
 * @param directory the daily file's directory, which must exist; NULL for no file
 * @param suffix the file name's suffix; NULL or "" for YYYY-MM-DD.log
 * @param level the root's level (see #ovo_log_level)
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_log_setup(int console, const char* directory, const char* suffix, int level);

/** The logger of that name ("reader.pcsc"; "" is the root), made on first demand from its
 * nearest ancestor. It lives as long as the process; any thread may use it.
 * @param name the dotted name
 * @param logger receives the logger
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_logger_get(const char* name, ovo_logger** logger);

/** Sets a logger's level: below 0 nothing passes, 0 the info family, 1 and above the trace
 * family too. Set-up only, before other threads log.
 * @param logger the logger
 * @param level the new level
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_logger_set_level(ovo_logger* logger, int level);

/** Logs a message of a family.
 * @param logger the logger
 * @param family #OVO_LOG_INFO or #OVO_LOG_TRACE
 * @param message the text, never used as a format
 * @return #OVO_OK (also when the level filters the message out), or a failure. */
OVO_API ovo_status OVO_CDECL ovo_log_message(ovo_logger* logger, int family, const char* message);

/** Logs bytes on one line: the title, then "XX " for each byte ("-> 00 A4 04 00 ").
 * @param logger the logger
 * @param family #OVO_LOG_INFO or #OVO_LOG_TRACE
 * @param title the text before the bytes
 * @param data the bytes (may be NULL when size is 0)
 * @param size their number
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_log_bytes(ovo_logger* logger, int family, const char* title, const void* data,
                                           unsigned int size);

/** Logs bytes as a dump: the title, then 16 bytes a line with their offset and text.
 * @param logger the logger
 * @param family #OVO_LOG_INFO or #OVO_LOG_TRACE
 * @param title the text before the dump
 * @param data the bytes
 * @param size their number, at least 1 when the message passes
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_log_dump(ovo_logger* logger, int family, const char* title, const void* data,
                                          unsigned int size);

#ifdef __cplusplus
}
#endif

#endif
