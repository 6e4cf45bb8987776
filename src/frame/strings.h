// Wide-string helpers shared by every family: case folding, digits, replacement, joins, bounded
// formatting.
#pragma once

#include <cstddef>
#include <string>

// Each character through the runtime's towlower in its default locale.
void ToLowerInPlace(std::wstring& text);

// True when the two strings are equal after ToLowerInPlace of copies.
bool EqualFolded(const std::wstring& a, const std::wstring& b);

// 0 when equal after ToLowerInPlace of copies, otherwise the sign of the wide-string comparison.
int CompareFolded(const std::wstring& a, const std::wstring& b);

// True when every character lies in '0' to '9'; an empty string is true.
bool IsAllDigits(const std::wstring& text);

// Replaces every occurrence of `from` in place, left to right, without rescanning what was put
// in. Does nothing when `from` is null or empty, or equal to `to`.
void ReplaceAll(std::wstring& text, const wchar_t* from, const wchar_t* to);

// "" when `path` ends in a slash or a backslash, else a backslash: every join is
// folder + PathSeparatorFor(folder) + name. An empty path gives a backslash.
std::wstring PathSeparatorFor(const std::wstring& path);

// Bounded printf into `buffer` of `capacity` wide characters (placeholders as the platform's
// wide printf: %s takes a wide string). The character count, or -1 when the text does not fit or
// cannot be encoded; the buffer always ends in a terminator.
int FormatWideString(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...);

// Capacity of the buffer FormatWideStringFixed writes into.
constexpr std::size_t FixedFormatChars = 200;

// The same into a buffer of exactly 200 characters, with `count` as the limit asked for. A limit
// beyond the buffer is held to the buffer's size.
int FormatWideStringFixed(wchar_t (&buffer)[FixedFormatChars], std::size_t count,
                          const wchar_t* format, ...);
