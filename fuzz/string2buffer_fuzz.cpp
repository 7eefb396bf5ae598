// Properties: any text either fails with the documented exception or gives (n + 1) / 2
// bytes that print back as the text; a dump has (4w + 3) characters a line, less the
// last line feed.
#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include "fuzz_check.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace nf = ovo::NumberFormatter;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto count = static_cast<unsigned int>(size);

    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const std::vector<unsigned char> parsed = nf::string2buffer(text);
        const std::string padded = size % 2 != 0 ? "0" + text : text;
        FUZZ_CHECK(nf::buffer2stringL(parsed.data(), static_cast<unsigned int>(parsed.size())) == ovo::toLower(padded));
    } catch (const std::runtime_error& e) {
        FUZZ_CHECK(std::string(e.what()).rfind("invalid hex char '", 0) == 0);
    }

    if (size > 0) {
        const std::size_t perLine = 1 + data[0] % 32;
        const std::size_t lines = (size + perLine - 1) / perLine;
        FUZZ_CHECK(nf::formatBuffer(data, count, static_cast<int>(perLine)).size() == (4 * perLine + 3) * lines - 1);
    }
    return 0;
}
