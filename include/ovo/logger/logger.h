// Named loggers in a process-wide registry.
//
// Names are dotted ("reader.pcsc") under the empty root name. A logger made by get()
// copies the channel handle and the level of its nearest registered ancestor once;
// later changes on either side stay on that side. The root ("") and null ("null")
// loggers are made on first demand with a channel that discards.
//
// Levels: below 0 nothing passes, 0 lets the info family pass, 1 or more the trace
// family too. A filtered message costs one comparison and builds no text.
#ifndef OVO_LOGGER_LOGGER_H
#define OVO_LOGGER_LOGGER_H

#include <ovo/export.h>
#include <ovo/logger/channel.h>

#include <memory>
#include <string>

namespace ovo {
namespace logger {

class ILogger {
public:
    virtual ~ILogger() = default;

    virtual std::shared_ptr<ILogChannel> channel() const = 0;
    // Set-up only: a logger reads its channel and level without a lock.
    virtual void setChannel(std::shared_ptr<ILogChannel> channel) = 0;
    virtual int level() const = 0;
    virtual void setLevel(int level) = 0;

    // Level 0 and above. The message is never used as a format string.
    virtual void info(const std::string& message) = 0;
    // message, a line feed, and the 16-bytes-a-line dump of the buffer.
    virtual void infoDump(const std::string& message, const void* data, unsigned int size) = 0;
    // message, ": ", and "XX " for every byte.
    virtual void infoHex(const std::string& message, const void* data, unsigned int size) = 0;

    // Level 1 and above.
    virtual void trace(const std::string& message) = 0;
    virtual void traceDump(const std::string& message, const void* data, unsigned int size) = 0;
    // message, " ", and "XX " for every byte.
    virtual void traceHex(const std::string& message, const void* data, unsigned int size) = 0;
};

// Registers a new logger at level 0 with the channel. If the name is taken already the
// registry keeps its logger, and the one returned lives outside it until the process ends.
OVO_API ILogger& add(const std::string& name, std::shared_ptr<ILogChannel> channel);
// The logger of that name, derived from its nearest ancestor if it does not exist yet.
OVO_API ILogger& get(const std::string& name);
OVO_API ILogger& root();
OVO_API ILogger& null();
// Destroys every registered logger; references handed out before are dead afterwards.
// The registry starts empty again, so a later get() makes fresh loggers.
OVO_API void shutdown();

} // namespace logger
} // namespace ovo

#endif
