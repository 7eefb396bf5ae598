// The C interface of logging: the root's channels, loggers by name, messages and bytes.
#include "c/guard.h"
#include "c/logger_handle.h"

#include <ovo/c/log.h>
#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>
#include <ovo/strings.h>

#include <filesystem>
#include <memory>

using ovo_c::guarded;
using ovo_c::required;
using namespace ovo::logger;

namespace {

ILogger& loggerOf(ovo_logger* logger) { return ovo_c::loggerOf(&required(logger, "logger")); }

bool isTrace(int family)
{
    if (family != OVO_LOG_INFO && family != OVO_LOG_TRACE)
        throw std::invalid_argument(ovo::format("no family of messages %d: 0 is info, 1 trace", family));
    return family == OVO_LOG_TRACE;
}

// The file channel reports nothing, so a directory that is not there would lose every line.
std::shared_ptr<ILogChannel> dailyFile(const char* directory, const char* suffix)
{
    std::error_code error;
    if (!std::filesystem::is_directory(directory, error))
        throw std::invalid_argument(std::string("cannot log into '") + directory + "': no such directory");
    auto file = std::make_shared<FileLogChannel>(directory, suffix != nullptr ? suffix : "");
    file->setFormatter(std::make_shared<SimpleFormatter>());
    return file;
}

} // namespace

extern "C" {

ovo_status ovo_log_setup(int console, const char* directory, const char* suffix, int level)
{
    return guarded(__func__, [&] {
        auto both = std::make_shared<SplitLogChannel>();
        if (console != 0) {
            auto standardError = std::make_shared<ConsoleLogChannel>();
            standardError->setFormatter(std::make_shared<ConsoleFormatter>());
            both->add(standardError);
        }
        if (directory != nullptr)
            both->add(dailyFile(directory, suffix));
        root().setChannel(both);
        root().setLevel(level);
        return OVO_OK;
    });
}

ovo_status ovo_logger_get(const char* name, ovo_logger** logger)
{
    return guarded(__func__, [&] {
        ovo_logger*& found = required(logger, "logger");
        found = ovo_c::handleOf(get(&required(name, "name")));
        return OVO_OK;
    });
}

ovo_status ovo_logger_set_level(ovo_logger* logger, int level)
{
    return guarded(__func__, [&] {
        loggerOf(logger).setLevel(level);
        return OVO_OK;
    });
}

ovo_status ovo_log_message(ovo_logger* logger, int family, const char* message)
{
    return guarded(__func__, [&] {
        ILogger& log = loggerOf(logger);
        const char* text = &required(message, "message");
        isTrace(family) ? log.trace(text) : log.info(text);
        return OVO_OK;
    });
}

ovo_status ovo_log_bytes(ovo_logger* logger, int family, const char* title, const void* data, unsigned int size)
{
    return guarded(__func__, [&] {
        ILogger& log = loggerOf(logger);
        const char* text = &required(title, "title");
        ovo_c::requireBytes(data, size, "data");
        isTrace(family) ? log.traceHex(text, data, size) : log.infoHex(text, data, size);
        return OVO_OK;
    });
}

ovo_status ovo_log_dump(ovo_logger* logger, int family, const char* title, const void* data, unsigned int size)
{
    return guarded(__func__, [&] {
        ILogger& log = loggerOf(logger);
        const char* text = &required(title, "title");
        ovo_c::requireBytes(data, size, "data");
        isTrace(family) ? log.traceDump(text, data, size) : log.infoDump(text, data, size);
        return OVO_OK;
    });
}

} // extern "C"
