// The other process of the registry tests: writes one key's values in turns, COUNT times
// (0: until killed), and leaves FILE after the first turn. A turn is a text of 4000 'A' or
// 'B' and a count; with "sizes", the text of 5 bytes "short", then 4000 'B', then none.
#include <ovo/win32/registry.h>

#include <fstream>
#include <string>

int main(int argc, char** argv)
{
    ovo::win32::registry key(HKEY_CURRENT_USER);
    if (argc < 4 || argc > 5 || !key.createAndOpen(argv[1], 0xF003F)) // KEY_ALL_ACCESS
        return 2;
    const auto count = static_cast<unsigned>(std::stoul(argv[2]));
    const bool sizes = argc == 5 && std::string(argv[4]) == "sizes";
    for (unsigned n = 1; count == 0 || n <= count; ++n) {
        if (sizes) {
            key.setStringValue("text", "short");
            key.setStringValue("text", std::string(4000, 'B'));
            key.deleteValue("text");
        } else {
            key.setStringValue("text", std::string(4000, n % 2 == 0 ? 'A' : 'B'));
            key.setDWORDValue("count", n);
        }
        if (n == 1)
            std::ofstream(argv[3]) << "written";
    }
    return 0;
}
