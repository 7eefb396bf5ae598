// A channel that keeps what it receives, for tests that look at what a logger delivers.
#ifndef OVO_TESTS_SUPPORT_RECORDING_CHANNEL_H
#define OVO_TESTS_SUPPORT_RECORDING_CHANNEL_H

#include <ovo/logger/channel.h>

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ovo_test {

class RecordingChannel : public ovo::logger::AbstractLogChannel {
public:
    using Entry = std::pair<std::string, std::string>; // the logger's name, the message

    void write(const std::string& name, const std::string& message) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back({name, message});
    }

    std::vector<Entry> entries() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return entries_;
    }

    std::vector<std::string> messages() const
    {
        std::vector<std::string> result;
        for (const Entry& entry : entries())
            result.push_back(entry.second);
        return result;
    }

private:
    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
};

} // namespace ovo_test

#endif
