// What the library's failure texts carry, in words a user can act on. The system's own
// words for a code are the platform seam's systemWords().
#ifndef OVO_TOOLS_OVO_SYSTEM_WORDS_H
#define OVO_TOOLS_OVO_SYSTEM_WORDS_H

#include <string>

namespace ovo_tool {

// The error code that a platform failure text of the library ends with
// ("... failed. openError = 2, createError = 5" gives 5); 0 without one.
unsigned long errorCode(const std::string& failure);

// Windows' words for an error code of the library's platform calls, without the period.
std::string windowsWords(unsigned long code);

// A PC/SC failure text of the library ("... SCard error: 0x8010001D") in words a user can
// act on, the code beside them: "the PC/SC service (pcscd) is not running; start it
// (SCard error 0x8010001D)". Empty for a text without such a code.
std::string pcscWords(const std::string& failure);

} // namespace ovo_tool

#endif
