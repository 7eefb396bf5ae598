// The JSON that the tool prints for scripts: one writer of string values for all of it.
#ifndef OVO_TOOLS_OVO_JSON_H
#define OVO_TOOLS_OVO_JSON_H

#include <string>
#include <vector>

namespace ovo_tool {

// The text as a JSON string, quotes included: "a \"b\"\n" for a "b" and a line end; a
// byte that is no UTF-8 becomes the replacement character U+FFFD.
std::string jsonString(const std::string& text);
// ["a","b"]
std::string jsonArray(const std::vector<std::string>& texts);

} // namespace ovo_tool

#endif
