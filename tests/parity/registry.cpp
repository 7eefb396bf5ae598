// The registry: key names, case, value types and sizes, defaults.
#include "observe.h"

#include <ovo/strings.h>
#include <ovo/win32/registry.h>

using ovo::win32::registry;
using parity::show;

static const unsigned long allAccess = 0xF003F, readOnly = 0x20019;

// A key under the base key of this run (the base key itself for ""), made when it may write.
static registry key(const std::string& name, unsigned long access = allAccess)
{
    registry opened(HKEY_CURRENT_USER, "Software\\ovo-parity\\" + parity::tag);
    access == allAccess ? opened.createAndOpen(name, access) : opened.open(name, access);
    return opened;
}

int main()
{
    // Each key is made and marked, then opened again in upper case: the mark read back tells
    // whether the name reaches one key, and whether an earlier name of the table reached it.
    const std::string names[] = {"plain", "", "text/plain", ".", "..", "a\\..", "%v", "*?<>|:\"", "a\\\\b", "a\\b",
                                 "trailing\\", "trailing", "\\leading", std::string(255, 'k'), std::string(255, '%'),
                                 std::string(256, 'k')};
    unsigned long mark = 0;
    for (const std::string& name : names)
        show("key " + parity::quoted(name), [&] {
            registry made = key("");
            if (!made.createAndOpen(name, allAccess))
                return std::string("refused");
            const std::string found = made.queryDWORDValue("Mark", 0) == 0 ? "new" : "marked before";
            made.setDWORDValue("Mark", ++mark);
            const unsigned long read = key(ovo::toUpper(name), readOnly).queryDWORDValue("MARK", 0);
            return found + (read == mark ? ", opened again" : read == 0 ? ", not found" : ", another key");
        });
    show("key '\\Software' under no base",
         [] { return parity::yesNo(registry(HKEY_CURRENT_USER).createAndOpen("\\Software", allAccess)); });
    // Each value is set as text (or as a DWORD, or not at all), then read as a DWORD and as text.
    for (const char* text : {"none", "dword", "", "x", "abc", "abcd", "long text"})
        show(std::string("value ") + parity::quoted(text), [&] {
            const registry values = key("values");
            values.deleteValue("v");
            if (std::string(text) == "dword")
                values.setDWORDValue("v", 9);
            else if (std::string(text) != "none")
                values.setStringValue("v", text);
            return std::to_string(values.queryDWORDValue("v", 7)) + " / '" + values.queryStringValue("v", "none") + "'";
        });
    show("unnamed value",
         [] { return key("values").setStringValue("", "u"), key("values").queryStringValue("", "none"); });
}
