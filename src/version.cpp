#include <ovo/version.h>

namespace ovo {

// Compiled into the library, so it tells the version of the binary, not of the headers.
const char* libraryVersion() { return OVO_VERSION_STRING; }

} // namespace ovo
