// A dynamic library loaded at run time, and its functions found by name. An object holds
// at most one library, for the rest of its life.
//
// load throws std::runtime_error "already loaded" or "::LoadLibrary( 'PATH' ) failed: CODE";
// the loader's own explanation (dlerror() on Linux, the system message on Windows) is
// nested in that exception: std::rethrow_if_nested gives it.
#ifndef OVO_SHARED_LIBRARY_H
#define OVO_SHARED_LIBRARY_H

#include <ovo/export.h>

#include <memory>
#include <string>

namespace ovo {

class SharedLibraryImpl;

class OVO_API SharedLibrary {
public:
    SharedLibrary();
    explicit SharedLibrary(const std::string& path);
    // Changes the current directory of the whole process to directory (for good, also when
    // the load fails), then loads path, which may be relative to it.
    SharedLibrary(const std::string& path, const std::string& directory);
    ~SharedLibrary(); // releases the library
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;

    // The path as it stands: no extension is added. On Linux a path without '/' is looked
    // up in the library search path (dlopen's rule); "./name" is relative to the current
    // directory.
    void load(const std::string& path);
    bool tryLoad(const std::string& path); // true when a library is loaded now
    // The address of an exported function, null when there is none or nothing is loaded.
    void* getProc(const std::string& name) const;
    bool hasProc(const std::string& name) const;
    bool isLoaded() const;

private:
    std::unique_ptr<SharedLibraryImpl> impl_;
};

} // namespace ovo

#endif
