/// @file
/// The two message formatters of the library.
#ifndef OVO_LOGGER_FORMATTERS_H
#define OVO_LOGGER_FORMATTERS_H

#include <ovo/export.h>
#include <ovo/logger/formatter.h>

#include <string>

namespace ovo {
namespace logger {

/// The bare message and a line feed.
///
/// Stateless: one object can serve any number of channels and threads. Reports nothing.
class OVO_API ConsoleFormatter : public IMessageFormatter {
public:
    ConsoleFormatter();
    /// Copies and moves carry nothing: a formatter has no state.
    ///@{
    ConsoleFormatter(const ConsoleFormatter& other);
    ConsoleFormatter(ConsoleFormatter&& other) noexcept;
    ConsoleFormatter& operator=(const ConsoleFormatter& other);
    ConsoleFormatter& operator=(ConsoleFormatter&& other) noexcept;
    ///@}
    /// Has nothing to release.
    ~ConsoleFormatter() override;

    /// message followed by a line feed; name is not shown.
    std::string format(const std::string& name, const std::string& message) override;
};

/// "14:03:27.045 [reader          ] card inserted\n": the local time of day with
/// milliseconds, the name in a field of at least 16 columns, the message.
///
/// Every further line of the message follows on a line of its own behind 32 blanks. The
/// first line (and the name) end at a zero byte; later lines are copied whole.
///
/// Stateless: one object can serve any number of channels and threads. The conversion
/// into local time is cached per thread for the current second: a change of time zone
/// (TZ set and tzset() called) shows from the next second on. Reports nothing.
class OVO_API SimpleFormatter : public IMessageFormatter {
public:
    SimpleFormatter();
    /// Copies and moves carry nothing: a formatter has no state.
    ///@{
    SimpleFormatter(const SimpleFormatter& other);
    SimpleFormatter(SimpleFormatter&& other) noexcept;
    SimpleFormatter& operator=(const SimpleFormatter& other);
    SimpleFormatter& operator=(SimpleFormatter&& other) noexcept;
    ///@}
    /// Has nothing to release.
    ~SimpleFormatter() override;

    /// The stamped line (or lines) of message, logged by the logger called name.
    std::string format(const std::string& name, const std::string& message) override;
};

} // namespace logger
} // namespace ovo

#endif
