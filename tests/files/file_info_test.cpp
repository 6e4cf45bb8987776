// The path objects: backslashes, the parent folder, and deleting a file or refusing a folder.
#include "files/file_info.h"
#include "harness/scratch_folder.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {
std::wstring ParentOf(const std::wstring& path) {
    std::wstring parent = L"unchanged";
    CFileBase(path).GetParentDirectory(parent);
    return parent;
}
} // namespace

TEST(CFileBase, KeepsThePathWithBackslashes) {
    EXPECT_EQ(L"C:\\Suite\\Config\\InstallManager.cfg",
              CFileBase(L"C:/Suite/Config\\InstallManager.cfg").Path());
}

TEST(GetParentDirectory, CutsAtTheLastSeparatorAndKeepsOneForASingleLevel) {
    EXPECT_EQ(L"C:\\a", ParentOf(L"C:\\a\\b\\"));
    EXPECT_EQ(L"C:\\a", ParentOf(L"C:/a/b"));
    EXPECT_EQ(L"C:\\a\\b", ParentOf(L"C:\\a\\b\\c.txt"));
    EXPECT_EQ(L"C:\\", ParentOf(L"C:\\Name"));
    EXPECT_EQ(L"C:\\", ParentOf(L"C:\\Name\\"));
    EXPECT_EQ(L"name\\", ParentOf(L"name"));
    EXPECT_EQ(L"", ParentOf(L""));
}

TEST(DeleteFileOrDir, DeletesFilesReadOnlyIncludedAndRefusesFolders) {
    ScratchFolder scratch;
    const std::wstring readOnly = scratch.MakeFile(L"blacklist.bin");
    SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(CFileInfo(readOnly).DeleteFileOrDir());
    EXPECT_FALSE(PathPresent(readOnly));

    EXPECT_TRUE(CFileInfo(scratch / L"missing.bin").DeleteFileOrDir());

    const std::wstring folder = scratch.MakeFolder(L"folder");
    EXPECT_FALSE(CFileInfo(folder).DeleteFileOrDir());
    EXPECT_TRUE(PathPresent(folder));

    const std::wstring locked = scratch.MakeFile(L"locked.bin");
    HANDLE hold = CreateFileW(locked.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr);
    EXPECT_FALSE(CFileInfo(locked).DeleteFileOrDir());
    CloseHandle(hold);
}
