// Depth-first removal of registry trees in the 32-bit or the native view.
#include "registry/trees.h"

#include "registry/registry_key.h"
#include "registry/values.h"

#include <cwchar>

namespace {

// Capacity in wide characters of the name buffer of one enumeration step.
constexpr DWORD ChildNameChars = 260;

// How one view deletes a single key and opens one for its children.
struct View {
    LSTATUS (*deleteKey)(HKEY root, const wchar_t* subkey);
    REGSAM openAccess;
};

LSTATUS DeleteKey32(HKEY root, const wchar_t* subkey) {
    return RegDeleteKeyExW(root, subkey, KEY_WOW64_32KEY, 0);
}

LSTATUS DeleteKeyNative(HKEY root, const wchar_t* subkey) {
    return RegDeleteKeyW(root, subkey);
}

const View View32 = {&DeleteKey32, AllAccess32};
const View ViewNative = {&DeleteKeyNative, AllAccessNative};

// The first subkey of an open key; index 0 each time, since the one before it has just gone.
bool FirstChild(HKEY key, wchar_t (&name)[ChildNameChars]) {
    DWORD length = ChildNameChars;
    return RegEnumKeyExW(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS;
}

bool DeleteTreeIn(const View& view, HKEY root, const std::wstring& subkey) {
    if (view.deleteKey(root, subkey.c_str()) == ERROR_SUCCESS)
        return true;
    RegistryKey key;
    const LSTATUS opened = RegOpenKeyExW(root, subkey.c_str(), 0, view.openAccess, key.Receive());
    if (opened == ERROR_FILE_NOT_FOUND)
        return true;
    if (opened != ERROR_SUCCESS)
        return false;
    wchar_t name[ChildNameChars];
    while (FirstChild(key.Get(), name)) {
        if (!DeleteTreeIn(view, root, subkey + L"\\" + name))
            break;
    }
    key.Close();
    return view.deleteKey(root, subkey.c_str()) == ERROR_SUCCESS;
}

} // namespace

bool DeleteTree32(HKEY root, const std::wstring& subkey) {
    return DeleteTreeIn(View32, root, subkey);
}

bool DeleteTreeNative(HKEY root, const std::wstring& subkey) {
    return DeleteTreeIn(ViewNative, root, subkey);
}

bool DeleteTreeHklm32(wchar_t (&path)[TreePathChars]) {
    if (DeleteKey32(HKEY_LOCAL_MACHINE, path) == ERROR_SUCCESS)
        return true;
    RegistryKey key;
    LSTATUS opened = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, AllAccess32, key.Receive());
    if (opened == ERROR_ACCESS_DENIED) {
        // One more try; a key that opens now still counts as a failure and stays open.
        key.Close();
        opened = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, AllAccess32, key.Receive());
        if (opened == ERROR_SUCCESS) {
            key.Abandon();
            return false;
        }
    }
    if (opened == ERROR_FILE_NOT_FOUND)
        return true;
    if (opened != ERROR_SUCCESS)
        return false;

    std::size_t length = std::wcslen(path);
    if ((length == 0 || path[length - 1] != L'\\') && length + 1 < TreePathChars) {
        path[length++] = L'\\';
        path[length] = L'\0';
    }
    const std::size_t nameAt = length;
    wchar_t name[ChildNameChars];
    while (FirstChild(key.Get(), name)) {
        path[nameAt] = L'\0';
        std::wcsncat(path, name, TreePathChars - 1 - nameAt);
        if (!DeleteTreeHklm32(path))
            break;
    }
    path[nameAt - 1] = L'\0';
    key.Close();
    return DeleteKey32(HKEY_LOCAL_MACHINE, path) == ERROR_SUCCESS;
}
