// Properties of the two splitters on one text. SplitString: the pieces joined with the
// delimiter give the text back, no piece holds the delimiter, and skipping drops exactly
// the empty pieces. SplitCommandLine: the words never hold more bytes than the text, and
// without quotes they are the blank-separated pieces, less the one behind a final blank.
#include <ovo/strings.h>

#include "fuzz_check.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

using Pieces = std::vector<std::string>;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::size_t delimiterLength = std::min<std::size_t>(1 + data[0] % 3, size - 1);
    const std::string delimiter(reinterpret_cast<const char*>(data + 1), delimiterLength);
    const std::string text(reinterpret_cast<const char*>(data + 1 + delimiterLength), size - 1 - delimiterLength);

    if (!delimiter.empty()) {
        const Pieces pieces = ovo::SplitString(text, delimiter, false);
        std::string joined;
        Pieces nonEmpty;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            FUZZ_CHECK(pieces[i].find(delimiter) == std::string::npos);
            joined += (i == 0 ? "" : delimiter) + pieces[i];
            if (!pieces[i].empty())
                nonEmpty.push_back(pieces[i]);
        }
        FUZZ_CHECK(joined == text);
        FUZZ_CHECK(ovo::SplitString(text, delimiter, true) == nonEmpty);
    }

    const Pieces words = ovo::SplitCommandLine(text);
    std::size_t total = 0;
    for (const std::string& word : words)
        total += word.size();
    FUZZ_CHECK(total + (words.empty() ? 0 : words.size() - 1) <= text.size());
    if (text.find('"') == std::string::npos) {
        Pieces pieces = ovo::SplitString(text, " ", false);
        if (text.empty() || text.back() == ' ')
            pieces.pop_back();
        FUZZ_CHECK(words == pieces);
    }
    return 0;
}
