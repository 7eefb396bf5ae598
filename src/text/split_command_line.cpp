#include <ovo/strings.h>

namespace ovo {

std::vector<std::string> SplitCommandLine(const std::string& text)
{
    std::vector<std::string> words;
    std::size_t position = 0;
    while (position < text.size()) {
        const bool quoted = text[position] == '"';
        const char closing = quoted ? '"' : ' ';
        const std::size_t start = quoted ? position + 1 : position;
        const std::size_t end = text.find(closing, start);
        if (end == std::string::npos) {
            // An unclosed quote stays in the word.
            words.emplace_back(text, position, std::string::npos);
            break;
        }
        words.emplace_back(text, start, end - start);
        position = end + 1;
    }
    return words;
}

} // namespace ovo
