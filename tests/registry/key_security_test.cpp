// A machine key made for Everyone and the Administrators, its access list read back.
#include "harness/registry_fixture.h"
#include "harness/test_session.h"
#include "registry/key_security.h"
#include "registry/registry_key.h"

#include <gtest/gtest.h>

#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <sddl.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace {

// Full access, not inherited, for Everyone and then for the local Administrators, nothing else.
const std::wstring EveryoneAndAdministrators = L"D:(A;;KA;;;WD)(A;;KA;;;BA)";
const std::string CreatedLine = "RegCreateKeyEx result 0\n";

// Runs `work` with the process's standard output sent to a file; gives what was written.
template <class Work> std::string StandardOutputOf(Work work) {
    wchar_t folder[MAX_PATH], file[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"out", 0, file);
    std::fflush(stdout);
    const int saved = _dup(1);
    const int target = _wopen(file, _O_WRONLY | _O_TRUNC | _O_TEXT);
    _dup2(target, 1);
    work();
    std::fflush(stdout);
    _dup2(saved, 1);
    _close(target);
    _close(saved);
    std::stringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    DeleteFileW(file);
    std::string written = text.str();
    written.erase(std::remove(written.begin(), written.end(), '\r'), written.end());
    return written;
}

std::wstring DaclText(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1,
                                                         DACL_SECURITY_INFORMATION, &text, nullptr);
    std::wstring result = text != nullptr ? text : L"(none)";
    LocalFree(text);
    return result;
}

// The access list of a key in the 64-bit view as GetSecurityInfo gives it, as text.
std::wstring AccessListOf(const std::wstring& path) {
    RegistryKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, READ_CONTROL | KEY_WOW64_64KEY,
                      key.Receive()) != ERROR_SUCCESS)
        return L"(no key)";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    GetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                    nullptr, nullptr, &descriptor);
    const std::wstring text = DaclText(descriptor);
    LocalFree(descriptor);
    return text;
}

bool RunsUnderWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version") != nullptr;
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

TEST(CreateKeyWithAcl, NewKeyIsMadeInThe64BitViewAndTheStatusPrinted) {
    ScratchKey scratch;
    PutKey(View::Bit64, scratch.Path());
    const std::wstring path = scratch / L"Analytics";
    bool created = false;
    EXPECT_EQ(CreatedLine, StandardOutputOf([&] { created = CreateKeyWithAcl(path); }));
    EXPECT_TRUE(created);
    EXPECT_TRUE(KeyExists(View::Bit64, path));
    EXPECT_FALSE(KeyExists(View::Bit32, path));
    // Wine 8's RegCreateKeyExW drops the security attributes: there the key inherits its
    // parent's list, where Windows stores the one given.
    EXPECT_EQ(RunsUnderWine() ? AccessListOf(scratch.Path()) : EveryoneAndAdministrators,
              AccessListOf(path));
}

TEST(CreateKeyWithAcl, ExistingKeyKeepsItsAccessListAndCountsAsCreated) {
    ScratchKey scratch;
    const std::wstring path = scratch / L"Existing";
    PutText(View::Bit64, path, L"Kept", L"yes");
    const std::wstring before = AccessListOf(path);
    bool created = false;
    EXPECT_EQ(CreatedLine, StandardOutputOf([&] { created = CreateKeyWithAcl(path); }));
    EXPECT_TRUE(created);
    EXPECT_EQ(before, AccessListOf(path));
    EXPECT_EQ(L"yes", TextAt(View::Bit64, path, L"Kept").value_or(L""));
}
