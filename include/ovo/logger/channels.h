/// @file
/// The console channel and the fan-out channel.
#ifndef OVO_LOGGER_CHANNELS_H
#define OVO_LOGGER_CHANNELS_H

#include <ovo/export.h>
#include <ovo/logger/channel.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ovo {
namespace logger {

/// Writes log text to the standard log stream (std::clog).
///
/// Formats and inserts each message into std::clog under one process-wide console mutex,
/// so that lines of all threads and all console channels never mix. Adds no line end and
/// does not flush. Without a formatter it writes nothing. write is safe from any thread;
/// it reports no failure.
class OVO_API ConsoleLogChannel : public AbstractLogChannel {
public:
    /// A console channel without a formatter.
    ConsoleLogChannel();
    /// Copies share the formatter; a move takes it.
    ///@{
    ConsoleLogChannel(const ConsoleLogChannel& other);
    ConsoleLogChannel(ConsoleLogChannel&& other) noexcept;
    ConsoleLogChannel& operator=(const ConsoleLogChannel& other);
    ConsoleLogChannel& operator=(ConsoleLogChannel&& other) noexcept;
    ///@}
    /// Gives up this channel's share of its formatter; nothing is left to flush.
    ~ConsoleLogChannel() override;

    /// Formats the message and inserts it into std::clog, under the console mutex.
    void write(const std::string& name, const std::string& message) override;
};

/// Hands each message to several channels, in one order for all of them.
///
/// Hands each message, unformatted, to its members in the order they were added, all
/// under its own mutex: every member sees the messages in one order. An exception of a
/// member reaches the caller and the members behind it miss that message. Its formatter
/// and properties are not passed on. A split channel must not contain itself.
/// add and write are safe from any thread.
class OVO_API SplitLogChannel : public AbstractLogChannel {
public:
    /// A split channel without members.
    SplitLogChannel();
    /// Not copyable: the channel owns its lock.
    ///@{
    SplitLogChannel(const SplitLogChannel&) = delete;
    SplitLogChannel& operator=(const SplitLogChannel&) = delete;
    ///@}
    /// Gives up this channel's share of its members and formatter.
    ~SplitLogChannel() override;

    /// Adds channel (shared) behind the members there are; it receives the messages from
    /// the next write on.
    void add(std::shared_ptr<ILogChannel> channel);
    /// Passes name and message to every member in turn.
    /// @throws whatever a member's write throws.
    void write(const std::string& name, const std::string& message) override;

private:
    std::vector<std::shared_ptr<ILogChannel>> members_;
    std::mutex mutex_;
};

} // namespace logger
} // namespace ovo

#endif
