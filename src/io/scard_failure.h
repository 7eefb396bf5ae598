// How the smart-card classes word a failure of the PC/SC service, one text for all.
#ifndef OVO_SRC_IO_SCARD_FAILURE_H
#define OVO_SRC_IO_SCARD_FAILURE_H

#include <ovo/strings.h>

#include "platform/pcsc_calls.h"

#include <stdexcept>
#include <string>

namespace ovo {
namespace io {

// "SCard error: 0x8010001D"
inline std::string scardErrorText(platform::scard::Result code) { return ovo::format("SCard error: 0x%08X", code); }

// "::SCardConnect() failed: SCard error: 0x80100069"
[[noreturn]] inline void failScard(const char* call, platform::scard::Result code)
{
    throw std::runtime_error(ovo::format("::%s() failed: %s", call, scardErrorText(code).c_str()));
}

} // namespace io
} // namespace ovo

#endif
