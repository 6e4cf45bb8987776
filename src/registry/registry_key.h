// Owner of one open registry key: closes it on every path unless it is empty.
#pragma once

#include <windows.h>

class RegistryKey {
public:
    RegistryKey() = default;
    explicit RegistryKey(HKEY key) : key_(key) {}
    ~RegistryKey() { Close(); }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    HKEY Get() const { return key_; }
    explicit operator bool() const { return key_ != nullptr; }

    // Closes what is held and gives the address for a call that opens or creates a key.
    HKEY* Receive() {
        Close();
        return &key_;
    }

    // Lets go of the key without closing it: it stays open until the process ends.
    void Abandon() { key_ = nullptr; }

    void Close() {
        if (key_ != nullptr)
            RegCloseKey(key_);
        key_ = nullptr;
    }

private:
    HKEY key_ = nullptr;
};
