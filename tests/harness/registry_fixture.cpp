// Registry setup and checks for tests through the platform's own calls.
#include "harness/registry_fixture.h"

#include "harness/test_session.h"
#include "registry/registry_key.h"

#include <gtest/gtest.h>

#include <sddl.h>

namespace {

const wchar_t* const TestsKey = L"SOFTWARE\\CalderTests";

// Opens root\key in `view`, or creates it when `create` is set.
bool OpenIn(View view, const std::wstring& key, REGSAM access, HKEY root, RegistryKey& opened,
            bool create = false) {
    access |= static_cast<REGSAM>(view);
    return (create
                ? RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, access, nullptr,
                                  opened.Receive(), nullptr)
                : RegOpenKeyExW(root, key.c_str(), 0, access, opened.Receive())) == ERROR_SUCCESS;
}

} // namespace

void PutValue(View view, const std::wstring& key, const std::wstring& name, DWORD type,
              const void* data, DWORD bytes, HKEY root) {
    RegistryKey opened;
    ASSERT_TRUE(OpenIn(view, key, KEY_ALL_ACCESS, root, opened, true)) << Narrow(key);
    RegSetValueExW(opened.Get(), name.c_str(), 0, type, static_cast<const BYTE*>(data), bytes);
}

void PutText(View view, const std::wstring& key, const std::wstring& name, const std::wstring& text,
             HKEY root) {
    PutValue(view, key, name, REG_SZ, text.c_str(),
             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)), root);
}

void PutKey(View view, const std::wstring& key, HKEY root) {
    RegistryKey opened;
    EXPECT_TRUE(OpenIn(view, key, KEY_ALL_ACCESS, root, opened, true)) << Narrow(key);
}

std::optional<StoredValue> ValueAt(View view, const std::wstring& key, const std::wstring& name,
                                   HKEY root) {
    RegistryKey opened;
    StoredValue value = {0, std::vector<BYTE>(16384)};
    DWORD bytes = static_cast<DWORD>(value.data.size());
    if (!OpenIn(view, key, KEY_READ, root, opened) ||
        RegQueryValueExW(opened.Get(), name.c_str(), nullptr, &value.type, value.data.data(),
                         &bytes) != ERROR_SUCCESS)
        return std::nullopt;
    value.data.resize(bytes);
    return value;
}

std::optional<std::wstring> TextAt(View view, const std::wstring& key, const std::wstring& name,
                                   HKEY root) {
    std::optional<StoredValue> value = ValueAt(view, key, name, root);
    if (!value)
        return std::nullopt;
    value->data.resize(value->data.size() + sizeof(wchar_t), 0);
    return std::wstring(reinterpret_cast<const wchar_t*>(value->data.data()));
}

bool KeyExists(View view, const std::wstring& key, HKEY root) {
    RegistryKey opened;
    return OpenIn(view, key, KEY_READ, root, opened);
}

void RemoveTree(View view, const std::wstring& key, HKEY root) {
    RegistryKey opened;
    if (OpenIn(view, key, KEY_ALL_ACCESS, root, opened))
        RegDeleteTreeW(opened.Get(), nullptr);
    opened.Close();
    RegDeleteKeyExW(root, key.c_str(), static_cast<REGSAM>(view), 0);
}

void DenyDelete(View view, const std::wstring& key, bool deny, HKEY root) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
        deny ? L"D:(D;;SD;;;WD)(A;;KA;;;WD)" : L"D:(A;;KA;;;WD)", SDDL_REVISION_1, &descriptor,
        nullptr));
    RegistryKey opened;
    ASSERT_TRUE(OpenIn(view, key, WRITE_DAC, root, opened));
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetKeySecurity(opened.Get(), DACL_SECURITY_INFORMATION, descriptor));
    LocalFree(descriptor);
}

ScratchKey::ScratchKey() : path_(std::wstring(TestsKey) + L"\\" + NewGuid()) {}

ScratchKey::~ScratchKey() {
    for (View view : {View::Bit64, View::Bit32}) {
        RemoveTree(view, path_);
        RegDeleteKeyExW(HKEY_LOCAL_MACHINE, TestsKey, static_cast<REGSAM>(view), 0);
    }
}
