// Registry calls that play a script, linked in place of the platform's in the library
// build `ovosystem_scripted_registry`: they record what the library passes and answer
// from an in-memory table of values.
#ifndef OVO_TESTS_FAKES_SCRIPTED_REGISTRY_H
#define OVO_TESTS_FAKES_SCRIPTED_REGISTRY_H

#include <ovo/export.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ovo_fake {

struct StoredValue {
    std::uint32_t type;
    std::string bytes;
};

struct RegistryScript {
    // What the calls answer.
    std::int32_t openResult = 0;              // open and create fail with it when not 0
    std::map<std::string, StoredValue> values; // by name, as the platform holds them

    // What the calls were given.
    std::vector<std::string> calls;         // names in order
    std::string openedRoot, openedKey;      // root as a number in hex, the key's path
    std::uint32_t openedAccess = 0;
    std::vector<std::uintptr_t> closedKeys; // every RegCloseKey
    std::vector<std::uint32_t> querySizes;  // the size each RegQueryValueExA was given (0 without one)
};

OVO_API RegistryScript& registryScript();
OVO_API void resetRegistryScript();

} // namespace ovo_fake

#endif
