/// @file
/// The security attributes that the create calls of named objects take, and the one
/// process query the registry needs.
#ifndef OVO_WIN32_SECURITY_ATTRIBUTES_H
#define OVO_WIN32_SECURITY_ATTRIBUTES_H

#include <ovo/export.h>
#include <ovo/win32/types.h>

namespace ovo {
namespace win32 {

/// A SECURITY_ATTRIBUTES record whose descriptor holds one access entry: `permissions`
/// granted to everyone (SA_World) or to the built-in administrators (any other kind).
///
/// Ownership after operator=: both objects name the same identifier, list and descriptor.
/// A process-wide count of the objects that name each such set decides who releases it:
/// the last of them to be destroyed or reassigned. So every pointer is released exactly
/// once, whatever the order; the target's earlier set goes the same way.
///
/// Reports nothing: the platform calls that build the record are not checked. An object
/// belongs to the thread that made it.
class OVO_API SecurityAttributes {
public:
    /// The group that the access entry grants its permissions to.
    ///
    /// Any value other than 0 selects the administrators (an int underneath, so that any is valid).
    enum SA_Predefined : int { SA_World = 0, SA_Admin = 1 };
    /// @var SA_World
    /// Everyone.
    /// @var SA_Admin
    /// The built-in administrators.

    /// Builds the record: one entry that grants permissions (the platform's access mask)
    /// to the group of kind.
    SecurityAttributes(SA_Predefined kind, unsigned long permissions);
    /// Releases the identifier, list and descriptor unless another object still names them.
    ~SecurityAttributes();
    /// Names the same record as other (see the class description).
    SecurityAttributes& operator=(const SecurityAttributes& other);

    /// The record for a create call. Valid while this object lives.
    operator SECURITY_ATTRIBUTES*();

private:
    SecurityAttributes(const SecurityAttributes&) = delete;

    void createAdminEA();
    void createWorldEA();
    void release();

    PSID sid;
    EXPLICIT_ACCESS_A explicitAccess;
    PACL acl;
    PSECURITY_DESCRIPTOR securityDescriptor;
    SECURITY_ATTRIBUTES attributes;
};

/// Whether this is a 32-bit process on a 64-bit Windows; false elsewhere and on failure.
/// Safe from any thread.
OVO_API bool IsWow64();

} // namespace win32
} // namespace ovo

#endif
