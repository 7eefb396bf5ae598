// The Win32 calls the library is written against. On Windows they are the real API; on
// other systems the library's own POSIX layer implements the subset it needs, with the
// same names, types, constants and error codes.
#ifndef OVO_SRC_PLATFORM_WIN32_H
#define OVO_SRC_PLATFORM_WIN32_H

#if defined(_WIN32)
#  include <ovo/win32/types.h> // <windows.h> and <aclapi.h>
#else
#  include "platform/posix/win32_types.h"
#  include "platform/posix/comm.h"
#  include "platform/posix/files.h"
#  include "platform/posix/mapping.h"
#  include "platform/posix/modules.h"
#  include "platform/posix/registry_store.h"
#  include "platform/posix/security.h"
#  include "platform/posix/synch.h"
#endif

namespace ovo {
namespace platform {

// Between a directory and a file name.
#if defined(_WIN32)
const char pathSeparator = '\\';
#else
const char pathSeparator = '/';
#endif

} // namespace platform
} // namespace ovo

#endif
