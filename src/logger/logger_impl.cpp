#include "logger/logger_impl.h"

#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include <utility>

namespace {

const int infoThreshold = 0;
const int traceThreshold = 1;
const int dumpBytesPerLine = 16;

std::string dumpText(const std::string& message, const void* data, unsigned int size)
{
    return ovo::format("%s\n%s", message.c_str(),
                       ovo::NumberFormatter::formatBuffer(data, size, dumpBytesPerLine).c_str());
}

std::string hexText(const char* joint, const std::string& message, const void* data, unsigned int size)
{
    return ovo::format("%s%s%s", message.c_str(), joint, ovo::NumberFormatter::buffer2stringU2(data, size).c_str());
}

} // namespace

LoggerImpl::LoggerImpl(const std::string& name, std::shared_ptr<ovo::logger::ILogChannel> channel)
    : name_(name), channel_(std::move(channel))
{
}

std::shared_ptr<ovo::logger::ILogChannel> LoggerImpl::channel() const { return channel_; }

void LoggerImpl::setChannel(std::shared_ptr<ovo::logger::ILogChannel> channel) { channel_ = std::move(channel); }

int LoggerImpl::level() const { return level_; }

void LoggerImpl::setLevel(int level) { level_ = level; }

void LoggerImpl::info(const std::string& message)
{
    if (passes(infoThreshold))
        channel_->write(name_, message);
}

void LoggerImpl::infoDump(const std::string& message, const void* data, unsigned int size)
{
    if (passes(infoThreshold))
        channel_->write(name_, dumpText(message, data, size));
}

void LoggerImpl::infoHex(const std::string& message, const void* data, unsigned int size)
{
    if (passes(infoThreshold))
        channel_->write(name_, hexText(": ", message, data, size));
}

void LoggerImpl::trace(const std::string& message)
{
    if (passes(traceThreshold))
        channel_->write(name_, message);
}

void LoggerImpl::traceDump(const std::string& message, const void* data, unsigned int size)
{
    if (passes(traceThreshold))
        channel_->write(name_, dumpText(message, data, size));
}

void LoggerImpl::traceHex(const std::string& message, const void* data, unsigned int size)
{
    if (passes(traceThreshold))
        channel_->write(name_, hexText(" ", message, data, size));
}
