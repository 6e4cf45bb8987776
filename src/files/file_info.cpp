// The path objects that the settings file and the blacklist file removal work through.
#include "files/file_info.h"

#include "files/file_tree.h"
#include "frame/strings.h"

#include <windows.h>

#include <cstdio>

namespace {
const wchar_t* const Backslash = L"\\";
}

CFileBase::CFileBase(const std::wstring& pathText) : path_(pathText), separator_(Backslash) {
    ReplaceAll(path_, L"/", L"\\");
}

CFileBase::~CFileBase() = default;

void CFileBase::GetParentDirectory(std::wstring& parent) const {
    if (path_.empty()) {
        parent = path_;
        return;
    }
    std::wstring copy = path_;
    ReplaceAll(copy, L"/", separator_);
    if (copy.back() == L'\\' || copy.back() == L'/')
        copy.pop_back();

    const std::size_t last = copy.rfind(separator_);
    const std::size_t first = copy.find(separator_);
    if (last != std::wstring::npos)
        copy.resize(last);
    if (last == std::wstring::npos || last == first)
        copy += PathSeparatorFor(copy);
    parent = copy;
}

CFileInfo::~CFileInfo() = default;

bool CFileInfo::DeleteFileOrDir() {
    if (!FileExists(Path()))
        return true;
    if (IsDirectory(Path()))
        return _wremove(Path().c_str()) == 0;
    if (!SetWritable(Path(), true))
        return false;
    return DeleteFileW(Path().c_str()) != FALSE;
}
