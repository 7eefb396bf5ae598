// Properties: the pieces joined with the delimiter give the text back, no piece holds
// the delimiter, and skipping empty pieces drops exactly the empty ones.
#include <ovo/strings.h>

#include "fuzz_check.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::size_t delimiterLength = std::min<std::size_t>(data[0] % 4, size - 1);
    const std::string delimiter(reinterpret_cast<const char*>(data + 1), delimiterLength);
    const std::string text(reinterpret_cast<const char*>(data + 1 + delimiterLength), size - 1 - delimiterLength);

    if (delimiter.empty()) {
        try {
            ovo::SplitString(text, delimiter, false);
            FUZZ_CHECK(!"an empty delimiter must be refused");
        } catch (const std::invalid_argument&) {
        }
        return 0;
    }

    const std::vector<std::string> pieces = ovo::SplitString(text, delimiter, false);
    FUZZ_CHECK(!pieces.empty());
    std::string joined;
    std::vector<std::string> nonEmpty;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        FUZZ_CHECK(pieces[i].find(delimiter) == std::string::npos);
        joined += (i == 0 ? "" : delimiter) + pieces[i];
        if (!pieces[i].empty())
            nonEmpty.push_back(pieces[i]);
    }
    FUZZ_CHECK(joined == text);
    FUZZ_CHECK(ovo::SplitString(text, delimiter, true) == nonEmpty);
    return 0;
}
