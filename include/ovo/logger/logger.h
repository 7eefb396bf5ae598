/// @file
/// Named loggers in a process-wide registry.
#ifndef OVO_LOGGER_LOGGER_H
#define OVO_LOGGER_LOGGER_H

#include <ovo/export.h>
#include <ovo/logger/channel.h>

#include <memory>
#include <string>

namespace ovo {
namespace logger {

/// A named logger: tests its level and hands the text it builds to its channel.
///
/// Levels: below 0 nothing passes, 0 lets the info family pass, 1 or more the trace
/// family too. A filtered message costs one comparison and builds no text.
///
/// A logger reports no failure of its own; exceptions of NumberFormatter (a dump of 0
/// bytes: std::out_of_range "invalid string position") and of the channel's write pass
/// through to the caller. The logging operations take no lock and may run in any number
/// of threads at once; setChannel and setLevel belong to the set-up, before other threads
/// log.
///
/// Loggers by name, a level, traced bytes (from logging.cpp):
/// @snippet logging.cpp loggers
class ILogger {
public:
    /// Loggers belong to the registry: shutdown() destroys them, callers never do.
    virtual ~ILogger() = default;

    /// The channel the logger writes to (a shared handle).
    virtual std::shared_ptr<ILogChannel> channel() const = 0;
    /// Writes to channel from now on; it must not be null.
    ///
    /// Set-up only: a logger reads its channel and level without a lock.
    virtual void setChannel(std::shared_ptr<ILogChannel> channel) = 0;
    /// The level: below 0 nothing passes, 0 the info family, 1 or more the trace family too.
    virtual int level() const = 0;
    /// Sets the level. Set-up only.
    virtual void setLevel(int level) = 0;

    /// message, at level 0 and above. The message is never used as a format string.
    virtual void info(const std::string& message) = 0;
    /// message, a line feed, and the 16-bytes-a-line dump of the buffer, at level 0 and above.
    /// @throws std::out_of_range "invalid string position" for size 0 when the message passes.
    virtual void infoDump(const std::string& message, const void* data, unsigned int size) = 0;
    /// message, ": ", and "XX " for every byte, at level 0 and above.
    virtual void infoHex(const std::string& message, const void* data, unsigned int size) = 0;

    /// message, at level 1 and above.
    virtual void trace(const std::string& message) = 0;
    /// message, a line feed, and the 16-bytes-a-line dump of the buffer, at level 1 and above.
    /// @throws std::out_of_range "invalid string position" for size 0 when the message passes.
    virtual void traceDump(const std::string& message, const void* data, unsigned int size) = 0;
    /// message, " ", and "XX " for every byte, at level 1 and above.
    virtual void traceHex(const std::string& message, const void* data, unsigned int size) = 0;
};

/// Registers a new logger at level 0 with the channel.
///
/// Names are dotted ("reader.pcsc") under the empty root name. If the name is taken
/// already the registry keeps its logger, and the one returned lives outside it until the
/// process ends. The registry functions are safe from any thread and report nothing.
/// @return a reference that stays valid until shutdown().
OVO_API ILogger& add(const std::string& name, std::shared_ptr<ILogChannel> channel);
/// The logger of that name, derived from its nearest ancestor if it does not exist yet.
///
/// A logger made by get() copies the channel handle and the level of its nearest
/// registered ancestor once; later changes on either side stay on that side. Safe from any
/// thread; reports nothing.
/// @return a reference that stays valid until shutdown().
OVO_API ILogger& get(const std::string& name);
/// The root logger (""), made on first demand with a channel that discards.
OVO_API ILogger& root();
/// The null logger ("null"), made on first demand with a channel that discards: the
/// logger of device objects that are given none.
OVO_API ILogger& null();
/// Destroys every registered logger; references handed out before are dead afterwards.
///
/// The registry starts empty again, so a later get() makes fresh loggers. Call it last, if
/// at all, when no other thread logs: no channel needs it, since nothing is buffered.
OVO_API void shutdown();

} // namespace logger
} // namespace ovo

#endif
