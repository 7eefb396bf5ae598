// The named objects of this user: what is there, and the removal of what every holder
// left behind by dying.
#ifndef OVO_IPC_NAMED_OBJECTS_H
#define OVO_IPC_NAMED_OBJECTS_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace ipc {

struct ListedObject {
    std::string name;   // as given to SystemMutex, SystemEvent or SharedMemory
    std::string kind;   // "mutex", "event", "shared memory", or "unknown"
    bool live;          // some process holds it; otherwise it is stale
    unsigned long long size; // of shared memory, in bytes
};

// On Linux, the objects of this user's namespace. Windows ends every object with its last
// handle, even a killed holder's, and lists nothing here.
OVO_API std::vector<ListedObject> namedObjects();
// Removes the objects that no process holds any longer (their holders were killed); gives
// how many. Creating an object sweeps a few of them as well.
OVO_API unsigned removeStaleNamedObjects();

} // namespace ipc
} // namespace ovo

#endif
