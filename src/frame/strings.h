// Wide-string helpers shared by every family: case-folded comparison and the like.
#pragma once

#include <string>

// Each character through the runtime's towlower in its default locale.
void ToLowerInPlace(std::wstring& text);

// True when the two strings are equal after ToLowerInPlace of copies.
bool EqualFolded(const std::wstring& a, const std::wstring& b);

// 0 when equal after ToLowerInPlace of copies, otherwise the sign of the wide-string comparison.
int CompareFolded(const std::wstring& a, const std::wstring& b);
