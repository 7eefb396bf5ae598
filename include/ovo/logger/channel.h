/// @file
/// Where log text goes: the channel interface and the base of the concrete channels.
#ifndef OVO_LOGGER_CHANNEL_H
#define OVO_LOGGER_CHANNEL_H

#include <ovo/export.h>
#include <ovo/logger/formatter.h>

#include <memory>
#include <string>

namespace ovo {
namespace logger {

/// Where log text goes. A channel receives the logger's name and the text the logger
/// built, formats it with its formatter and delivers it. Channels know no levels.
///
/// write is called from the threads that log; setFormatter and setProperty belong to the
/// set-up, before other threads use the channel.
class ILogChannel {
public:
    /// Channels are shared handles: the last holder destroys the channel.
    virtual ~ILogChannel() = default;
    /// Formats message of the logger called name and delivers it. A channel reports no
    /// failure of delivery: a message it cannot deliver is lost.
    virtual void write(const std::string& name, const std::string& message) = 0;
    /// The formatter that write uses from now on (shared; null for none).
    virtual void setFormatter(std::shared_ptr<IMessageFormatter> formatter) = 0;
    /// Sets one of the channel's named settings; a key it does not know is ignored.
    virtual void setProperty(const std::string& key, const std::string& value) = 0;
};

/// Base of the concrete channels: holds the formatter (none at first) and ignores every
/// property. Copies share the formatter; a move takes it. A channel without a formatter
/// delivers nothing.
class OVO_API AbstractLogChannel : public ILogChannel {
public:
    /// A channel without a formatter.
    AbstractLogChannel();
    /// Copies share the formatter; a move takes it.
    ///@{
    AbstractLogChannel(const AbstractLogChannel& other);
    AbstractLogChannel(AbstractLogChannel&& other) noexcept;
    AbstractLogChannel& operator=(const AbstractLogChannel& other);
    AbstractLogChannel& operator=(AbstractLogChannel&& other) noexcept;
    ///@}
    /// Gives up this channel's share of its formatter.
    ~AbstractLogChannel() override;

    /// Keeps formatter (shared) for write. Set-up only: not safe while other threads write.
    void setFormatter(std::shared_ptr<IMessageFormatter> formatter) override;
    /// Ignores every key.
    void setProperty(const std::string& key, const std::string& value) override;

protected:
    /// The formatter, null while none is set.
    ///
    /// Set up before other threads use the channel; read without a lock afterwards.
    const std::shared_ptr<IMessageFormatter>& formatter() const { return formatter_; }

private:
    std::shared_ptr<IMessageFormatter> formatter_;
};

} // namespace logger
} // namespace ovo

#endif
