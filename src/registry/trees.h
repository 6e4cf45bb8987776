// Removal of a registry key with everything below it, in one view of the registry.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

// Capacity in wide characters of the path buffer that DeleteTreeHklm32 works in.
constexpr std::size_t TreePathChars = 520;

// Removes root\subkey and all below it in the 32-bit view, depth first. An absent key is a
// success. Stops at the first child that cannot be removed and gives false, leaving the rest.
bool DeleteTree32(HKEY root, const std::wstring& subkey);

// The same in the view native to the process.
bool DeleteTreeNative(HKEY root, const std::wstring& subkey);

// Removes HKEY_LOCAL_MACHINE\path and all below it in the 32-bit view, building each child's
// path in the caller's buffer. The buffer comes back as it was, except that a trailing
// backslash is gone once the key could be opened.
bool DeleteTreeHklm32(wchar_t (&path)[TreePathChars]);
