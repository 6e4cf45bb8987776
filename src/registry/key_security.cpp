// Creation of a machine key with an access list for Everyone and the local administrators.
#include "registry/key_security.h"

#include "registry/registry_key.h"
#include "registry/values.h"

#include <aclapi.h>

#include <cstdio>

namespace {

// Bytes of the security descriptor that the key's access list is set in.
constexpr SIZE_T SecurityDescriptorBytes = 40;

EXPLICIT_ACCESSW FullAccessFor(PSID sid, TRUSTEE_TYPE trusteeType) {
    EXPLICIT_ACCESSW entry = {};
    entry.grfAccessPermissions = KEY_ALL_ACCESS;
    entry.grfAccessMode = SET_ACCESS;
    entry.grfInheritance = NO_INHERITANCE;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    entry.Trustee.TrusteeType = trusteeType;
    entry.Trustee.ptstrName = static_cast<LPWSTR>(sid);
    return entry;
}

bool Failed(const wchar_t* line) {
    wprintf(line, GetLastError());
    return false;
}

} // namespace

KeyAccessDescriptor::~KeyAccessDescriptor() {
    if (everyone_ != nullptr)
        FreeSid(everyone_);
    if (administrators_ != nullptr)
        FreeSid(administrators_);
    if (acl_ != nullptr)
        LocalFree(acl_);
    if (descriptor_ != nullptr)
        LocalFree(descriptor_);
}

bool KeyAccessDescriptor::Build() {
    SID_IDENTIFIER_AUTHORITY worldAuthority = SECURITY_WORLD_SID_AUTHORITY;
    if (!AllocateAndInitializeSid(&worldAuthority, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0,
                                  &everyone_))
        return Failed(L"AllocateAndInitializeSid Error %u\n");
    EXPLICIT_ACCESSW entries[2];
    entries[0] = FullAccessFor(everyone_, TRUSTEE_IS_WELL_KNOWN_GROUP);

    SID_IDENTIFIER_AUTHORITY ntAuthority = SECURITY_NT_AUTHORITY;
    if (!AllocateAndInitializeSid(&ntAuthority, 2, SECURITY_BUILTIN_DOMAIN_RID,
                                  DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0, &administrators_))
        return Failed(L"AllocateAndInitializeSid Error %u\n");
    entries[1] = FullAccessFor(administrators_, TRUSTEE_IS_GROUP);

    if (SetEntriesInAclW(2, entries, nullptr, &acl_) != ERROR_SUCCESS)
        return Failed(L"SetEntriesInAcl Error %u\n");
    descriptor_ = LocalAlloc(LPTR, SecurityDescriptorBytes);
    if (descriptor_ == nullptr)
        return Failed(L"LocalAlloc Error %u\n");
    if (!InitializeSecurityDescriptor(descriptor_, SECURITY_DESCRIPTOR_REVISION))
        return Failed(L"InitializeSecurityDescriptor Error %u\n");
    if (!SetSecurityDescriptorDacl(descriptor_, TRUE, acl_, FALSE))
        return Failed(L"SetSecurityDescriptorDacl Error %u\n");
    return true;
}

bool CreateKeyWithAcl(const std::wstring& subkey) {
    KeyAccessDescriptor descriptor;
    if (!descriptor.Build())
        return false;
    SECURITY_ATTRIBUTES attributes = {sizeof(SECURITY_ATTRIBUTES), descriptor.Get(), FALSE};
    wchar_t noClass[] = L"";
    DWORD disposition = 0;
    RegistryKey key;
    const LSTATUS created = RegCreateKeyExW(HKEY_LOCAL_MACHINE, subkey.c_str(), 0, noClass, 0,
                                            AllAccess64, &attributes, key.Receive(), &disposition);
    wprintf(L"RegCreateKeyEx result %u\n", static_cast<unsigned>(created));
    return created == ERROR_SUCCESS;
}
