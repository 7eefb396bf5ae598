// Properties: parse and tryParse agree on every text; a success survives printing and
// parsing again; the narrow parsers accept exactly the wide results in their range.
#include <ovo/number_parser.h>
#include <ovo/strings.h>

#include "fuzz_check.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace np = ovo::NumberParser;

namespace {

// The throwing form succeeds with the same value exactly when the trying form does.
template <typename Parsed, typename Stored>
bool agree(Parsed (*parse)(const std::string&), bool (*tryParse)(const std::string&, Stored&), const std::string& text,
           Stored& value)
{
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
    return ok;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);

    long long wide = 0;
    int narrow = 0;
    const bool wideOk = agree(np::parseInt64, np::tryParseInt64, text, wide);
    const bool narrowOk = agree(np::parseInt32, np::tryParseInt32, text, narrow);
    FUZZ_CHECK(narrowOk == (wideOk && wide >= INT32_MIN && wide <= INT32_MAX));
    FUZZ_CHECK(!narrowOk || (narrow == wide && np::parseInt32(ovo::format("%d", narrow)) == narrow));
    short int16 = 0;
    FUZZ_CHECK(agree(np::parseInt16, np::tryParseInt16, text, int16) == (narrowOk && narrow == int16));
    signed char int8 = 0;
    FUZZ_CHECK(agree(np::parseInt8, np::tryParseInt8, text, int8) == (narrowOk && narrow == int8));

    unsigned int uint32 = 0;
    if (agree(np::parseUInt32, np::tryParseUInt32, text, uint32))
        FUZZ_CHECK(np::parseUInt32(ovo::format("%u", uint32)) == uint32);
    unsigned char uint8 = 0;
    agree(np::parseUInt8, np::tryParseUInt8, text, uint8);
    unsigned long long uint64 = 0;
    agree(np::parseUInt64, np::tryParseUInt64, text, uint64);
    unsigned long hex = 0;
    if (agree(np::parseHex, np::tryParseHex, text, hex))
        FUZZ_CHECK(hex <= UINT32_MAX && np::parseHex(ovo::format("%lx", hex)) == hex);
    unsigned long oct = 0;
    agree(np::parseOct, np::tryParseOct, text, oct);
    double real = 0;
    agree(np::parseDouble, np::tryParseDouble, text, real);
    float single = 0;
    agree(np::parseFloat, np::tryParseFloat, text, single);

    bool flag = false;
    const bool flagOk = np::tryParseBool(text, flag);
    FUZZ_CHECK(!narrowOk || (flagOk && flag == (narrow != 0)));
    try {
        const bool parsed = np::parseBool(text); // a text that tryParseBool refuses must throw here
        FUZZ_CHECK(flagOk && parsed == flag);
    } catch (const std::logic_error&) {
        FUZZ_CHECK(!flagOk);
    }
    return 0;
}
