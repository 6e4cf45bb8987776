// Registry values addressed by one path, read from and written to both views of the registry.
#pragma once

#include "registry/registry_key.h"

#include <windows.h>

#include <string>

// KEY_ALL_ACCESS in the view native to the process, in the 32-bit view, and in the 64-bit view.
constexpr REGSAM AllAccessNative = KEY_ALL_ACCESS;               // 0xF003F
constexpr REGSAM AllAccess32 = KEY_ALL_ACCESS | KEY_WOW64_32KEY; // 0xF023F
constexpr REGSAM AllAccess64 = KEY_ALL_ACCESS | KEY_WOW64_64KEY; // 0xF013F
constexpr REGSAM ReadAccess = KEY_READ;                          // 0x20019

// One value of the suite, which may lie in either view. Between two operations no key is open.
class registry_value {
public:
    explicit registry_value(HKEY root = HKEY_LOCAL_MACHINE) : root_(root) {}
    virtual ~registry_value() = default;
    registry_value(const registry_value&) = delete;
    registry_value& operator=(const registry_value&) = delete;

    // Splits at the last backslash: the key path before it, the value name behind it (empty, the
    // key's default value, when the path ends in a backslash). A path without a backslash is
    // both the key path and the value name.
    void SetPath(const std::wstring& fullPath);

    // True when the value is in the native view or, failing that, in the 32-bit view.
    bool ValueExists();

    // The value's text, from the native view first and the 32-bit view otherwise; empty when
    // neither has it. The value's type is not checked.
    void ReadString(std::wstring& value);

    // Opens the key in the 32-bit view and then in the native view, each created first when
    // `create` is set and its handle is empty. True when either handle is open afterwards.
    // Callers that do more than one write close both with CloseBothViews.
    bool OpenBothViews(bool create);

    // Sets the value name of SetPath as REG_SZ of (characters + 1) * 2 bytes on each handle
    // that is open; the results are not looked at.
    void SetStringOnOpenViews(const std::wstring& text);

    void CloseBothViews();

    HKEY NativeKey() const { return nativeKey_.Get(); }
    HKEY Key32() const { return key32_.Get(); }
    HKEY Root() const { return root_; }
    const std::wstring& Subkey() const { return subkey_; }
    const std::wstring& ValueName() const { return valueName_; }

protected:
    RegistryKey nativeKey_;
    RegistryKey key32_;
    HKEY root_;
    std::wstring valueName_;
    std::wstring subkey_;
};

// A text value written to both views.
template <class Text> class registry_string : public registry_value {
public:
    using registry_value::registry_value;

    // Creates the key in both views as needed and sets the text in each; reports nothing.
    void WriteString(const Text& value);
};

// A text value written to the 64-bit view only.
template <class Text> class registry_string64 : public registry_value {
public:
    using registry_value::registry_value;

    // Creates and opens the key with KEY_ALL_ACCESS | KEY_WOW64_64KEY and sets the text there.
    void WriteString(const Text& value);
};

// Stores a REG_DWORD under HKEY_CURRENT_USER\SOFTWARE\Norvik, creating the key when it is
// absent. False when the key can be neither opened nor created.
bool CreateRegDWValue(const std::wstring& name, DWORD value);

// Stores a REG_SZ in HKEY_LOCAL_MACHINE\subkey; when that key cannot be opened, the key is
// created under HKEY_CLASSES_ROOT instead. Always 0.
UINT WriteHklmString(std::wstring subkey, std::wstring name, std::wstring value);
