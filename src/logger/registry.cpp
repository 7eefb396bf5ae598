#include "logger/logger_impl.h"
#include "logger/null_log_channel.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ovo {
namespace logger {

namespace {

const char* const rootName = "";
const char* const nullName = "null";
const char nameSeparator = '.';

class Registry {
public:
    ILogger& add(const std::string& name, std::shared_ptr<ILogChannel> channel)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return registerLogger(name, std::move(channel));
    }

    ILogger& get(const std::string& name)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return lookup(name);
    }

    void shutdown()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto& entry : table_)
            delete entry.second; // in key order: the root first
        // Emptied rather than left dangling, so a stray later get() makes a fresh logger.
        table_.clear();
    }

private:
    // Both run with the mutex held; the mutex is not recursive.
    ILogger& lookup(const std::string& name)
    {
        const auto found = table_.find(name);
        if (found != table_.end())
            return *found->second;
        if (name == rootName || name == nullName)
            return registerLogger(name, std::make_shared<NullLogChannel>());
        ILogger& ancestor = nearestAncestor(name);
        ILogger& logger = registerLogger(name, ancestor.channel());
        logger.setLevel(ancestor.level());
        return logger;
    }

    // Only registered names count; the search makes no logger but the root.
    ILogger& nearestAncestor(std::string name)
    {
        for (;;) {
            const std::size_t dot = name.rfind(nameSeparator);
            if (dot == std::string::npos)
                return lookup(rootName);
            name.erase(dot);
            const auto found = table_.find(name);
            if (found != table_.end())
                return *found->second;
        }
    }

    ILogger& registerLogger(const std::string& name, std::shared_ptr<ILogChannel> channel)
    {
        auto logger = std::make_unique<LoggerImpl>(name, std::move(channel));
        const auto inserted = table_.emplace(name, logger.get());
        if (inserted.second)
            return *logger.release();
        // The name is taken: the table keeps its logger, and this one lives outside it
        // until the process ends.
        outsiders_.push_back(std::move(logger));
        return *outsiders_.back();
    }

    std::mutex mutex_;
    std::map<std::string, ILogger*> table_;
    std::vector<std::unique_ptr<ILogger>> outsiders_;
};

// Made on first use and never destroyed, so that loggers stay usable from other
// static destructors at process exit; channels never depend on a destructor to get
// their output out.
Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}

} // namespace

ILogger& add(const std::string& name, std::shared_ptr<ILogChannel> channel)
{
    return registry().add(name, std::move(channel));
}

ILogger& get(const std::string& name) { return registry().get(name); }

ILogger& root() { return registry().get(rootName); }

ILogger& null() { return registry().get(nullName); }

void shutdown() { registry().shutdown(); }

} // namespace logger
} // namespace ovo
