#include <ovo/logger/channel.h>

#include <utility>

namespace ovo {
namespace logger {

AbstractLogChannel::AbstractLogChannel() = default;
AbstractLogChannel::AbstractLogChannel(const AbstractLogChannel& other) = default;
AbstractLogChannel::AbstractLogChannel(AbstractLogChannel&& other) noexcept = default;
AbstractLogChannel& AbstractLogChannel::operator=(const AbstractLogChannel& other) = default;
AbstractLogChannel& AbstractLogChannel::operator=(AbstractLogChannel&& other) noexcept = default;
AbstractLogChannel::~AbstractLogChannel() = default;

void AbstractLogChannel::setFormatter(std::shared_ptr<IMessageFormatter> formatter)
{
    formatter_ = std::move(formatter);
}

void AbstractLogChannel::setProperty(const std::string&, const std::string&) {}

} // namespace logger
} // namespace ovo
