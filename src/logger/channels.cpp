#include <ovo/logger/channels.h>

#include <iostream>
#include <utility>

namespace ovo {
namespace logger {

namespace {

// One for the whole process: every console channel ends on the one stream.
std::mutex consoleMutex;

} // namespace

ConsoleLogChannel::ConsoleLogChannel() = default;
ConsoleLogChannel::ConsoleLogChannel(const ConsoleLogChannel&) = default;
ConsoleLogChannel::ConsoleLogChannel(ConsoleLogChannel&&) noexcept = default;
ConsoleLogChannel& ConsoleLogChannel::operator=(const ConsoleLogChannel&) = default;
ConsoleLogChannel& ConsoleLogChannel::operator=(ConsoleLogChannel&&) noexcept = default;
ConsoleLogChannel::~ConsoleLogChannel() = default;

void ConsoleLogChannel::write(const std::string& name, const std::string& message)
{
    if (!formatter())
        return;
    // The formatter runs inside the lock, so lines leave in the order of their locking.
    std::lock_guard<std::mutex> lock(consoleMutex);
    std::clog << formatter()->format(name, message);
}

SplitLogChannel::SplitLogChannel() = default;

SplitLogChannel::~SplitLogChannel()
{
    for (auto& member : members_) // from the first to the last
        member.reset();
}

void SplitLogChannel::add(std::shared_ptr<ILogChannel> channel)
{
    std::lock_guard<std::mutex> lock(mutex_);
    members_.push_back(std::move(channel));
}

void SplitLogChannel::write(const std::string& name, const std::string& message)
{
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& member : members_) {
        const std::shared_ptr<ILogChannel> held = member;
        held->write(name, message);
    }
}

} // namespace logger
} // namespace ovo
