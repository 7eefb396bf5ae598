// Why the last LoadLibraryA of this thread failed, in the loader's own words.
#ifndef OVO_SRC_PLATFORM_LOAD_FAILURE_H
#define OVO_SRC_PLATFORM_LOAD_FAILURE_H

#include "platform/win32.h"

#include <string>

namespace ovo {
namespace platform {

std::string loadFailureText(DWORD code);

} // namespace platform
} // namespace ovo

#endif
