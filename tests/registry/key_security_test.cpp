// A machine key made for Everyone and the Administrators, its access list read back.
#include "harness/registry_fixture.h"
#include "registry/key_security.h"
#include "registry/registry_key.h"

#include <gtest/gtest.h>

#include <aclapi.h>
#include <sddl.h>

namespace {

// Full access, not inherited, for Everyone and then for the local Administrators, nothing else.
const std::wstring EveryoneAndAdministrators = L"D:(A;;KA;;;WD)(A;;KA;;;BA)";

std::wstring DaclText(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1,
                                                         DACL_SECURITY_INFORMATION, &text, nullptr);
    const std::wstring result = text != nullptr ? text : L"(none)";
    LocalFree(text);
    return result;
}

// The access list of a key in the 64-bit view, as text.
std::wstring AccessListOf(const std::wstring& path) {
    RegistryKey key;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, READ_CONTROL | KEY_WOW64_64KEY,
                  key.Receive());
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    GetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                    nullptr, nullptr, &descriptor);
    const std::wstring text = DaclText(descriptor);
    LocalFree(descriptor);
    return text;
}

} // namespace

TEST(KeyAccessDescriptor, GivesEveryoneAndTheAdministratorsFullAccessOnAKey) {
    KeyAccessDescriptor descriptor;
    ASSERT_TRUE(descriptor.Build());
    EXPECT_EQ(EveryoneAndAdministrators, DaclText(descriptor.Get()));
    ScratchKey scratch;
    PutKey(View::Bit64, scratch.Path());
    RegistryKey key;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_LOCAL_MACHINE, scratch.Path().c_str(), 0,
                                           WRITE_DAC | KEY_WOW64_64KEY, key.Receive()));
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor.Get()));
    EXPECT_EQ(EveryoneAndAdministrators, AccessListOf(scratch.Path()));
}

TEST(CreateKeyWithAcl, MakesTheKeyInThe64BitViewKeepsAnExistingOneAndPrintsTheStatus) {
    ScratchKey scratch;
    const std::wstring created = scratch / L"Analytics";
    const std::wstring existing = scratch / L"Existing";
    PutText(View::Bit64, existing, L"Kept", L"yes");
    const std::wstring existingList = AccessListOf(existing);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(CreateKeyWithAcl(created));
    EXPECT_TRUE(CreateKeyWithAcl(existing));
    EXPECT_EQ("RegCreateKeyEx result 0\nRegCreateKeyEx result 0\n",
              testing::internal::GetCapturedStdout());
    EXPECT_TRUE(KeyExists(View::Bit64, created));
    EXPECT_FALSE(KeyExists(View::Bit32, created));
    // Wine 8's RegCreateKeyExW drops the security attributes: there the key inherits its parent's
    // list, where Windows stores the one given.
    const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version") != nullptr;
    EXPECT_EQ(wine ? AccessListOf(scratch.Path()) : EveryoneAndAdministrators,
              AccessListOf(created));
    EXPECT_EQ(existingList, AccessListOf(existing));
    EXPECT_EQ(L"yes", TextAt(View::Bit64, existing, L"Kept").value_or(L""));
}
