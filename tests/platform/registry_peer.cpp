// The other process of the registry tests: writes one key's values in turns, long texts
// of all 'A' or all 'B' and a count, and leaves a file once the first write is done.
#include <ovo/number_parser.h>
#include <ovo/win32/registry.h>

#include <fstream>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    const std::string keyName = argv[1];
    const unsigned count = ovo::NumberParser::parseUInt32(argv[2]); // 0: until killed
    ovo::win32::registry key(HKEY_CURRENT_USER);
    if (!key.createAndOpen(keyName, 0xF003F)) // KEY_ALL_ACCESS
        return 1;
    for (unsigned n = 1; count == 0 || n <= count; ++n) {
        key.setStringValue("text", std::string(4000, n % 2 == 0 ? 'A' : 'B'));
        key.setDWORDValue("count", n);
        if (n == 1)
            std::ofstream(argv[3]) << "written";
    }
    return 0;
}
