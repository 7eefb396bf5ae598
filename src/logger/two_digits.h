// Two decimal digits written by hand: the time stamps and the daily file names are made
// for every message, where formatting would cost a good part of the work.
#ifndef OVO_SRC_LOGGER_TWO_DIGITS_H
#define OVO_SRC_LOGGER_TWO_DIGITS_H

namespace ovo {
namespace logger {

// The last two digits of `value` (not negative) at `out`; where they end.
inline char* twoDigits(char* out, int value)
{
    out[0] = static_cast<char>('0' + value / 10 % 10);
    out[1] = static_cast<char>('0' + value % 10);
    return out + 2;
}

} // namespace logger
} // namespace ovo

#endif
