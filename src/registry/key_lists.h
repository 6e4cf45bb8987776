// Names under a registry key: subkeys and values of both views, value removal, retained names.
#pragma once

#include "registry/registry_key.h"

#include <windows.h>

#include <string>
#include <vector>

// Capacity in wide characters of the lister's name buffer.
constexpr DWORD ListerNameChars = 520;

// A listing of one key: the caller fills root and subkey, then calls one enumeration.
struct RegistryKeyLister {
    std::vector<std::wstring> names;
    std::wstring subkey;
    HKEY root = nullptr;
    RegistryKey nativeKey;
    RegistryKey key32;
    DWORD index = 0;
    DWORD count = 0;
    DWORD longestName = 0;
    DWORD nameLength = 0;
    LSTATUS status = ERROR_SUCCESS;
    wchar_t name[ListerNameChars] = {};
};

// Appends the subkey names of the native view, then those of the 32-bit view that are not yet
// listed (exact, case-sensitive comparison). A failed step appends what the buffer holds.
void EnumerateSubkeys(RegistryKeyLister& lister);

// Appends the value names of the native view; only when that gives none, those of the 32-bit view.
void EnumerateValues(RegistryKeyLister& lister);

// Deletes every value of an open key, after listing them all, except the default value and the
// value named by one blank. `keyPath` is not used.
void DeleteAllValues(HKEY key, std::wstring keyPath);

// Appends to RetainedNames the subkey names of an open key and the texts of its REG_SZ values,
// each backslash made a slash. A text that does not fit 260 bytes (over 129 characters) is left
// out.
void CollectRetainedNames(HKEY key);
