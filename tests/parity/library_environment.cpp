// Shared libraries and the environment (the driver sets OVO_PARITY_NAME and OVO_PARITY_EMPTY).
#include "observe.h"

#include <ovo/environment.h>
#include <ovo/shared_library.h>

#include <filesystem>

int main()
{
    std::filesystem::create_directories("a-directory");
    for (const char* path : {"", "ovo-missing-library", "a-directory", "."}) {
        parity::show("load " + parity::quoted(path),
                     [&] { return ovo::SharedLibrary(path).isLoaded() ? "loaded" : ""; });
        parity::show("tryLoad " + parity::quoted(path), [&] {
            ovo::SharedLibrary library;
            const bool loaded = library.tryLoad(path);
            return parity::yesNo(loaded) + ", malloc " + parity::yesNo(library.hasProc("malloc"));
        });
    }
    for (const char* name : {"OVO_PARITY_NAME", "ovo_parity_name", "OVO_PARITY_EMPTY", "OVO_PARITY_MISSING", ""})
        parity::show(std::string("environment ") + parity::quoted(name), [&] {
            return parity::yesNo(ovo::environment::has(name)) + " '" + ovo::environment::get(name, "default") + "'";
        });
}
