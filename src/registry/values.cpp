// Values of the suite on both registry views: path splitting, existence, reads and writes.
#include "registry/values.h"

#include "frame/action_frame.h"

#include <vector>

namespace {

const wchar_t* const NorvikUserKey = L"SOFTWARE\\Norvik";

// Bytes of a REG_SZ with its terminator.
DWORD StringBytes(const std::wstring& text) {
    return static_cast<DWORD>(2 * text.size() + 2);
}

void SetString(HKEY key, const std::wstring& name, const std::wstring& text) {
    RegSetValueExW(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   StringBytes(text));
}

// The size in bytes of the value, or false when the key is not open or has no such value.
bool QuerySize(HKEY key, const std::wstring& name, DWORD& size) {
    size = 0;
    return key != nullptr &&
           RegQueryValueExW(key, name.c_str(), nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS;
}

bool QueryInto(HKEY key, const std::wstring& name, std::vector<wchar_t>& block, DWORD size) {
    return key != nullptr &&
           RegQueryValueExW(key, name.c_str(), nullptr, nullptr,
                            reinterpret_cast<BYTE*>(block.data()), &size) == ERROR_SUCCESS;
}

} // namespace

void registry_value::SetPath(const std::wstring& fullPath) {
    const std::size_t last = fullPath.rfind(L'\\');
    if (last == std::wstring::npos) {
        subkey_ = fullPath;
        valueName_ = fullPath;
        return;
    }
    subkey_ = fullPath.substr(0, last);
    valueName_ = fullPath.substr(last + 1);
}

bool registry_value::OpenBothViews(bool create) {
    DWORD disposition = 0;
    if (create && !key32_)
        RegCreateKeyExW(root_, subkey_.c_str(), 0, nullptr, 0, AllAccess32, nullptr,
                        key32_.Receive(), &disposition);
    // Each open goes over the handle that the create gave, without closing it.
    key32_.Abandon();
    RegOpenKeyExW(root_, subkey_.c_str(), 0, AllAccess32, key32_.Receive());
    if (create && !nativeKey_)
        RegCreateKeyExW(root_, subkey_.c_str(), 0, nullptr, 0, AllAccessNative, nullptr,
                        nativeKey_.Receive(), &disposition);
    nativeKey_.Abandon();
    RegOpenKeyExW(root_, subkey_.c_str(), 0, AllAccessNative, nativeKey_.Receive());
    return key32_ || nativeKey_;
}

void registry_value::CloseBothViews() {
    nativeKey_.Close();
    key32_.Close();
}

bool registry_value::ValueExists() {
    if (!OpenBothViews(false))
        return false;
    DWORD size = 0;
    const bool exists =
        QuerySize(nativeKey_.Get(), valueName_, size) || QuerySize(key32_.Get(), valueName_, size);
    CloseBothViews();
    return exists;
}

void registry_value::ReadString(std::wstring& value) {
    value.clear();
    if (!OpenBothViews(false))
        return;
    DWORD size = 0;
    if (QuerySize(nativeKey_.Get(), valueName_, size) ||
        QuerySize(key32_.Get(), valueName_, size)) {
        // Twice the reported byte count, cleared, so that a text stored without its terminator
        // still ends in one.
        std::vector<wchar_t> block(size, L'\0');
        if (size != 0 && (QueryInto(nativeKey_.Get(), valueName_, block, size) ||
                          QueryInto(key32_.Get(), valueName_, block, size)))
            value = block.data();
    }
    CloseBothViews();
}

void registry_value::SetStringOnOpenViews(const std::wstring& text) {
    if (key32_)
        SetString(key32_.Get(), valueName_, text);
    if (nativeKey_)
        SetString(nativeKey_.Get(), valueName_, text);
}

template <class Text> void registry_string<Text>::WriteString(const Text& value) {
    if (!OpenBothViews(true))
        return;
    SetStringOnOpenViews(value);
    CloseBothViews();
}

template <class Text> void registry_string64<Text>::WriteString(const Text& value) {
    DWORD disposition = 0;
    if (!nativeKey_)
        RegCreateKeyExW(root_, subkey_.c_str(), 0, nullptr, 0, AllAccess64, nullptr,
                        nativeKey_.Receive(), &disposition);
    nativeKey_.Abandon(); // the open goes over the created handle, as in OpenBothViews
    RegOpenKeyExW(root_, subkey_.c_str(), 0, AllAccess64, nativeKey_.Receive());
    if (nativeKey_) {
        SetString(nativeKey_.Get(), valueName_, value);
        nativeKey_.Close();
    }
}

// The suite's values are wide text only.
template class registry_string<std::wstring>;
template class registry_string64<std::wstring>;

bool CreateRegDWValue(const std::wstring& name, DWORD value) {
    RegistryKey key;
    const BYTE* data = reinterpret_cast<const BYTE*>(&value);
    if (RegOpenKeyExW(HKEY_CURRENT_USER, NorvikUserKey, 0, KEY_ALL_ACCESS, key.Receive()) ==
        ERROR_SUCCESS) {
        try {
            RegSetValueExW(key.Get(), name.c_str(), 0, REG_DWORD, data, 4);
            key.Close();
            return true;
        } catch (...) {
            LogMessage(SessionHandle, L"CALDER_CA Inside catch CreateRegDWValue \n");
            return false;
        }
    }
    if (RegCreateKeyExW(HKEY_CURRENT_USER, NorvikUserKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                        key.Receive(), nullptr) != ERROR_SUCCESS)
        return false;
    RegSetValueExW(key.Get(), name.c_str(), 0, REG_DWORD, data, 4);
    return true;
}

UINT WriteHklmString(std::wstring subkey, std::wstring name, std::wstring value) {
    RegistryKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, subkey.c_str(), 0, KEY_ALL_ACCESS, key.Receive()) !=
        ERROR_SUCCESS)
        RegCreateKeyExW(HKEY_CLASSES_ROOT, subkey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                        key.Receive(), nullptr);
    if (key && RegSetValueExW(key.Get(), name.c_str(), 0, REG_SZ,
                              reinterpret_cast<const BYTE*>(value.c_str()),
                              StringBytes(value)) == ERROR_SUCCESS)
        LogMessage(SessionHandle,
                   L"Calder_CA CreatePanorelContextMenu() - Successfully created GUID");
    return 0;
}
