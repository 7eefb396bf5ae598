// A parity scenario runs tables of cases and prints one line for each: its label and what
// it gave (a result, or "throws" and the exception's text). The tag that makes names
// unique per run ($OVO_PARITY_TAG) prints as "*", so that runs print alike.
#ifndef OVO_TESTS_PARITY_OBSERVE_H
#define OVO_TESTS_PARITY_OBSERVE_H

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace parity {

inline const std::string tag = std::getenv("OVO_PARITY_TAG") ? std::getenv("OVO_PARITY_TAG") : "";
inline std::string tagged(const std::string& name) { return tag + name; }
inline std::string yesNo(bool value) { return value ? "true" : "false"; }
// A name in a label: quoted, or its length and last character when it is long.
inline std::string quoted(const std::string& s)
{
    return s.size() > 40 ? std::to_string(s.size()) + " x '" + s.back() + "'" : "'" + s + "'";
}

template <typename Observe> void show(const std::string& label, Observe observe)
{
    std::string seen;
    try {
        seen = observe();
    } catch (const std::exception& e) {
        seen = std::string("throws ") + e.what();
    }
    std::string line = label + ": " + seen;
    for (std::size_t at; !tag.empty() && (at = line.find(tag)) != std::string::npos;)
        line.replace(at, tag.size(), "*");
    std::printf("%s\n", line.c_str());
}

} // namespace parity

#endif
