// The channel that discards: the first channel of the root and null loggers.
#ifndef OVO_SRC_LOGGER_NULL_LOG_CHANNEL_H
#define OVO_SRC_LOGGER_NULL_LOG_CHANNEL_H

#include <ovo/logger/channel.h>

namespace ovo {
namespace logger {

class NullLogChannel final : public AbstractLogChannel {
public:
    void write(const std::string&, const std::string&) override {}
};

} // namespace logger
} // namespace ovo

#endif
