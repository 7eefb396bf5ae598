// The one logger implementation. Not exported: callers reach it through ILogger
// references that the registry hands out.
#ifndef OVO_SRC_LOGGER_LOGGER_IMPL_H
#define OVO_SRC_LOGGER_LOGGER_IMPL_H

#include <ovo/logger/logger.h>

#include <memory>
#include <string>

class LoggerImpl final : public ovo::logger::ILogger {
public:
    LoggerImpl(const std::string& name, std::shared_ptr<ovo::logger::ILogChannel> channel);

    std::shared_ptr<ovo::logger::ILogChannel> channel() const override;
    void setChannel(std::shared_ptr<ovo::logger::ILogChannel> channel) override;
    int level() const override;
    void setLevel(int level) override;

    void info(const std::string& message) override;
    void infoDump(const std::string& message, const void* data, unsigned int size) override;
    void infoHex(const std::string& message, const void* data, unsigned int size) override;
    void trace(const std::string& message) override;
    void traceDump(const std::string& message, const void* data, unsigned int size) override;
    void traceHex(const std::string& message, const void* data, unsigned int size) override;

private:
    // The only level test of the subsystem: info passes from 0, trace from 1.
    bool passes(int threshold) const { return level_ >= threshold; }

    std::string name_;
    int level_ = 0;
    std::shared_ptr<ovo::logger::ILogChannel> channel_;
};

#endif
