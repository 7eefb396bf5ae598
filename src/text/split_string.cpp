#include <ovo/strings.h>

#include <stdexcept>

namespace ovo {

std::vector<std::string> SplitString(const std::string& text, const std::string& delimiter, bool skipEmpty)
{
    // An empty delimiter is found at the position itself, so the scan would never move.
    if (delimiter.empty())
        throw std::invalid_argument("SplitString: the delimiter must not be empty");

    std::vector<std::string> pieces;
    std::size_t position = 0;
    for (;;) {
        const std::size_t found = text.find(delimiter, position);
        const std::size_t end = found == std::string::npos ? text.size() : found;
        if (!(skipEmpty && end == position))
            pieces.emplace_back(text, position, end - position);
        if (found == std::string::npos)
            return pieces;
        position = found + delimiter.size();
    }
}

} // namespace ovo
