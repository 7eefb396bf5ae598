// Who releases what copies share: a process-wide count, per resource, of the objects
// beyond the first that hold it. Copies call share(); each holder calls leave() when it
// lets go, and the one that gets true was the last and releases the resource.
#ifndef OVO_SRC_PLATFORM_SHARED_HOLDERS_H
#define OVO_SRC_PLATFORM_SHARED_HOLDERS_H

#include <map>
#include <mutex>

namespace ovo {
namespace platform {

template <typename Resource>
class SharedHolders {
public:
    // Never destroyed: holders may let go from static destructors.
    static SharedHolders& instance()
    {
        static auto* holders = new SharedHolders;
        return *holders;
    }

    void share(Resource resource)
    {
        std::lock_guard<std::mutex> guard(lock_);
        ++extraHolders_[resource];
    }

    bool leave(Resource resource)
    {
        std::lock_guard<std::mutex> guard(lock_);
        auto found = extraHolders_.find(resource);
        if (found == extraHolders_.end())
            return true;
        if (--found->second == 0)
            extraHolders_.erase(found);
        return false;
    }

private:
    std::mutex lock_;
    std::map<Resource, unsigned> extraHolders_;
};

} // namespace platform
} // namespace ovo

#endif
