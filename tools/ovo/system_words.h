// What the library's failure texts carry, in words a user can act on.
#ifndef OVO_TOOLS_OVO_SYSTEM_WORDS_H
#define OVO_TOOLS_OVO_SYSTEM_WORDS_H

#include <string>

namespace ovo_tool {

// The error code that a platform failure text of the library ends with
// ("... failed. openError = 2, createError = 5" gives 5); 0 without one.
unsigned long errorCode(const std::string& failure);

// The system's words for an error code, as Windows words them, without the period.
std::string systemWords(unsigned long code);

} // namespace ovo_tool

#endif
