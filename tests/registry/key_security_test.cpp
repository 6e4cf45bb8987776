// A machine key made for Everyone and the Administrators, read back through its access list.
#include "harness/registry_fixture.h"
#include "harness/test_session.h"
#include "registry/key_security.h"

#include <gtest/gtest.h>

#include <aclapi.h>
#include <io.h>
#include <sddl.h>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>

namespace {

// Runs `work` with the process's standard output sent to a file, and gives what was written,
// line ends as the program wrote them.
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
    std::string text;
    if (FILE* read = _wfopen(file, L"rb")) {
        char chunk[256];
        for (std::size_t got; (got = std::fread(chunk, 1, sizeof(chunk), read)) > 0;)
            text.append(chunk, got);
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        std::fclose(read);
    }
    DeleteFileW(file);
    return text;
}

// The access list of a key in the 64-bit view, with the descriptor that holds it; the caller
// frees the descriptor with LocalFree. Null when the key cannot be read.
PSECURITY_DESCRIPTOR AccessListOf(const std::wstring& path, PACL& acl) {
    acl = nullptr;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, READ_CONTROL | KEY_WOW64_64KEY, &key) !=
        ERROR_SUCCESS)
        return nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    GetSecurityInfo(key, SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr, &acl,
                    nullptr, &descriptor);
    RegCloseKey(key);
    return descriptor;
}

// The same access list as security descriptor text.
std::wstring AccessListText(const std::wstring& path) {
    PACL acl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = AccessListOf(path, acl);
    wchar_t* text = nullptr;
    if (descriptor != nullptr)
        ConvertSecurityDescriptorToStringSecurityDescriptorW(
            descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr);
    std::wstring result = text != nullptr ? text : L"(none)";
    LocalFree(text);
    LocalFree(descriptor);
    return result;
}

struct Entry {
    BYTE type;
    BYTE flags;
    ACCESS_MASK mask;
    std::wstring sid;
};

std::vector<Entry> EntriesOf(PACL acl) {
    std::vector<Entry> entries;
    for (DWORD index = 0; acl != nullptr && index < acl->AceCount; ++index) {
        ACCESS_ALLOWED_ACE* ace = nullptr;
        GetAce(acl, index, reinterpret_cast<void**>(&ace));
        wchar_t* sid = nullptr;
        ConvertSidToStringSidW(&ace->SidStart, &sid);
        entries.push_back({ace->Header.AceType, ace->Header.AceFlags, ace->Mask, sid});
        LocalFree(sid);
    }
    return entries;
}

std::vector<Entry> AccessEntries(const std::wstring& path) {
    PACL acl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = AccessListOf(path, acl);
    std::vector<Entry> entries = EntriesOf(acl);
    LocalFree(descriptor);
    return entries;
}

// Full access, not inherited, for Everyone and then the local Administrators, and nothing else.
void ExpectEveryoneAndAdministrators(const std::vector<Entry>& entries) {
    ASSERT_EQ(2u, entries.size());
    EXPECT_EQ(L"S-1-1-0", entries[0].sid);
    EXPECT_EQ(L"S-1-5-32-544", entries[1].sid);
    for (const Entry& entry : entries) {
        EXPECT_EQ(ACCESS_ALLOWED_ACE_TYPE, entry.type);
        EXPECT_EQ(0, entry.flags);
        EXPECT_EQ(ACCESS_MASK{KEY_ALL_ACCESS}, entry.mask);
    }
}

bool RunsUnderWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version") != nullptr;
}

const std::string CreatedLine = "RegCreateKeyEx result 0\n";

} // namespace

TEST(KeyAccessDescriptor, HoldsFullAccessForEveryoneAndTheAdministratorsAsAKeyStoresIt) {
    KeyAccessDescriptor descriptor;
    ASSERT_TRUE(descriptor.Build());
    BOOL present = FALSE, defaulted = TRUE;
    PACL acl = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorDacl(descriptor.Get(), &present, &acl, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_FALSE(defaulted);
    ExpectEveryoneAndAdministrators(EntriesOf(acl));

    ScratchKey scratch;
    PutKey(View::Bit64, scratch.Path());
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_LOCAL_MACHINE, scratch.Path().c_str(), 0,
                                           WRITE_DAC | KEY_WOW64_64KEY, &key));
    EXPECT_EQ(ERROR_SUCCESS, RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor.Get()));
    RegCloseKey(key);
    ExpectEveryoneAndAdministrators(AccessEntries(scratch.Path()));
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
    if (RunsUnderWine()) {
        // Wine 8's RegCreateKeyExW drops the security attributes: the key inherits its
        // parent's list there, where Windows stores the one given.
        EXPECT_EQ(AccessListText(scratch.Path()), AccessListText(path));
        return;
    }
    ExpectEveryoneAndAdministrators(AccessEntries(path));
}

TEST(CreateKeyWithAcl, ExistingKeyKeepsItsAccessListAndCountsAsCreated) {
    ScratchKey scratch;
    const std::wstring path = scratch / L"Existing";
    PutText(View::Bit64, path, L"Kept", L"yes");
    const std::wstring before = AccessListText(path);
    bool created = false;
    EXPECT_EQ(CreatedLine, StandardOutputOf([&] { created = CreateKeyWithAcl(path); }));
    EXPECT_TRUE(created);
    EXPECT_EQ(before, AccessListText(path));
    EXPECT_EQ(L"yes", TextAt(View::Bit64, path, L"Kept").value_or(L""));
}
