// Where log text goes. A channel receives the logger's name and the text the logger
// built, formats it with its formatter and delivers it. Channels know no levels.
#ifndef OVO_LOGGER_CHANNEL_H
#define OVO_LOGGER_CHANNEL_H

#include <ovo/export.h>
#include <ovo/logger/formatter.h>

#include <memory>
#include <string>

namespace ovo {
namespace logger {

class ILogChannel {
public:
    virtual ~ILogChannel() = default;
    virtual void write(const std::string& name, const std::string& message) = 0;
    virtual void setFormatter(std::shared_ptr<IMessageFormatter> formatter) = 0;
    virtual void setProperty(const std::string& key, const std::string& value) = 0;
};

// Base of the concrete channels: holds the formatter (none at first) and ignores every
// property. Copies share the formatter; a move takes it. A channel without a formatter
// delivers nothing.
class OVO_API AbstractLogChannel : public ILogChannel {
public:
    AbstractLogChannel();
    AbstractLogChannel(const AbstractLogChannel& other);
    AbstractLogChannel(AbstractLogChannel&& other) noexcept;
    AbstractLogChannel& operator=(const AbstractLogChannel& other);
    AbstractLogChannel& operator=(AbstractLogChannel&& other) noexcept;
    ~AbstractLogChannel() override;

    void setFormatter(std::shared_ptr<IMessageFormatter> formatter) override;
    void setProperty(const std::string& key, const std::string& value) override;

protected:
    // Set up before other threads use the channel; read without a lock afterwards.
    const std::shared_ptr<IMessageFormatter>& formatter() const { return formatter_; }

private:
    std::shared_ptr<IMessageFormatter> formatter_;
};

} // namespace logger
} // namespace ovo

#endif
