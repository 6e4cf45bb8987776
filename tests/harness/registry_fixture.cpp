// Registry setup and checks for tests through the platform's own calls.
#include "harness/registry_fixture.h"

#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <sddl.h>

namespace {

REGSAM Access(View view, REGSAM access) {
    return access | static_cast<REGSAM>(view);
}

// Opens or creates root\key; the caller closes the handle.
HKEY Created(View view, const std::wstring& key, HKEY root) {
    HKEY handle = nullptr;
    EXPECT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, Access(view, KEY_ALL_ACCESS),
                              nullptr, &handle, nullptr))
        << Narrow(key);
    return handle;
}

const wchar_t* const TestsKey = L"SOFTWARE\\CalderTests";

} // namespace

void PutText(View view, const std::wstring& key, const std::wstring& name, const std::wstring& text,
             HKEY root) {
    HKEY handle = Created(view, key, root);
    RegSetValueExW(handle, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(handle);
}

void PutNumber(View view, const std::wstring& key, const std::wstring& name, DWORD number,
               HKEY root) {
    HKEY handle = Created(view, key, root);
    RegSetValueExW(handle, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                   sizeof(number));
    RegCloseKey(handle);
}

void PutKey(View view, const std::wstring& key, HKEY root) {
    RegCloseKey(Created(view, key, root));
}

std::optional<std::wstring> TextAt(View view, const std::wstring& key, const std::wstring& name,
                                   HKEY root) {
    HKEY handle = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, Access(view, KEY_READ), &handle) != ERROR_SUCCESS)
        return std::nullopt;
    wchar_t text[4096] = {};
    DWORD bytes = sizeof(text) - sizeof(wchar_t);
    const LSTATUS status = RegQueryValueExW(handle, name.c_str(), nullptr, nullptr,
                                            reinterpret_cast<BYTE*>(text), &bytes);
    RegCloseKey(handle);
    if (status != ERROR_SUCCESS)
        return std::nullopt;
    return std::wstring(text);
}

std::optional<DWORD> ValueBytes(View view, const std::wstring& key, const std::wstring& name,
                                HKEY root) {
    HKEY handle = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, Access(view, KEY_READ), &handle) != ERROR_SUCCESS)
        return std::nullopt;
    DWORD bytes = 0;
    const LSTATUS status =
        RegQueryValueExW(handle, name.c_str(), nullptr, nullptr, nullptr, &bytes);
    RegCloseKey(handle);
    if (status != ERROR_SUCCESS)
        return std::nullopt;
    return bytes;
}

bool KeyExists(View view, const std::wstring& key, HKEY root) {
    HKEY handle = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, Access(view, KEY_READ), &handle) != ERROR_SUCCESS)
        return false;
    RegCloseKey(handle);
    return true;
}

void RemoveTree(View view, const std::wstring& key, HKEY root) {
    HKEY handle = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, Access(view, KEY_ALL_ACCESS), &handle) != ERROR_SUCCESS)
        return;
    RegDeleteTreeW(handle, nullptr);
    RegCloseKey(handle);
    RegDeleteKeyExW(root, key.c_str(), static_cast<REGSAM>(view), 0);
}

void DenyDelete(View view, const std::wstring& key, bool deny, HKEY root) {
    // Everyone may do all; with `deny`, an entry before that refuses DELETE.
    const wchar_t* const sddl = deny ? L"D:(D;;SD;;;WD)(A;;KA;;;WD)" : L"D:(A;;KA;;;WD)";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1,
                                                                     &descriptor, nullptr));
    HKEY handle = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(root, key.c_str(), 0, Access(view, WRITE_DAC), &handle));
    EXPECT_EQ(ERROR_SUCCESS, RegSetKeySecurity(handle, DACL_SECURITY_INFORMATION, descriptor));
    RegCloseKey(handle);
    LocalFree(descriptor);
}

ScratchKey::ScratchKey() : path_(std::wstring(TestsKey) + L"\\" + NewGuid()) {}

ScratchKey::~ScratchKey() {
    for (View view : {View::Bit64, View::Bit32}) {
        RemoveTree(view, path_);
        RegDeleteKeyExW(HKEY_LOCAL_MACHINE, TestsKey, static_cast<REGSAM>(view), 0);
    }
}
