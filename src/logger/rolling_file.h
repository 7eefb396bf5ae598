// The file of one FileLogChannel: a directory, a suffix, a header, and the mutex that
// makes the open, append and close of one message a single step among its threads.
#ifndef OVO_SRC_LOGGER_ROLLING_FILE_H
#define OVO_SRC_LOGGER_ROLLING_FILE_H

#include <mutex>
#include <string>

namespace ovo {
namespace logger {

class RollingFile {
public:
    RollingFile(const std::string& directory, const std::string& suffix);

    const std::string& suffix() const { return suffix_; }
    void setHeader(const std::string& header);
    // Appends text to the named file in the directory, after the header when the file
    // is empty. Failures lose the text silently.
    void append(const std::string& fileName, const std::string& text);

private:
    const std::string directory_;
    const std::string suffix_;
    std::string header_;
    std::mutex mutex_;
};

} // namespace logger
} // namespace ovo

#endif
