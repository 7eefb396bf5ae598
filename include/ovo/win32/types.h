/// @file
/// The few Win32 types that the library's public interface names.
///
/// On Windows they are the platform's own; elsewhere the library defines them here, inside
/// ovo::win32, with the layout and widths of Windows, so that they cannot clash with other
/// headers that define Win32 names of their own (pcsc-lite's DWORD, for one).
#ifndef OVO_WIN32_TYPES_H
#define OVO_WIN32_TYPES_H

#if defined(_WIN32)
#  ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#  endif
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  include <windows.h>
#  include <aclapi.h>

// The same names in ovo::win32 on every platform, for code written once for both.
namespace ovo {
namespace win32 {
using ::ACL;
using ::BOOL;
using ::BYTE;
using ::DWORD;
using ::EXPLICIT_ACCESS_A;
using ::HKEY;
using ::PACL;
using ::PSECURITY_DESCRIPTOR;
using ::PSID;
using ::SECURITY_ATTRIBUTES;
using ::WORD;
} // namespace win32
} // namespace ovo
#else
#  include <cstdint>

namespace ovo {
namespace win32 {

/// A truth value of 32 bits: 0 is false.
using BOOL = int;
/// An unsigned 8-bit value.
using BYTE = std::uint8_t;
/// An unsigned 16-bit value.
using WORD = std::uint16_t;
/// An unsigned 32-bit value.
using DWORD = std::uint32_t;
/// A zero-terminated text.
using LPSTR = char*;

/// A security identifier, which the platform allocates.
using PSID = void*;
/// A security descriptor, which the platform allocates.
using PSECURITY_DESCRIPTOR = void*;

/// The top-level authority of a security identifier.
struct SID_IDENTIFIER_AUTHORITY {
    /// Its six bytes, most significant first.
    BYTE Value[6];
};
/// A pointer to SID_IDENTIFIER_AUTHORITY.
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;

/// An access control list: this header, then its entries.
struct ACL {
    /// The revision of the list's format.
    BYTE AclRevision;
    /// Reserved, 0.
    BYTE Sbz1;
    /// The size of the list in bytes, entries included.
    WORD AclSize;
    /// The number of entries.
    WORD AceCount;
    /// Reserved, 0.
    WORD Sbz2;
};
/// A pointer to an ACL.
using PACL = ACL*;

/// What an access entry does with its permissions.
enum ACCESS_MODE { NOT_USED_ACCESS = 0, GRANT_ACCESS, SET_ACCESS, DENY_ACCESS, REVOKE_ACCESS };
/// @var NOT_USED_ACCESS
/// Not used.
/// @var GRANT_ACCESS
/// Adds the permissions to what the trustee has.
/// @var SET_ACCESS
/// Grants exactly the permissions.
/// @var DENY_ACCESS
/// Denies the permissions.
/// @var REVOKE_ACCESS
/// Removes the trustee's entries.

/// Whether a trustee impersonates another.
enum MULTIPLE_TRUSTEE_OPERATION { NO_MULTIPLE_TRUSTEE = 0, TRUSTEE_IS_IMPERSONATE };
/// @var NO_MULTIPLE_TRUSTEE
/// A trustee of its own.
/// @var TRUSTEE_IS_IMPERSONATE
/// A trustee that impersonates another.

/// How a trustee is named.
enum TRUSTEE_FORM { TRUSTEE_IS_SID = 0, TRUSTEE_IS_NAME, TRUSTEE_BAD_FORM };
/// @var TRUSTEE_IS_SID
/// By a security identifier.
/// @var TRUSTEE_IS_NAME
/// By a name.
/// @var TRUSTEE_BAD_FORM
/// Not a valid form.

/// What kind of account a trustee is.
enum TRUSTEE_TYPE {
    TRUSTEE_IS_UNKNOWN = 0,
    TRUSTEE_IS_USER,
    TRUSTEE_IS_GROUP,
    TRUSTEE_IS_DOMAIN,
    TRUSTEE_IS_ALIAS,
    TRUSTEE_IS_WELL_KNOWN_GROUP,
};
/// @var TRUSTEE_IS_UNKNOWN
/// Unknown.
/// @var TRUSTEE_IS_USER
/// A user.
/// @var TRUSTEE_IS_GROUP
/// A group.
/// @var TRUSTEE_IS_DOMAIN
/// A domain.
/// @var TRUSTEE_IS_ALIAS
/// An alias.
/// @var TRUSTEE_IS_WELL_KNOWN_GROUP
/// A well-known group, such as everyone.

/// The account that an access entry applies to.
struct TRUSTEE_A {
    /// Another trustee that this one stands for; null.
    TRUSTEE_A* pMultipleTrustee;
    /// NO_MULTIPLE_TRUSTEE.
    MULTIPLE_TRUSTEE_OPERATION MultipleTrusteeOperation;
    /// How ptstrName names the trustee.
    TRUSTEE_FORM TrusteeForm;
    /// The kind of account.
    TRUSTEE_TYPE TrusteeType;
    /// The trustee: a security identifier (PSID) or a name, by TrusteeForm.
    LPSTR ptstrName;
};

/// One access entry: permissions, what to do with them, and for whom.
struct EXPLICIT_ACCESS_A {
    /// The access mask.
    DWORD grfAccessPermissions;
    /// What the entry does with the mask.
    ACCESS_MODE grfAccessMode;
    /// How child objects inherit the entry; 0 for not at all.
    DWORD grfInheritance;
    /// The account.
    TRUSTEE_A Trustee;
};

/// The security of an object that a create call makes, and whether its handle is inherited.
struct SECURITY_ATTRIBUTES {
    /// The size of this record in bytes.
    DWORD nLength;
    /// The security descriptor; null for the platform's default.
    void* lpSecurityDescriptor;
    /// Whether child processes inherit the handle.
    BOOL bInheritHandle;
};
/// A pointer to SECURITY_ATTRIBUTES.
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

struct HKEY__;
/// A registry key: a handle, or one of the predefined root keys below.
using HKEY = HKEY__*;

} // namespace win32
} // namespace ovo

// The root keys, as Windows defines them (macros there too).
#  ifndef HKEY_CURRENT_USER
/// The root key of the current user's tree.
#    define HKEY_CURRENT_USER (reinterpret_cast<::ovo::win32::HKEY>(static_cast<std::uintptr_t>(0x80000001u)))
/// The root key of the machine-wide tree.
#    define HKEY_LOCAL_MACHINE (reinterpret_cast<::ovo::win32::HKEY>(static_cast<std::uintptr_t>(0x80000002u)))
#  endif
#endif

#endif
