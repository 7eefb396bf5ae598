// Properties: any text loads without reading outside it, whatever the separators; and a
// collection whose names and values hold no separator byte and no zero byte comes back
// unchanged from toString followed by load.
#include <ovo/nv_collection.h>

#include "fuzz_check.h"

#include <cstdint>
#include <map>
#include <string>

namespace {

// Takes up to `length` bytes from the input, as a separator.
std::string take(const std::uint8_t*& data, std::size_t& size, std::size_t length)
{
    length = std::min(length, size);
    std::string taken(reinterpret_cast<const char*>(data), length);
    data += length;
    size -= length;
    return taken;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::size_t pairLength = data[0] % 4; // 0 to 3: an empty pair separator too
    const std::size_t nvLength = data[1] % 4;
    data += 2;
    size -= 2;
    const std::string pairSeparator = take(data, size, pairLength);
    const std::string nvSeparator = take(data, size, nvLength);
    const std::string text(reinterpret_cast<const char*>(data), size);

    const ovo::nvCollection loaded(text, pairSeparator, nvSeparator);
    std::size_t bytes = 0;
    for (const auto& entry : loaded)
        bytes += entry.first.size() + entry.second.size();
    FUZZ_CHECK(bytes <= text.size());

    // The round trip holds for separators that are not empty and share no byte.
    if (pairSeparator.empty() || nvSeparator.empty() ||
        pairSeparator.find_first_of(nvSeparator) != std::string::npos)
        return 0;
    const std::string forbidden = pairSeparator + nvSeparator + std::string(1, '\0');
    ovo::nvCollection built;
    std::string name;
    std::string word;
    bool inValue = false;
    for (char c : text) {
        if (c == '\n') { // a line feed ends a name, then a value
            if (inValue)
                built.setString(name, word);
            else
                name = word;
            inValue = !inValue;
            word.clear();
        } else if (forbidden.find(c) == std::string::npos) {
            word += c;
        }
    }
    const ovo::nvCollection back(built.toString(pairSeparator, nvSeparator), pairSeparator, nvSeparator);
    using Entries = std::map<std::string, std::string>;
    FUZZ_CHECK(Entries(back.begin(), back.end()) == Entries(built.begin(), built.end()));
    return 0;
}
