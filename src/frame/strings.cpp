// Wide-string helpers shared by every family.
#include "frame/strings.h"

#include <cwctype>

void ToLowerInPlace(std::wstring& text) {
    for (wchar_t& character : text)
        character = static_cast<wchar_t>(std::towlower(character));
}

int CompareFolded(const std::wstring& a, const std::wstring& b) {
    std::wstring left = a;
    std::wstring right = b;
    ToLowerInPlace(left);
    ToLowerInPlace(right);
    const int order = left.compare(right);
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

bool EqualFolded(const std::wstring& a, const std::wstring& b) { return CompareFolded(a, b) == 0; }
