/// @file
/// The channel that writes one log file a local day.
#ifndef OVO_LOGGER_FILE_LOG_CHANNEL_H
#define OVO_LOGGER_FILE_LOG_CHANNEL_H

#include <ovo/export.h>
#include <ovo/logger/channel.h>

#include <memory>
#include <string>

namespace ovo {
namespace logger {

class RollingFile;

/// One log file a local day.
///
/// Each message is appended to DIRECTORY/YYYY-MM-DD.log, or DIRECTORY/YYYY-MM-DD-SUFFIX.log
/// (a backslash between them on Windows). The file is opened and closed for every message,
/// so nothing is buffered when write returns and a new day starts a new file by itself. A
/// file found empty gets the header first.
///
/// One message is one uninterrupted append, also between processes: while a writer has
/// the file, another one waits for it up to about a second, then loses that message.
/// I/O failures are never reported; the next message tries again from the start.
/// write is safe from any thread.
///
/// The console and a daily file behind one split channel (from logging.cpp):
/// @snippet logging.cpp channels
class OVO_API FileLogChannel : public AbstractLogChannel {
public:
    /// "rolling_header": the one property; its value is the text a new file begins with.
    static const std::string PropertyRollingHeader;

    /// A channel that writes into directory, with suffix in the file names ("" for none).
    ///
    /// Touches neither the directory nor a file; the directory is not created later either.
    FileLogChannel(const std::string& directory, const std::string& suffix);
    /// Not copyable: the channel owns its file and its lock.
    ///@{
    FileLogChannel(const FileLogChannel&) = delete;
    FileLogChannel& operator=(const FileLogChannel&) = delete;
    ///@}
    /// Nothing is left to flush: every message was appended whole, and no file stays open.
    ~FileLogChannel() override;

    /// Formats the message and appends it to the file of the day; reports nothing.
    void write(const std::string& name, const std::string& message) override;
    /// Takes PropertyRollingHeader (the header of new files); ignores other keys.
    void setProperty(const std::string& key, const std::string& value) override;

private:
    std::unique_ptr<RollingFile> file_;
};

} // namespace logger
} // namespace ovo

#endif
