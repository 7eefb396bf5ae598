// Security records of the POSIX layer, built byte for byte as Windows lays them out.
#include "platform/posix/security.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

std::size_t sidLength(const SID* sid) { return offsetof(SID, SubAuthority) + sid->SubAuthorityCount * sizeof(DWORD); }

const SID* sidOf(const ACCESS_ALLOWED_ACE* ace) { return reinterpret_cast<const SID*>(&ace->SidStart); }

bool sameSid(const SID* a, const SID* b)
{
    return a->SubAuthorityCount == b->SubAuthorityCount && std::memcmp(a, b, sidLength(a)) == 0;
}

// The two groups that the layer understands.
struct WellKnownSid {
    BYTE Revision;
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[2];
};
const WellKnownSid worldSid = {1, 1, SECURITY_WORLD_SID_AUTHORITY, {SECURITY_WORLD_RID, 0}};
const WellKnownSid adminsSid = {1, 2, SECURITY_NT_AUTHORITY, {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS}};

const DWORD allRights = 0xFFFFFFFFu;

} // namespace

BOOL AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD sub0, DWORD sub1,
                              DWORD sub2, DWORD sub3, DWORD sub4, DWORD sub5, DWORD sub6, DWORD sub7,
                              PSID* sid)
{
    if (authority == nullptr || sid == nullptr || count > 8) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const DWORD subAuthorities[8] = {sub0, sub1, sub2, sub3, sub4, sub5, sub6, sub7};
    auto* made = static_cast<SID*>(std::calloc(1, offsetof(SID, SubAuthority) + 8 * sizeof(DWORD)));
    if (made == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    made->Revision = 1;
    made->SubAuthorityCount = count;
    made->IdentifierAuthority = *authority;
    std::memcpy(made->SubAuthority, subAuthorities, count * sizeof(DWORD));
    *sid = made;
    return TRUE;
}

PVOID FreeSid(PSID sid)
{
    std::free(sid);
    return nullptr;
}

DWORD SetEntriesInAclA(ULONG count, EXPLICIT_ACCESS_A* entries, PACL oldAcl, PACL* newAcl)
{
    if (newAcl == nullptr || (count > 0 && entries == nullptr) || oldAcl != nullptr)
        return ERROR_INVALID_PARAMETER; // merging into an old list is not needed by the library
    std::size_t size = sizeof(ACL);
    for (ULONG i = 0; i < count; ++i) {
        if (entries[i].Trustee.TrusteeForm != TRUSTEE_IS_SID || entries[i].Trustee.ptstrName == nullptr)
            return ERROR_INVALID_PARAMETER;
        const auto* sid = reinterpret_cast<const SID*>(entries[i].Trustee.ptstrName);
        size += offsetof(ACCESS_ALLOWED_ACE, SidStart) + sidLength(sid);
    }
    auto* acl = static_cast<ACL*>(LocalAlloc(LPTR, size));
    if (acl == nullptr)
        return ERROR_NOT_ENOUGH_MEMORY;
    acl->AclRevision = ACL_REVISION;
    acl->AclSize = static_cast<WORD>(size);
    auto* next = reinterpret_cast<BYTE*>(acl + 1);
    for (ULONG i = 0; i < count; ++i) {
        const ACCESS_MODE mode = entries[i].grfAccessMode;
        if (mode != SET_ACCESS && mode != GRANT_ACCESS && mode != DENY_ACCESS)
            continue;
        const auto* sid = reinterpret_cast<const SID*>(entries[i].Trustee.ptstrName);
        auto* ace = reinterpret_cast<ACCESS_ALLOWED_ACE*>(next);
        ace->Header.AceType = mode == DENY_ACCESS ? ACCESS_DENIED_ACE_TYPE : ACCESS_ALLOWED_ACE_TYPE;
        ace->Header.AceFlags = static_cast<BYTE>(entries[i].grfInheritance);
        ace->Header.AceSize = static_cast<WORD>(offsetof(ACCESS_ALLOWED_ACE, SidStart) + sidLength(sid));
        ace->Mask = entries[i].grfAccessPermissions;
        std::memcpy(&ace->SidStart, sid, sidLength(sid));
        next += ace->Header.AceSize;
        ++acl->AceCount;
    }
    *newAcl = acl;
    return ERROR_SUCCESS;
}

HLOCAL LocalAlloc(UINT flags, SIZE_T bytes)
{
    void* memory = (flags & LMEM_ZEROINIT) != 0 ? std::calloc(1, bytes == 0 ? 1 : bytes) : std::malloc(bytes == 0 ? 1 : bytes);
    if (memory == nullptr)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return memory;
}

HLOCAL LocalFree(HLOCAL memory)
{
    std::free(memory);
    return nullptr;
}

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision)
{
    if (descriptor == nullptr || revision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *static_cast<SECURITY_DESCRIPTOR*>(descriptor) = SECURITY_DESCRIPTOR{};
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Revision = static_cast<BYTE>(revision);
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL acl, BOOL defaulted)
{
    if (descriptor == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    auto* record = static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    record->Control &= static_cast<WORD>(~(SE_DACL_PRESENT | SE_DACL_DEFAULTED));
    record->Dacl = present ? acl : nullptr;
    if (present)
        record->Control |= SE_DACL_PRESENT;
    if (present && defaulted)
        record->Control |= SE_DACL_DEFAULTED;
    return TRUE;
}

namespace ovo {
namespace posix {

ObjectAccess ObjectAccess::of(const SECURITY_ATTRIBUTES* attributes)
{
    ObjectAccess access;
    const auto* descriptor =
        attributes != nullptr ? static_cast<const SECURITY_DESCRIPTOR*>(attributes->lpSecurityDescriptor) : nullptr;
    if (descriptor == nullptr || (descriptor->Control & SE_DACL_PRESENT) == 0)
        return access;
    access.listed = true;
    if (descriptor->Dacl == nullptr) { // a present but empty pointer: no protection at all
        access.everyone = allRights;
        return access;
    }
    DWORD everyoneDenied = 0;
    const auto* next = reinterpret_cast<const BYTE*>(descriptor->Dacl + 1);
    for (WORD i = 0; i < descriptor->Dacl->AceCount; ++i) {
        const auto* ace = reinterpret_cast<const ACCESS_ALLOWED_ACE*>(next);
        const bool allows = ace->Header.AceType == ACCESS_ALLOWED_ACE_TYPE;
        if (sameSid(sidOf(ace), reinterpret_cast<const SID*>(&worldSid)))
            (allows ? access.everyone : everyoneDenied) |= ace->Mask;
        else if (allows && sameSid(sidOf(ace), reinterpret_cast<const SID*>(&adminsSid)))
            access.administrators |= ace->Mask;
        next += ace->Header.AceSize;
    }
    access.everyone &= ~everyoneDenied;
    return access;
}

DWORD ObjectAccess::granted() const
{
    if (!listed)
        return allRights;
    return everyone | (geteuid() == 0 ? administrators : 0);
}

unsigned ObjectAccess::fileMode() const { return listed && everyone != 0 ? 0666 : 0600; }

} // namespace posix
} // namespace ovo
