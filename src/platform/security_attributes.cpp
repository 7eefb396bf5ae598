#include <ovo/win32/security_attributes.h>

#include "platform/shared_holders.h"
#include "platform/win32.h"


namespace ovo {
namespace win32 {
namespace {

// An identifier stands for its set: the list and descriptor travel with it.
using SharedSets = ovo::platform::SharedHolders<PSID>;

} // namespace

SecurityAttributes::SecurityAttributes(SA_Predefined kind, unsigned long permissions)
    : sid(nullptr), explicitAccess(), acl(nullptr), securityDescriptor(nullptr), attributes()
{
    explicitAccess.grfAccessPermissions = static_cast<DWORD>(permissions);
    if (kind == 0)
        createWorldEA();
    else
        createAdminEA();
    // No result is looked at: a failed call leaves its pointer null and the rest goes on.
    SetEntriesInAclA(1, &explicitAccess, nullptr, &acl);
    securityDescriptor = LocalAlloc(LPTR, SECURITY_DESCRIPTOR_MIN_LENGTH);
    InitializeSecurityDescriptor(securityDescriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(securityDescriptor, TRUE, acl, FALSE);
    attributes.nLength = sizeof(SECURITY_ATTRIBUTES);
    attributes.lpSecurityDescriptor = securityDescriptor;
    attributes.bInheritHandle = FALSE;
}

SecurityAttributes::~SecurityAttributes() { release(); }

SecurityAttributes& SecurityAttributes::operator=(const SecurityAttributes& other)
{
    if (sid == other.sid)
        return *this; // the same set already, or self-assignment
    release();
    sid = other.sid;
    explicitAccess = other.explicitAccess;
    acl = other.acl;
    securityDescriptor = other.securityDescriptor;
    attributes = other.attributes;
    SharedSets::instance().share(sid);
    return *this;
}

SecurityAttributes::operator SECURITY_ATTRIBUTES*() { return &attributes; }

void SecurityAttributes::release()
{
    if (!SharedSets::instance().leave(sid))
        return;
    if (sid != nullptr)
        FreeSid(sid);
    LocalFree(acl);
    LocalFree(securityDescriptor);
}

void SecurityAttributes::createWorldEA()
{
    SID_IDENTIFIER_AUTHORITY world = SECURITY_WORLD_SID_AUTHORITY;
    AllocateAndInitializeSid(&world, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &sid);
    explicitAccess.grfAccessMode = SET_ACCESS;
    explicitAccess.grfInheritance = NO_INHERITANCE;
    explicitAccess.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    explicitAccess.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
    explicitAccess.Trustee.ptstrName = static_cast<LPSTR>(sid);
}

void SecurityAttributes::createAdminEA()
{
    SID_IDENTIFIER_AUTHORITY nt = SECURITY_NT_AUTHORITY;
    AllocateAndInitializeSid(&nt, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0, &sid);
    explicitAccess.grfAccessMode = SET_ACCESS;
    explicitAccess.grfInheritance = NO_INHERITANCE;
    explicitAccess.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    explicitAccess.Trustee.TrusteeType = TRUSTEE_IS_GROUP;
    explicitAccess.Trustee.ptstrName = static_cast<LPSTR>(sid);
}

} // namespace win32
} // namespace ovo
