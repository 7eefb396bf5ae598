// Text as one file name of the POSIX layer's own directories (named objects, registry
// keys): letters, digits and "._-" stay, every other byte becomes %XX, so that no byte of
// the text can reach outside the directory ('/' and ".." are ordinary text then).
#ifndef OVO_SRC_PLATFORM_POSIX_FILE_NAME_H
#define OVO_SRC_PLATFORM_POSIX_FILE_NAME_H

#include <string>

namespace ovo {
namespace posix {

std::string escapedFileName(const std::string& text);
// The text again from such a file name.
std::string unescapedFileName(const std::string& fileName);

} // namespace posix
} // namespace ovo

#endif
