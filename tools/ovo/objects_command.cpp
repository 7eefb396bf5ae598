// ovo objects: the named objects of this user, and the removal of those that every
// holder left behind by dying.
#include "tool.h"

#include <ovo/ipc/named_objects.h>

#include <iomanip>
#include <iostream>

namespace ovo_tool {
namespace {

const char objectsHelp[] = "usage: ovo objects [OPTIONS] [clean]\n"
                           "Lists this user's named objects (mutexes, events, shared memory; a channel NAME is\n"
                           "NAME_data, NAME_lock and NAME_journal): live while some process holds them, stale\n"
                           "when every holder was killed, taken when another user made a file of the name first\n"
                           "(possible only without a login session, in /dev/shm). clean removes the stale ones\n"
                           "(creating an object removes a few as well).\n"
                           "examples: ovo objects\n"
                           "          ovo objects clean\n";

} // namespace

int objectsCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    line.parse(args);
    if (line.printedHelp(objectsHelp))
        return 0;
    const std::vector<std::string>& words = line.words();
    if (words.size() > 1 || (words.size() == 1 && words[0] != "clean"))
        throw UsageError("ovo objects takes no words but clean; see ovo objects --help");
    setUpLogging(line, "ovo.objects");
    if (!words.empty()) {
        const unsigned removed = ovo::ipc::removeStaleNamedObjects();
        std::cout << "removed " << removed << " stale object" << (removed == 1 ? "" : "s") << '\n';
        return 0;
    }
    for (const ovo::ipc::ListedObject& object : ovo::ipc::namedObjects()) {
        const bool taken = object.kind == "taken";
        std::cout << std::left << std::setw(6)
                  << (taken         ? "taken"
                      : object.live ? "live"
                                    : "stale")
                  << std::setw(14) << (taken ? "" : object.kind) << object.name;
        if (object.kind == "shared memory")
            std::cout << "  " << object.size << " bytes";
        if (taken)
            std::cout << "  (no object of this user's: only its owner or root can remove it)";
        std::cout << '\n';
    }
    return 0;
}

} // namespace ovo_tool
