// The few Win32 types that the library's public interface names. On Windows they are
// the platform's own; elsewhere the library defines them here, inside ovo::win32, with
// the layout and widths of Windows, so that they cannot clash with other headers that
// define Win32 names of their own (pcsc-lite's DWORD, for one).
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

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LPSTR = char*;

using PSID = void*;
using PSECURITY_DESCRIPTOR = void*;

struct SID_IDENTIFIER_AUTHORITY {
    BYTE Value[6];
};
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;

// An access control list: this header, then its entries.
struct ACL {
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize;
    WORD AceCount;
    WORD Sbz2;
};
using PACL = ACL*;

enum ACCESS_MODE { NOT_USED_ACCESS = 0, GRANT_ACCESS, SET_ACCESS, DENY_ACCESS, REVOKE_ACCESS };
enum MULTIPLE_TRUSTEE_OPERATION { NO_MULTIPLE_TRUSTEE = 0, TRUSTEE_IS_IMPERSONATE };
enum TRUSTEE_FORM { TRUSTEE_IS_SID = 0, TRUSTEE_IS_NAME, TRUSTEE_BAD_FORM };
enum TRUSTEE_TYPE {
    TRUSTEE_IS_UNKNOWN = 0,
    TRUSTEE_IS_USER,
    TRUSTEE_IS_GROUP,
    TRUSTEE_IS_DOMAIN,
    TRUSTEE_IS_ALIAS,
    TRUSTEE_IS_WELL_KNOWN_GROUP,
};

struct TRUSTEE_A {
    TRUSTEE_A* pMultipleTrustee;
    MULTIPLE_TRUSTEE_OPERATION MultipleTrusteeOperation;
    TRUSTEE_FORM TrusteeForm;
    TRUSTEE_TYPE TrusteeType;
    LPSTR ptstrName;
};

struct EXPLICIT_ACCESS_A {
    DWORD grfAccessPermissions;
    ACCESS_MODE grfAccessMode;
    DWORD grfInheritance;
    TRUSTEE_A Trustee;
};

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    void* lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

// A registry key: a handle, or one of the predefined root keys below.
struct HKEY__;
using HKEY = HKEY__*;

} // namespace win32
} // namespace ovo

// The root keys, as Windows defines them (macros there too).
#  ifndef HKEY_CURRENT_USER
#    define HKEY_CURRENT_USER (reinterpret_cast<::ovo::win32::HKEY>(static_cast<std::uintptr_t>(0x80000001u)))
#    define HKEY_LOCAL_MACHINE (reinterpret_cast<::ovo::win32::HKEY>(static_cast<std::uintptr_t>(0x80000002u)))
#  endif
#endif

#endif
