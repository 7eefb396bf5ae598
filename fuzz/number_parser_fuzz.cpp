// Properties: parse and tryParse agree on every text, and a success survives printing
// and parsing again. Which texts each name accepts is the unit tests' table.
#include <ovo/number_parser.h>
#include <ovo/strings.h>

#include "fuzz_check.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <type_traits>

namespace np = ovo::NumberParser;

namespace {

// The throwing form succeeds with the same value exactly when the trying form does.
template <typename Parsed, typename Stored>
std::optional<Stored> agreed(Parsed (*parse)(const std::string&), bool (*tryParse)(const std::string&, Stored&),
                             const std::string& text)
{
    Stored value{};
    const bool ok = tryParse(text, value);
    try {
        const auto parsed = static_cast<Stored>(parse(text));
        if constexpr (std::is_floating_point_v<Stored>)
            FUZZ_CHECK(ok && (parsed == value || (std::isnan(parsed) && std::isnan(value))));
        else
            FUZZ_CHECK(ok && parsed == value);
    } catch (const std::exception&) {
        FUZZ_CHECK(!ok);
    }
    return ok ? std::optional<Stored>(value) : std::nullopt;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (const auto int32 = agreed(np::parseInt32, np::tryParseInt32, text))
        FUZZ_CHECK(np::parseInt32(ovo::format("%d", *int32)) == *int32);
    if (const auto hex = agreed(np::parseHex, np::tryParseHex, text))
        FUZZ_CHECK(*hex <= UINT32_MAX && np::parseHex(ovo::format("%lx", *hex)) == *hex);
    agreed(np::parseInt64, np::tryParseInt64, text);
    agreed(np::parseUInt32, np::tryParseUInt32, text);
    agreed(np::parseInt16, np::tryParseInt16, text);
    agreed(np::parseInt8, np::tryParseInt8, text);
    agreed(np::parseUInt8, np::tryParseUInt8, text);
    agreed(np::parseUInt64, np::tryParseUInt64, text);
    agreed(np::parseOct, np::tryParseOct, text);
    agreed(np::parseDouble, np::tryParseDouble, text);
    agreed(np::parseFloat, np::tryParseFloat, text);
    agreed(np::parseBool, np::tryParseBool, text);
    return 0;
}
