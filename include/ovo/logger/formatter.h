// How a log message looks: a formatter turns a logger's name and message into the
// finished text that a channel delivers. The text ends in a line feed; channels add none.
#ifndef OVO_LOGGER_FORMATTER_H
#define OVO_LOGGER_FORMATTER_H

#include <string>

namespace ovo {
namespace logger {

class IMessageFormatter {
public:
    virtual ~IMessageFormatter() = default;
    virtual std::string format(const std::string& name, const std::string& message) = 0;
};

} // namespace logger
} // namespace ovo

#endif
