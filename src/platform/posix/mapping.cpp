#include "platform/posix/mapping.h"

#include "platform/posix/handle.h"
#include "platform/posix/named_object.h"

#include <cerrno>
#include <map>
#include <mutex>
#include <sys/mman.h>

namespace {

using ovo::posix::handleOf;
using ovo::posix::NamedObject;
using ovo::posix::ObjectKind;

class MappingObject : public ovo::posix::KernelObject {
public:
    static const unsigned kinds = mappingKind;

    MappingObject(std::shared_ptr<NamedObject> object, DWORD access)
        : KernelObject(kinds), object(std::move(object)), access(access)
    {
    }
    const std::shared_ptr<NamedObject> object; // shared with the views
    const DWORD access;
};

struct View {
    std::shared_ptr<NamedObject> object;
    std::size_t length;
};

// The views of this process by their first byte.
class Views {
public:
    void add(void* address, View view)
    {
        std::lock_guard<std::mutex> guard(lock_);
        views_[static_cast<char*>(address)] = std::move(view);
    }

    // Removes the view that holds the address, as Windows unmaps a view from any of its
    // bytes; false when no view holds it.
    bool remove(const void* address)
    {
        View view;
        char* begin;
        {
            std::lock_guard<std::mutex> guard(lock_);
            auto found = views_.upper_bound(static_cast<char*>(const_cast<void*>(address)));
            if (found == views_.begin())
                return false;
            --found;
            if (static_cast<const char*>(address) >= found->first + found->second.length)
                return false;
            begin = found->first;
            view = std::move(found->second);
            views_.erase(found);
        }
        munmap(begin, view.length);
        return true; // the object goes with `view` if nothing else holds it
    }

private:
    std::mutex lock_;
    std::map<char*, View> views_;
};

Views& views()
{
    static auto* all = new Views; // never destroyed: views may outlive static destructors
    return *all;
}

} // namespace

HANDLE CreateFileMappingA(HANDLE file, LPSECURITY_ATTRIBUTES security, DWORD protection, DWORD maximumSizeHigh,
                          DWORD maximumSizeLow, LPCSTR name)
{
    const std::uint64_t size = (static_cast<std::uint64_t>(maximumSizeHigh) << 32) | maximumSizeLow;
    if (file != INVALID_HANDLE_VALUE || size == 0 || (protection != PAGE_READWRITE && protection != PAGE_READONLY)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    bool existed = false;
    return handleOf<MappingObject>(
        NamedObject::create(ObjectKind::mapping, name, security, SECTION_ALL_ACCESS, size, nullptr, existed),
        SECTION_ALL_ACCESS);
}

HANDLE OpenFileMappingA(DWORD desiredAccess, BOOL, LPCSTR name)
{
    return handleOf<MappingObject>(NamedObject::open(ObjectKind::mapping, name, desiredAccess), desiredAccess);
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD desiredAccess, DWORD offsetHigh, DWORD offsetLow, std::size_t bytes)
{
    MappingObject* const object = ovo::posix::objectOf<MappingObject>(mapping);
    if (object == nullptr)
        return nullptr;
    // FILE_MAP_ALL_ACCESS asks for reading and writing, as FILE_MAP_WRITE does.
    const DWORD needed = (desiredAccess & SECTION_MAP_WRITE) != 0 ? SECTION_MAP_READ | SECTION_MAP_WRITE : SECTION_MAP_READ;
    const std::uint64_t offset = (static_cast<std::uint64_t>(offsetHigh) << 32) | offsetLow;
    const std::uint64_t size = object->object->dataSize();
    if ((object->access & needed) != needed || offset > size || bytes > size - offset) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    if (offset % NamedObject::dataOffset() != 0) {
        SetLastError(ERROR_MAPPED_ALIGNMENT);
        return nullptr;
    }
    const std::size_t length = bytes != 0 ? bytes : static_cast<std::size_t>(size - offset);
    const int protection = (needed & SECTION_MAP_WRITE) != 0 ? PROT_READ | PROT_WRITE : PROT_READ;
    void* view = mmap(nullptr, length, protection, MAP_SHARED, object->object->descriptor(),
                      static_cast<off_t>(NamedObject::dataOffset() + offset));
    if (view == MAP_FAILED) {
        ovo::posix::setLastErrorFromErrno(errno);
        return nullptr;
    }
    views().add(view, View{object->object, length});
    SetLastError(ERROR_SUCCESS);
    return view;
}

BOOL UnmapViewOfFile(LPCVOID address)
{
    if (!views().remove(address)) {
        SetLastError(ERROR_INVALID_ADDRESS);
        return FALSE;
    }
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}
