#include <ovo/ipc/named_objects.h>

#include "platform/posix/named_object.h"

namespace ovo {
namespace ipc {
namespace {

std::string kindName(std::uint32_t kind)
{
    switch (static_cast<posix::ObjectKind>(kind)) {
    case posix::ObjectKind::mutex:
        return "mutex";
    case posix::ObjectKind::event:
        return "event";
    case posix::ObjectKind::mapping:
        return "shared memory";
    }
    return "unknown";
}

} // namespace

std::vector<ListedObject> namedObjects()
{
    std::vector<ListedObject> objects;
    for (const posix::ObjectFile& file : posix::userObjects())
        objects.push_back(
            ListedObject{file.name, file.taken ? "taken" : kindName(file.kind), file.live, file.dataSize});
    return objects;
}

unsigned removeStaleNamedObjects() { return posix::removeStaleObjects(); }

} // namespace ipc
} // namespace ovo
