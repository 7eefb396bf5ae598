#include <ovo/shared_library.h>
#include <ovo/strings.h>

#include "platform/load_failure.h"

#include <stdexcept>

namespace ovo {

class SharedLibraryImpl {
public:
    virtual ~SharedLibraryImpl()
    {
        if (module != nullptr)
            FreeLibrary(module);
    }

    HMODULE module = nullptr;
};

SharedLibrary::SharedLibrary() : impl_(new SharedLibraryImpl) {}

SharedLibrary::SharedLibrary(const std::string& path) : SharedLibrary() { load(path); }

SharedLibrary::SharedLibrary(const std::string& path, const std::string& directory) : SharedLibrary()
{
    SetCurrentDirectoryA(directory.c_str()); // a failure leaves the old directory; the load goes ahead
    load(path);
}

SharedLibrary::~SharedLibrary() = default;

void SharedLibrary::load(const std::string& path)
{
    if (impl_->module != nullptr)
        throw std::runtime_error("already loaded");
    impl_->module = LoadLibraryA(path.c_str());
    if (impl_->module != nullptr)
        return;
    const DWORD code = GetLastError();
    // The specified message, with the loader's own explanation nested inside it.
    try {
        throw std::runtime_error(platform::loadFailureText(code));
    } catch (...) {
        std::throw_with_nested(
            std::runtime_error(ovo::format("::LoadLibrary( '%s' ) failed: %d", path.c_str(), static_cast<int>(code))));
    }
}

bool SharedLibrary::tryLoad(const std::string& path)
{
    if (impl_->module == nullptr)
        impl_->module = LoadLibraryA(path.c_str());
    return impl_->module != nullptr;
}

// Not tested for a loaded library: the platform finds nothing in a null module.
void* SharedLibrary::getProc(const std::string& name) const
{
    return reinterpret_cast<void*>(GetProcAddress(impl_->module, name.c_str()));
}

bool SharedLibrary::hasProc(const std::string& name) const { return getProc(name) != nullptr; }

bool SharedLibrary::isLoaded() const { return impl_->module != nullptr; }

} // namespace ovo
