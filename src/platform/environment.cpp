#include <ovo/environment.h>
#include <ovo/strings.h>

#include "platform/win32.h"

#include <stdexcept>
#include <vector>

namespace ovo {
namespace environment {

namespace {

// The size the value needs with its NUL; 0 when the variable is not set. The one test of
// what counts as set.
DWORD neededSize(const std::string& name) { return GetEnvironmentVariableA(name.c_str(), nullptr, 0); }

// The buffer starts zeroed: a variable that changes between the two calls gives at worst
// an empty text.
std::string valueOf(const std::string& name, DWORD size)
{
    std::vector<char> buffer(size, '\0');
    GetEnvironmentVariableA(name.c_str(), buffer.data(), size);
    return std::string(buffer.data());
}

} // namespace

std::string get(const std::string& name, const std::string& defaultValue)
{
    const DWORD size = neededSize(name);
    return size == 0 ? defaultValue : valueOf(name, size);
}

std::string get(const std::string& name)
{
    const DWORD size = neededSize(name);
    if (size == 0)
        throw std::runtime_error(ovo::format("not found '%s'", name.c_str()));
    return valueOf(name, size);
}

bool has(const std::string& name) { return neededSize(name) > 0; }

} // namespace environment
} // namespace ovo
