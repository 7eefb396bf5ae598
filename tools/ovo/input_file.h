// A file that a subcommand reads, or standard input: its bytes, or its lines, with a
// Failure that says why when the system refuses them.
#ifndef OVO_TOOLS_OVO_INPUT_FILE_H
#define OVO_TOOLS_OVO_INPUT_FILE_H

#include <cstddef>
#include <string>

namespace ovo_tool {

class InputFile {
public:
    // "-" is standard input. Throws Failure "cannot open 'PATH': REASON".
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Up to size bytes; 0 at the end. Throws Failure "cannot read 'PATH': REASON".
    std::size_t read(unsigned char* buffer, std::size_t size);
    // The next line without its line feed; false at the end. A line longer than `longest`
    // bytes comes cut after longest + 1 of them, the rest of it dropped: the caller tells
    // it by the size.
    bool readLine(std::string& line, std::size_t longest);
    // The path, or "standard input".
    const std::string& name() const { return name_; }

private:
    std::string name_;
    int descriptor_;
    std::string pending_; // read, not yet handed out as a line
    bool ended_ = false;
};

} // namespace ovo_tool

#endif
