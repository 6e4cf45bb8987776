// Registry setup and checks for tests, through the platform's own calls in a view the test names.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

// The process's own view, or one of the two by its flag.
enum class View : REGSAM { Native = 0, Bit32 = KEY_WOW64_32KEY, Bit64 = KEY_WOW64_64KEY };

// Create root\key in `view` as needed and store a value, a REG_SZ with its terminator, or nothing.
void PutValue(View view, const std::wstring& key, const std::wstring& name, DWORD type,
              const void* data, DWORD bytes, HKEY root = HKEY_LOCAL_MACHINE);
void PutText(View view, const std::wstring& key, const std::wstring& name, const std::wstring& text,
             HKEY root = HKEY_LOCAL_MACHINE);
void PutKey(View view, const std::wstring& key, HKEY root = HKEY_LOCAL_MACHINE);

struct StoredValue {
    DWORD type;
    std::vector<BYTE> data;
};

// A value as stored in `view`, or nothing when the key or the value is absent; or its data read
// as text up to the first terminator.
std::optional<StoredValue> ValueAt(View view, const std::wstring& key, const std::wstring& name,
                                   HKEY root = HKEY_LOCAL_MACHINE);
std::optional<std::wstring> TextAt(View view, const std::wstring& key, const std::wstring& name,
                                   HKEY root = HKEY_LOCAL_MACHINE);
bool KeyExists(View view, const std::wstring& key, HKEY root = HKEY_LOCAL_MACHINE);

// Removes root\key and everything below it in `view`, if it is there.
void RemoveTree(View view, const std::wstring& key, HKEY root = HKEY_LOCAL_MACHINE);

// Lets no one delete root\key in `view` (Everyone is denied DELETE), or gives the deletion back.
// Wine still grants an open for DELETE alone, but refuses one for KEY_ALL_ACCESS, so a denied key
// that has a child cannot be removed.
void DenyDelete(View view, const std::wstring& key, bool deny, HKEY root = HKEY_LOCAL_MACHINE);

// A key of this test alone, HKEY_LOCAL_MACHINE\SOFTWARE\CalderTests\{guid}, removed from both
// views at the end, with the parent when nothing else is left in it.
class ScratchKey {
public:
    ScratchKey();
    ~ScratchKey();
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    const std::wstring& Path() const { return path_; }
    std::wstring operator/(const std::wstring& child) const { return path_ + L"\\" + child; }

private:
    std::wstring path_;
};
