// The C interface's logger handle is the registry's logger itself.
#ifndef OVO_SRC_C_LOGGER_HANDLE_H
#define OVO_SRC_C_LOGGER_HANDLE_H

#include <ovo/c/base.h>
#include <ovo/logger/logger.h>

namespace ovo_c {

inline ovo_logger* handleOf(ovo::logger::ILogger& logger) { return reinterpret_cast<ovo_logger*>(&logger); }

// The logger a device traces on: the one given, or the null logger.
inline ovo::logger::ILogger& loggerOf(ovo_logger* logger)
{
    return logger != nullptr ? *reinterpret_cast<ovo::logger::ILogger*>(logger) : ovo::logger::null();
}

} // namespace ovo_c

#endif
