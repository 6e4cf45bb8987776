// A folder of the test's own under the prefix's temporary folder, removed with all it holds at the
// end.
#pragma once

#include <string>

class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The folder's path, without a trailing backslash.
    const std::wstring& Path() const { return path_; }
    // Path() + "\" + relative.
    std::wstring operator/(const std::wstring& relative) const;

    // Makes a folder below the scratch folder, parents included; gives its full path.
    std::wstring MakeFolder(const std::wstring& relative) const;
    // Writes `text` into a file below the scratch folder, making its folder; gives its full path.
    std::wstring MakeFile(const std::wstring& relative, const std::string& text = "data") const;

  private:
    std::wstring path_;
};

// A name that no other test uses: "calder-" and a new GUID.
std::wstring UniqueName();

// What the platform says: is there a file or folder at `path`?
bool PathPresent(const std::wstring& path);
