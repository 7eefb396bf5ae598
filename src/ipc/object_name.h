// The name of a named object on the platform: in the login session's namespace.
#ifndef OVO_SRC_IPC_OBJECT_NAME_H
#define OVO_SRC_IPC_OBJECT_NAME_H

#include <string>

namespace ovo {
namespace ipc {

inline std::string platformName(const std::string& name) { return "Local\\" + name; }

} // namespace ipc
} // namespace ovo

#endif
