// Security identifiers, access lists and descriptors in the POSIX layer: real records in
// memory, laid out as on Windows, which the create calls of named objects read to decide
// who may open what they create.
#ifndef OVO_SRC_PLATFORM_POSIX_SECURITY_H
#define OVO_SRC_PLATFORM_POSIX_SECURITY_H

#include "platform/posix/win32_types.h"

#include <cstddef>

using ovo::win32::ACL;
using ovo::win32::EXPLICIT_ACCESS_A;
using ovo::win32::PACL;
using ovo::win32::PSECURITY_DESCRIPTOR;
using ovo::win32::PSID;
using ovo::win32::PSID_IDENTIFIER_AUTHORITY;
using ovo::win32::SID_IDENTIFIER_AUTHORITY;
using ovo::win32::ACCESS_MODE;
using ovo::win32::NOT_USED_ACCESS;
using ovo::win32::GRANT_ACCESS;
using ovo::win32::SET_ACCESS;
using ovo::win32::DENY_ACCESS;
using ovo::win32::REVOKE_ACCESS;
using ovo::win32::TRUSTEE_IS_SID;
using ovo::win32::TRUSTEE_IS_GROUP;
using ovo::win32::TRUSTEE_IS_WELL_KNOWN_GROUP;
using ULONG = std::uint32_t;
using UINT = unsigned int;
using SIZE_T = std::size_t;
using HLOCAL = void*;
using PVOID = void*;

struct SID {
    BYTE Revision;
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[1]; // SubAuthorityCount of them
};

struct ACE_HEADER {
    BYTE AceType;
    BYTE AceFlags;
    WORD AceSize;
};

// ACCESS_ALLOWED_ACE and ACCESS_DENIED_ACE: the trustee's SID begins at SidStart.
struct ACCESS_ALLOWED_ACE {
    ACE_HEADER Header;
    DWORD Mask;
    DWORD SidStart;
};

struct SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    WORD Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
};

#define SECURITY_WORLD_SID_AUTHORITY {{0, 0, 0, 0, 0, 1}}
#define SECURITY_NT_AUTHORITY {{0, 0, 0, 0, 0, 5}}
const DWORD SECURITY_WORLD_RID = 0;
const DWORD SECURITY_BUILTIN_DOMAIN_RID = 32;
const DWORD DOMAIN_ALIAS_RID_ADMINS = 544;
const DWORD NO_INHERITANCE = 0;
const BYTE ACL_REVISION = 2;
const BYTE ACCESS_ALLOWED_ACE_TYPE = 0;
const BYTE ACCESS_DENIED_ACE_TYPE = 1;
const WORD SE_DACL_PRESENT = 0x0004;
const WORD SE_DACL_DEFAULTED = 0x0008;
const DWORD SECURITY_DESCRIPTOR_REVISION = 1;
const SIZE_T SECURITY_DESCRIPTOR_MIN_LENGTH = sizeof(SECURITY_DESCRIPTOR);
const UINT LMEM_ZEROINIT = 0x40;
const UINT LPTR = LMEM_ZEROINIT; // fixed memory, zeroed

const DWORD DELETE = 0x00010000u;
const DWORD READ_CONTROL = 0x00020000u;
const DWORD WRITE_DAC = 0x00040000u;
const DWORD WRITE_OWNER = 0x00080000u;
const DWORD SYNCHRONIZE = 0x00100000u;
const DWORD STANDARD_RIGHTS_READ = READ_CONTROL;
const DWORD STANDARD_RIGHTS_REQUIRED = 0x000F0000u;

BOOL AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD sub0, DWORD sub1,
                              DWORD sub2, DWORD sub3, DWORD sub4, DWORD sub5, DWORD sub6, DWORD sub7,
                              PSID* sid);
PVOID FreeSid(PSID sid);
// SET_ACCESS and GRANT_ACCESS entries become allowing entries, DENY_ACCESS denying ones;
// only trustees given by SID. Gives a Win32 code.
DWORD SetEntriesInAclA(ULONG count, EXPLICIT_ACCESS_A* entries, PACL oldAcl, PACL* newAcl);
HLOCAL LocalAlloc(UINT flags, SIZE_T bytes);
HLOCAL LocalFree(HLOCAL memory); // null on success
BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision);
BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL acl, BOOL defaulted);

namespace ovo {
namespace posix {

// Who may do what with an object, as its creator's security attributes say. Without a
// descriptor or access list the creator's user alone has every right (the file mode keeps
// other users out); with a list, everyone gets what the entries for everyone allow, and
// the superuser in addition what the entries for the administrators allow.
struct ObjectAccess {
    bool listed = false;
    DWORD everyone = 0;
    DWORD administrators = 0;

    static ObjectAccess of(const SECURITY_ATTRIBUTES* attributes);
    // The rights this process has on an object with this access.
    DWORD granted() const;
    // The file mode of what the layer creates: others may open it only when the list
    // grants everyone something.
    unsigned fileMode() const;
};

} // namespace posix
} // namespace ovo

#endif
