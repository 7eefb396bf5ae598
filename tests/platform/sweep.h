// What the three sweeps of the platform layer share (every path it opens under attack,
// every multi-step operation with a process killed inside it, every pair of operations
// raced on one name): the scene of a row, the rounds of its other processes, how many, and
// what is left of its names. The sweeps fork those processes: POSIX only.
#ifndef OVO_TESTS_PLATFORM_SWEEP_H
#define OVO_TESTS_PLATFORM_SWEEP_H

#include "support/failure_of.h"
#include "support/process.h"
#include "support/sanitizers.h"

#include <ovo/ipc/named_objects.h>
#include <ovo/ipc/shared_memory.h>
#include <ovo/win32/registry.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace ovo_test {

// Where a row runs: a name of its own, a directory of its own, and for an attack what a
// planted link points at (a file of the victim's own, 0600, unless the row says otherwise).
struct Scene {
    std::string name, dir, target;
};

// One round of an operation: "" when what must hold after it holds, else what broke.
using SweepRound = std::function<std::string(const Scene&)>;

// The rounds of a row: a tenth under sanitizers, whose rounds cost ten times as much.
inline unsigned sweepRounds(unsigned rounds)
{
#ifdef OVO_TEST_SANITIZED
    return rounds / 10;
#else
    return rounds;
#endif
}

// A row's description with every character but letters and digits as '_': its test's name.
inline std::string identifierOf(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return text;
}

// A name of this test run's own, from a row's description.
inline std::string sweepName(const std::string& text)
{
    return "ovosweep-" + std::to_string(getpid()) + "-" + identifierOf(text);
}

// A process that repeats the round: `rounds` times, or with 0 until a kill (telling "r"
// once it runs). It ends with 1 when a round broke, and tells how many and the first.
inline std::unique_ptr<ChildProcess> repeated(const SweepRound& round, const Scene& scene, unsigned rounds)
{
    return std::make_unique<ChildProcess>([&] {
        if (rounds == 0)
            ChildProcess::tell("r");
        unsigned broken = 0;
        std::string first;
        for (unsigned i = 0; (rounds == 0 && broken == 0) || i < rounds; ++i) {
            std::string broke;
            const std::string threw = failureOf([&] { broke = round(scene); });
            if (!threw.empty())
                broke = "threw: " + threw;
            if (!broke.empty() && broken++ == 0)
                first = broke;
        }
        if (broken > 0)
            ChildProcess::tell(std::to_string(broken) + " rounds broke, the first: " + first);
        return broken > 0 ? 1 : 0;
    });
}

// The named objects of this user whose names begin with `prefix`, stale ones marked.
inline std::vector<std::string> objectsNamed(const std::string& prefix)
{
    std::vector<std::string> found;
    for (const ovo::ipc::ListedObject& object : ovo::ipc::namedObjects())
        if (object.name.compare(0, prefix.size(), prefix) == 0)
            found.push_back(object.name + (object.live ? "" : " (stale)"));
    return found;
}

inline bool allBytesAre(const ovo::ipc::SharedMemory& block, unsigned char value)
{
    const auto* begin = static_cast<const unsigned char*>(block.begin());
    return std::all_of(begin, static_cast<const unsigned char*>(block.end()),
                       [&](unsigned char b) { return b == value; });
}

inline void fillBytes(const ovo::ipc::SharedMemory& block, unsigned char value)
{
    std::memset(block.begin(), value, static_cast<char*>(block.end()) - static_cast<char*>(block.begin()));
}

// The key of a row's values, in a registry store of the row's own directory.
inline ovo::win32::registry rowKey(const Scene& s)
{
    setenv("XDG_CONFIG_HOME", s.dir.c_str(), 1);
    ovo::win32::registry key(HKEY_CURRENT_USER, "Software\\" + s.name);
    key.createAndOpen("Values", 0xF003F); // KEY_ALL_ACCESS
    return key;
}

// The two texts that a row's value takes in turn: one that fits a first read, one that does not.
inline const std::string& rowText(unsigned n)
{
    static const std::string texts[] = {"short", std::string(4000, 'L')};
    return texts[n % 2];
}

inline bool isRowText(const std::string& text) { return text == rowText(0) || text == rowText(1); }

// A round that sets the row's value to its two texts in turn.
inline std::string setRowTexts(const Scene& s)
{
    static const ovo::win32::registry key = rowKey(s);
    static unsigned n = 0;
    key.setStringValue("text", rowText(n++));
    return "";
}

} // namespace ovo_test

#endif
