// A folder of the test's own under the prefix's temporary folder, removed with all it holds at the
// end, and a file held open so that it cannot be deleted.
#pragma once

#include <windows.h>

#include <string>

class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The folder's path, without a trailing backslash.
    const std::wstring& Path() const { return path_; }
    std::wstring operator/(const std::wstring& relative) const { return path_ + L"\\" + relative; }

    // Makes a folder, parents included, or writes a file, making its folder; gives its full path.
    std::wstring MakeFolder(const std::wstring& relative) const;
    std::wstring MakeFile(const std::wstring& relative, const std::string& text = "data") const;

private:
    std::wstring path_;
};

// Holds a file open for reading without delete sharing while it lives.
class HeldOpen {
public:
    explicit HeldOpen(const std::wstring& path)
        : handle_(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, 0, nullptr)) {}
    ~HeldOpen() { CloseHandle(handle_); }
    HeldOpen(const HeldOpen&) = delete;
    HeldOpen& operator=(const HeldOpen&) = delete;

private:
    HANDLE handle_;
};

// A name that no other test uses: "calder-" and a new GUID.
std::wstring UniqueName();
// Is there a file or folder at `path`?
bool PathPresent(const std::wstring& path);
