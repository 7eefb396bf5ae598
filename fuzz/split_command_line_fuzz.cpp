// Properties: the words never hold more bytes than the text; without quotes the words
// are the blank-separated pieces, less the empty piece behind a final blank.
#include <ovo/strings.h>

#include "fuzz_check.h"

#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> words = ovo::SplitCommandLine(text);

    std::size_t total = 0;
    for (const std::string& word : words)
        total += word.size();
    FUZZ_CHECK(total + (words.empty() ? 0 : words.size() - 1) <= text.size());

    if (text.find('"') == std::string::npos) {
        std::vector<std::string> pieces = ovo::SplitString(text, " ", false);
        if (text.empty() || text.back() == ' ')
            pieces.pop_back();
        FUZZ_CHECK(words == pieces);
    }
    return 0;
}
