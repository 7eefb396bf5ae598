// The process's environment variables.
#ifndef OVO_ENVIRONMENT_H
#define OVO_ENVIRONMENT_H

#include <ovo/export.h>

#include <string>

namespace ovo {
namespace environment {

// The value; defaultValue when the variable is not set.
OVO_API std::string get(const std::string& name, const std::string& defaultValue);
// The value; std::runtime_error "not found 'NAME'" when the variable is not set.
OVO_API std::string get(const std::string& name);
OVO_API bool has(const std::string& name);

} // namespace environment
} // namespace ovo

#endif
