// Properties: any text loads without reading outside it, whatever the separators; and a
// collection whose names and values hold no separator byte and no zero byte comes back
// unchanged from toString followed by load.
#include <ovo/nv_collection.h>

#include "fuzz_check.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>

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

    // The round trip holds for separators that are not empty and share no byte. Line
    // feeds in the text alternate between ending a name and ending a value.
    if (pairSeparator.empty() || nvSeparator.empty() || pairSeparator.find_first_of(nvSeparator) != std::string::npos)
        return 0;
    const std::string forbidden = pairSeparator + nvSeparator + std::string(1, '\0');
    ovo::nvCollection built;
    std::string name, word;
    bool inValue = false;
    for (char c : text)
        if (c == '\n') {
            inValue ? built.setString(name, word) : name.swap(word);
            inValue = !inValue;
            word.clear();
        } else if (forbidden.find(c) == std::string::npos) {
            word += c;
        }
    const ovo::nvCollection back(built.toString(pairSeparator, nvSeparator), pairSeparator, nvSeparator);
    using Entries = std::map<std::string, std::string>;
    FUZZ_CHECK(Entries(back.begin(), back.end()) == Entries(built.begin(), built.end()));
    return 0;
}
