#include <ovo/ipc/shared_memory.h>

#include "ipc/create_or_open.h"
#include "ipc/object_name.h"
#include "platform/win32.h"

#include <ovo/strings.h>
#include <ovo/win32/security_attributes.h>

#include <stdexcept>

class SharedMemoryImpl {
public:
    SharedMemoryImpl(const std::string& name, unsigned int size);
    virtual ~SharedMemoryImpl();

    HANDLE mapping;
    unsigned int size;
    void* view;
    bool created;
};

namespace {

// STANDARD_RIGHTS_READ and the section's query, map (write, read, execute) and extend
// rights: everyone may map the block; the further rights stay with its creator.
const unsigned long everyonesRights = 0x2001F;

} // namespace

SharedMemoryImpl::SharedMemoryImpl(const std::string& name, unsigned int size)
    : mapping(nullptr), size(size), view(nullptr), created(true)
{
    ovo::win32::SecurityAttributes security(ovo::win32::SecurityAttributes::SA_World, everyonesRights);
    unsigned long createError = 0, openError = 0;
    mapping = ovo::ipc::createOrOpen(
        [&] {
            HANDLE made = CreateFileMappingA(INVALID_HANDLE_VALUE, security, PAGE_READWRITE, 0, size, name.c_str());
            // A platform that grants the create call on a block that exists reports it so;
            // that constructor joined the block all the same.
            created = made != nullptr && GetLastError() != ERROR_ALREADY_EXISTS;
            return made;
        },
        [&] { return OpenFileMappingA(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, name.c_str()); }, createError, openError);
    if (mapping == nullptr)
        throw std::runtime_error(ovo::format("::OpenFileMapping( '%s' ) failed. openError = %lu, createError = %lu",
                                             name.c_str(), openError, createError));
    view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, size);
    if (view == nullptr) {
        const unsigned long viewError = GetLastError();
        CloseHandle(mapping);
        throw std::runtime_error(ovo::format("::MapViewOfFile( size = %lu ) failed: %lu",
                                             static_cast<unsigned long>(size), viewError));
    }
}

SharedMemoryImpl::~SharedMemoryImpl()
{
    UnmapViewOfFile(view);
    CloseHandle(mapping);
}

namespace ovo {
namespace ipc {

SharedMemory::SharedMemory(const std::string& name, unsigned int size)
    : impl_(new SharedMemoryImpl(platformName(name), size))
{
}

SharedMemory::~SharedMemory() { delete impl_; }

void* SharedMemory::begin() const { return impl_->view; }

void* SharedMemory::end() const { return static_cast<char*>(impl_->view) + impl_->size; }

bool SharedMemory::isCreated() const { return impl_->created; }

} // namespace ipc
} // namespace ovo
