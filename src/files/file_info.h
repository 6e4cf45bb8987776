// One path as an object: its parent folder, and deleting it whether it is a file or not.
#pragma once

#include <string>

// A path with backslashes for separators.
class CFileBase {
  public:
    // Copies `pathText` and turns every slash into a backslash.
    explicit CFileBase(const std::wstring& pathText);
    virtual ~CFileBase();

    const std::wstring& Path() const { return path_; }

    // The folder above the path: one trailing separator is dropped and the text cut at the last
    // separator. A path of one level keeps a separator: "C:\Name" gives "C:\", "name" gives
    // "name\". An empty path gives an empty parent.
    void GetParentDirectory(std::wstring& parent) const;

  private:
    std::wstring path_;
    const wchar_t* separator_;
};

class CFileInfo : public CFileBase {
  public:
    using CFileBase::CFileBase;
    ~CFileInfo() override;

    // True when the path is gone afterwards: absent already, or a file made writable and
    // deleted. A folder is handed to the runtime's _wremove, which fails on it.
    bool DeleteFileOrDir();
};
