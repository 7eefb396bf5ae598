// Property: any text loads without reading outside it, whatever the separators: the
// names and values together never hold more bytes than the text. (What toString writes
// and load reads back is the unit tests' table.)
#include <ovo/nv_collection.h>

#include "fuzz_check.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    // Separators of 0 to 3 bytes each (an empty pair separator too), then the text.
    const std::string input(reinterpret_cast<const char*>(data + 2), size - 2);
    const std::string pairSeparator = input.substr(0, data[0] % 4);
    const std::string nvSeparator = input.substr(pairSeparator.size(), data[1] % 4);
    const std::string text = input.substr(pairSeparator.size() + nvSeparator.size());

    const ovo::nvCollection loaded(text, pairSeparator, nvSeparator);
    std::size_t bytes = 0;
    for (const auto& entry : loaded)
        bytes += entry.first.size() + entry.second.size();
    FUZZ_CHECK(bytes <= text.size());
    return 0;
}
