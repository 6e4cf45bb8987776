// A machine key that everyone and the local administrators may fully use.
#pragma once

#include <windows.h>

#include <string>

// The security descriptor that such a key is created with: an access list that gives
// KEY_ALL_ACCESS, without inheritance, to Everyone and to the local Administrators. Owns the
// identifiers, the list and the descriptor, and frees them.
class KeyAccessDescriptor {
public:
    KeyAccessDescriptor() = default;
    ~KeyAccessDescriptor();
    KeyAccessDescriptor(const KeyAccessDescriptor&) = delete;
    KeyAccessDescriptor& operator=(const KeyAccessDescriptor&) = delete;

    // Builds the descriptor step by step; a step that fails prints its own line with the last
    // error to standard output and the result is false.
    bool Build();

    PSECURITY_DESCRIPTOR Get() const { return descriptor_; }

private:
    PSID everyone_ = nullptr;
    PSID administrators_ = nullptr;
    PACL acl_ = nullptr;
    PSECURITY_DESCRIPTOR descriptor_ = nullptr;
};

// Creates HKEY_LOCAL_MACHINE\subkey in the 64-bit view with the descriptor above. A key that
// exists keeps its own list. The create's status goes to standard output. True when the create
// succeeded.
bool CreateKeyWithAcl(const std::wstring& subkey);
