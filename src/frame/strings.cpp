// Wide-string helpers shared by every family.
#include "frame/strings.h"

#include <algorithm>
#include <cstdarg>
#include <cwchar>
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

bool IsAllDigits(const std::wstring& text) {
    return std::all_of(text.begin(), text.end(),
                       [](wchar_t character) { return character >= L'0' && character <= L'9'; });
}

void ReplaceAll(std::wstring& text, const wchar_t* from, const wchar_t* to) {
    if (from == nullptr || *from == L'\0')
        return;
    const std::wstring pattern = from;
    const std::wstring replacement = to == nullptr ? L"" : to;
    if (pattern == replacement)
        return;
    for (std::size_t at = text.find(pattern); at != std::wstring::npos;
         at = text.find(pattern, at + replacement.size()))
        text.replace(at, pattern.size(), replacement);
}

std::wstring PathSeparatorFor(const std::wstring& path) {
    if (!path.empty() && (path.back() == L'\\' || path.back() == L'/'))
        return L"";
    return L"\\";
}

namespace {

// The runtime's own wide printf (%s is a wide string), held to `capacity` with its terminator.
int FormatBounded(wchar_t* buffer, std::size_t capacity, const wchar_t* format,
                  va_list arguments) {
    if (capacity == 0)
        return -1;
    const int written = _vsnwprintf(buffer, capacity - 1, format, arguments);
    if (written < 0) {
        buffer[capacity - 1] = L'\0';
        return -1;
    }
    buffer[written] = L'\0';
    return written;
}

} // namespace

int FormatWideString(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int written = FormatBounded(buffer, capacity, format, arguments);
    va_end(arguments);
    return written;
}

int FormatWideStringFixed(wchar_t (&buffer)[FixedFormatChars], std::size_t count,
                          const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int written =
        FormatBounded(buffer, std::min(count, FixedFormatChars), format, arguments);
    va_end(arguments);
    return written;
}
