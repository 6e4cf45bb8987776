// Listings of subkeys and values on both views, removal of all values, the retained names.
#include "registry/key_lists.h"

#include "frame/action_frame.h"
#include "frame/strings.h"
#include "registry/values.h"

#include <algorithm>

namespace {

// Capacity in wide characters of a value name during removal and collection.
constexpr DWORD ValueNameChars = 8192;
// Capacity in wide characters of a subkey name during collection, and the length asked for.
constexpr DWORD RetainedKeyNameChars = 256;
constexpr DWORD RetainedKeyNameLength = 255;
// Bytes asked for when a retained text is read: 129 characters and the terminator fit.
constexpr DWORD RetainedTextBytes = 260;

// The value name that DeleteAllValues spares, beside the default value.
const wchar_t* const SparedValueName = L" ";

// Opens the listed key into `key` with `access`, then asks for the count and the longest name of
// its values or its subkeys. False when either fails.
bool OpenAndCount(RegistryKeyLister& lister, RegistryKey& key, REGSAM access, bool values) {
    if (RegOpenKeyExW(lister.root, lister.subkey.c_str(), 0, access, key.Receive()) !=
        ERROR_SUCCESS)
        return false;
    DWORD* count = values ? nullptr : &lister.count;
    DWORD* longest = values ? nullptr : &lister.longestName;
    DWORD* valueCount = values ? &lister.count : nullptr;
    DWORD* longestValue = values ? &lister.longestName : nullptr;
    return RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, count, longest, nullptr,
                            valueCount, longestValue, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void EnumerateSubkeyNames(RegistryKeyLister& lister, HKEY key, bool skipListed) {
    for (lister.index = 0; lister.index < lister.count; ++lister.index) {
        lister.nameLength = lister.longestName + 1;
        lister.status = RegEnumKeyExW(key, lister.index, lister.name, &lister.nameLength, nullptr,
                                      nullptr, nullptr, nullptr);
        if (skipListed &&
            std::find(lister.names.begin(), lister.names.end(), lister.name) != lister.names.end())
            continue;
        lister.names.push_back(lister.name);
    }
}

// Appends the value names that can be read; gives how many were appended.
std::size_t EnumerateValueNames(RegistryKeyLister& lister, HKEY key) {
    std::size_t appended = 0;
    for (lister.index = 0; lister.index < lister.count; ++lister.index) {
        lister.name[0] = L'\0';
        lister.nameLength = lister.longestName + 1;
        lister.status = RegEnumValueW(key, lister.index, lister.name, &lister.nameLength, nullptr,
                                      nullptr, nullptr, nullptr);
        if (lister.status == ERROR_SUCCESS) {
            lister.names.push_back(lister.name);
            ++appended;
        }
    }
    return appended;
}

void ResetCounts(RegistryKeyLister& lister) {
    lister.count = 0;
    lister.longestName = 0;
}

} // namespace

void EnumerateSubkeys(RegistryKeyLister& lister) {
    if (OpenAndCount(lister, lister.nativeKey, AllAccessNative, false))
        EnumerateSubkeyNames(lister, lister.nativeKey.Get(), false);
    lister.nativeKey.Close();

    ResetCounts(lister);
    if (OpenAndCount(lister, lister.key32, AllAccess32, false))
        EnumerateSubkeyNames(lister, lister.key32.Get(), true);
    lister.key32.Close();
}

void EnumerateValues(RegistryKeyLister& lister) {
    if (OpenAndCount(lister, lister.nativeKey, AllAccessNative, true) && lister.count != 0) {
        const std::size_t appended = EnumerateValueNames(lister, lister.nativeKey.Get());
        lister.nativeKey.Close();
        if (appended != 0)
            return;
    }
    lister.nativeKey.Close();

    ResetCounts(lister);
    if (OpenAndCount(lister, lister.key32, AllAccess32, true) && lister.count != 0)
        EnumerateValueNames(lister, lister.key32.Get());
    lister.key32.Close();
}

void DeleteAllValues(HKEY key, std::wstring /*keyPath*/) {
    DWORD count = 0;
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr,
                     nullptr, nullptr, nullptr);
    std::vector<std::wstring> doomed;
    wchar_t name[ValueNameChars];
    for (DWORD index = 0; index < count; ++index) {
        DWORD length = ValueNameChars;
        name[0] = L'\0';
        if (RegEnumValueW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) ==
            ERROR_NO_MORE_ITEMS)
            continue;
        const std::wstring found = name;
        if (found.empty() || found == SparedValueName)
            continue;
        doomed.push_back(found);
    }
    // Deleted only now: a deletion during the listing would shift the indices.
    for (const std::wstring& doomedName : doomed)
        RegDeleteValueW(key, doomedName.c_str());
}

void CollectRetainedNames(HKEY key) {
    DWORD subkeys = 0;
    DWORD values = 0;
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values, nullptr,
                     nullptr, nullptr, nullptr);
    wchar_t keyName[RetainedKeyNameChars];
    for (DWORD index = 0; index < subkeys; ++index) {
        DWORD length = RetainedKeyNameLength;
        if (RegEnumKeyExW(key, index, keyName, &length, nullptr, nullptr, nullptr, nullptr) ==
            ERROR_SUCCESS)
            RetainedNames.push_back(keyName);
    }
    wchar_t valueName[ValueNameChars];
    for (DWORD index = 0; index < values; ++index) {
        DWORD length = ValueNameChars;
        DWORD type = 0;
        valueName[0] = L'\0';
        if (RegEnumValueW(key, index, valueName, &length, nullptr, &type, nullptr, nullptr) !=
                ERROR_SUCCESS ||
            type != REG_SZ)
            continue;
        wchar_t text[MaxPropertyChars] = {};
        DWORD bytes = RetainedTextBytes;
        if (RegQueryValueExW(key, valueName, nullptr, nullptr, reinterpret_cast<BYTE*>(text),
                             &bytes) != ERROR_SUCCESS)
            continue;
        std::wstring retained = text;
        ReplaceAll(retained, L"\\", L"/");
        RetainedNames.push_back(retained);
    }
}
