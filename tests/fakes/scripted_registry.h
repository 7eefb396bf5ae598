// Registry calls that log what the library passes, linked in place of the platform's in
// the library build `ovosystem_scripted_registry`. Opens give new handles, reads answer
// from a table of values.
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
    std::map<std::string, StoredValue> values; // what reads find, by name
    std::uintptr_t lastKey = 0x4B00;
    // The calls in order, as "Name(arguments)": handles and masks in hex, data as its bytes.
    std::vector<std::string> calls;
};

OVO_API RegistryScript& registryScript();
OVO_API void resetRegistryScript();

} // namespace ovo_fake

#endif
