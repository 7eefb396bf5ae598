/// @file
/// How a log message looks: the interface of message formatters.
#ifndef OVO_LOGGER_FORMATTER_H
#define OVO_LOGGER_FORMATTER_H

#include <string>

namespace ovo {
namespace logger {

/// How a log message looks: turns a logger's name and message into the finished text
/// that a channel delivers. The text ends in a line feed; channels add none.
///
/// Channels call format from the threads that log, the console channel under its lock,
/// the file channel outside any: a formatter shared by channels must be safe to call from
/// several threads at once, as the library's own are.
class IMessageFormatter {
public:
    /// Formatters are shared handles: the last holder destroys the formatter.
    virtual ~IMessageFormatter() = default;
    /// The finished text of message, logged by the logger called name.
    virtual std::string format(const std::string& name, const std::string& message) = 0;
};

} // namespace logger
} // namespace ovo

#endif
