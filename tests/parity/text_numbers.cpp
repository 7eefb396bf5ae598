// Text and numbers where the C run-time does the work.
#include "observe.h"

#include <ovo/number_parser.h>
#include <ovo/strings.h>

#include <cmath>

using namespace ovo::NumberParser;

// A parsed number, written alike on both sides (not by the run-time under test).
static std::string text(double value)
{
    return std::isnan(value) ? "nan" : std::isinf(value) ? "inf" : ovo::format("%.17g", value);
}

int main()
{
    using parity::show;
    show("format %p of null", [] { return ovo::format("%p", static_cast<void*>(nullptr)); });
    show("format %f of NaN and -infinity", [] { return ovo::format("%f %f", std::nan(""), -HUGE_VAL); });
    show("format %e, %llu, %5.1s|%-4d|%+d",
         [] { return ovo::format("%e %llu %5.1s|%-4d|%+d", 1.0, 1ull << 40, "ab", 7, 3); });
    for (const char* number : {"1e400", "1e-400", "4.9e-324", "nan", "inf", "0x10", "1,5", " 1.5"}) {
        show(std::string("parseDouble ") + number, [&] { return text(parseDouble(number)); });
        show(std::string("parseFloat ") + number, [&] { return text(parseFloat(number)); });
        show(std::string("parseLongDouble ") + number,
             [&] { return text(static_cast<double>(parseLongDouble(number))); });
    }
    show("toUpper and icompare of bytes above 127", [] {
        return ovo::format("%02X", static_cast<unsigned char>(ovo::toUpper("\xe4")[0])) +
               parity::yesNo(ovo::icompare("\xe4", "\xc4"));
    });
}
