/// @file
/// The process's environment variables.
#ifndef OVO_ENVIRONMENT_H
#define OVO_ENVIRONMENT_H

#include <ovo/export.h>

#include <string>

namespace ovo {
/// The process's environment variables. The functions keep no state and may run in any
/// thread.
namespace environment {

/// The value of the variable name; defaultValue when it is not set. Reports nothing.
OVO_API std::string get(const std::string& name, const std::string& defaultValue);
/// The value of the variable name.
/// @throws std::runtime_error "not found 'NAME'" when the variable is not set.
OVO_API std::string get(const std::string& name);
/// Whether the variable name is set. Reports nothing.
OVO_API bool has(const std::string& name);

} // namespace environment
} // namespace ovo

#endif
