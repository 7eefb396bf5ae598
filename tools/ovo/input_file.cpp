#include "input_file.h"

#include "command_line.h"
#include "tool_platform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace ovo_tool {

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      descriptor_(openForReading(path))
{
    if (descriptor_ < 0)
        throw Failure("cannot open '" + path + "': " + std::strerror(errno));
}

InputFile::~InputFile()
{
    if (descriptor_ != STDIN_FILENO)
        close(descriptor_);
}

std::size_t InputFile::read(unsigned char* buffer, std::size_t size)
{
    ssize_t count;
    do
        count = ::read(descriptor_, buffer, size);
    while (count < 0 && errno == EINTR);
    if (count < 0)
        throw Failure("cannot read '" + name_ + "': " + std::strerror(errno));
    return static_cast<std::size_t>(count);
}

bool InputFile::readLine(std::string& line, std::size_t longest)
{
    std::size_t end, scanned = 0; // each byte is looked at once, however long the line
    while ((end = pending_.find('\n', scanned)) == std::string::npos && !ended_ && pending_.size() <= longest) {
        scanned = pending_.size();
        unsigned char chunk[4096];
        const std::size_t count = read(chunk, sizeof chunk);
        ended_ = count == 0;
        pending_.append(reinterpret_cast<const char*>(chunk), count);
    }
    if (pending_.empty())
        return false;
    const bool whole = end <= longest; // with its line feed
    const std::size_t size = whole ? end : std::min(pending_.size(), longest + 1);
    line.assign(pending_, 0, size);
    pending_.erase(0, whole ? end + 1 : size);
    return true;
}

} // namespace ovo_tool
