#include "logger/logger_impl.h"

#include <ovo/number_formatter.h>

#include <cstring>
#include <utility>

namespace {

const int infoThreshold = 0;
const int traceThreshold = 1;
const int dumpBytesPerLine = 16;

// The text of ovo::format("%s<joint>%s", message, tail) without its two printf passes:
// the message ends at a zero byte, as %s reads it; the tails (a dump or hex pairs)
// never hold one.
std::string joined(const std::string& message, const char* joint, const std::string& tail)
{
    const char* const head = message.c_str();
    std::string text;
    text.reserve(std::strlen(head) + std::strlen(joint) + tail.size());
    return text.append(head).append(joint).append(tail);
}

std::string dumpText(const std::string& message, const void* data, unsigned int size)
{
    return joined(message, "\n", ovo::NumberFormatter::formatBuffer(data, size, dumpBytesPerLine));
}

std::string hexText(const char* joint, const std::string& message, const void* data, unsigned int size)
{
    return joined(message, joint, ovo::NumberFormatter::buffer2stringU2(data, size));
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
