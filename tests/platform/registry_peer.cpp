// The other process of the registry test: writes one key's values in 300 turns, and leaves
// FILE after the first. A turn sets the text "short", then one of 4000 'B', removes it, and
// sets the count of turns.
#include <ovo/win32/registry.h>

#include <fstream>
#include <string>

int main(int argc, char** argv)
{
    ovo::win32::registry key(HKEY_CURRENT_USER);
    if (argc != 3 || !key.createAndOpen(argv[1], 0xF003F)) // KEY_ALL_ACCESS
        return 2;
    for (unsigned n = 1; n <= 300; ++n) {
        key.setStringValue("text", "short");
        key.setStringValue("text", std::string(4000, 'B'));
        key.deleteValue("text");
        key.setDWORDValue("count", n);
        if (n == 1)
            std::ofstream(argv[2]) << "written";
    }
    return 0;
}
