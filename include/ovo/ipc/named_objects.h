/// @file
/// The named objects of this user: what is there, and the removal of what every holder
/// left behind by dying.
#ifndef OVO_IPC_NAMED_OBJECTS_H
#define OVO_IPC_NAMED_OBJECTS_H

#include <ovo/export.h>

#include <string>
#include <vector>

namespace ovo {
namespace ipc {

/// One named object of this user's namespace, as namedObjects() finds it.
struct ListedObject {
    /// The name as given to SystemMutex, SystemEvent or SharedMemory.
    std::string name;
    /// "mutex", "event", "shared memory", "unknown" (a file of this user's that is no
    /// object), or "taken": a file of the name that is no object of this user's (another
    /// user's, or no regular file), which keeps this user from the name. Only where others
    /// may make files of this user's names: in /dev/shm, for a user without a session.
    std::string kind;
    /// Some process holds it; otherwise it is stale (every holder was killed).
    bool live;
    /// Of shared memory, in bytes; 0 for the other kinds.
    unsigned long long size;
};

/// On Linux, the objects of this user's namespace (the login session's directory, or
/// without one this user's files in /dev/shm), live, stale and taken. Windows ends every
/// object with its last handle, even a killed holder's, and lists nothing here.
///
/// Reports nothing: a file it cannot read is left out. Safe from any thread.
OVO_API std::vector<ListedObject> namedObjects();
/// Removes the objects that no process holds any longer (their holders were killed); a
/// taken name stays. Creating an object sweeps a few of them as well.
/// @return how many were removed (always 0 on Windows).
///
/// Reports nothing; an object that a process joins meanwhile is kept. Safe from any thread.
OVO_API unsigned removeStaleNamedObjects();

} // namespace ipc
} // namespace ovo

#endif
