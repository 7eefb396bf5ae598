/// @file
/// A dynamic library loaded at run time, and its functions found by name.
#ifndef OVO_SHARED_LIBRARY_H
#define OVO_SHARED_LIBRARY_H

#include <ovo/export.h>

#include <memory>
#include <string>

namespace ovo {

class SharedLibraryImpl;

/// A dynamic library loaded at run time, and its functions found by name.
///
/// An object holds at most one library, for the rest of its life: the destructor releases
/// it. One object is used by one thread at a time.
///
/// load throws std::runtime_error "already loaded" or "::LoadLibrary( 'PATH' ) failed: CODE";
/// the loader's own explanation (dlerror() on Linux, the system message on Windows) is
/// nested in that exception: std::rethrow_if_nested gives it.
class OVO_API SharedLibrary {
public:
    /// An object with no library; load or tryLoad gives it one.
    SharedLibrary();
    /// Loads path, as load does, and throws as load does.
    explicit SharedLibrary(const std::string& path);
    /// Changes the current directory of the whole process to directory (for good, also when
    /// the load fails), then loads path, which may be relative to it.
    ///
    /// A directory that cannot be entered is not reported: the load goes ahead from the old
    /// one. Throws as load does. It affects every thread of the process.
    SharedLibrary(const std::string& path, const std::string& directory);
    /// Releases the library.
    ~SharedLibrary();
    /// Not copyable: the object owns its library.
    ///@{
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;
    ///@}

    /// Loads the library at path.
    ///
    /// The path as it stands: no extension is added. On Linux a path without '/' is looked
    /// up in the library search path (dlopen's rule); "./name" is relative to the current
    /// directory. A failed load leaves the object empty, so a later load may try again.
    /// @throws std::runtime_error "already loaded" when the object holds a library (which
    ///         stays), or "::LoadLibrary( 'PATH' ) failed: CODE" with the loader's
    ///         explanation nested.
    void load(const std::string& path);
    /// Loads path if no library is loaded yet; a failure is not reported.
    /// @return true when a library is loaded now (also one loaded before, whatever path is).
    bool tryLoad(const std::string& path);
    /// The address of an exported function, null when there is none or nothing is loaded.
    void* getProc(const std::string& name) const;
    /// Whether getProc(name) finds a function.
    bool hasProc(const std::string& name) const;
    /// Whether the object holds a library.
    bool isLoaded() const;

private:
    std::unique_ptr<SharedLibraryImpl> impl_;
};

} // namespace ovo

#endif
