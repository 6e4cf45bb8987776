// The path objects: backslashes, the parent folder, and deleting a file or refusing a folder.
#include "files/file_info.h"
#include "harness/scratch_folder.h"

#include <gtest/gtest.h>

#include <windows.h>

TEST(CFileBase, KeepsThePathWithBackslashesAndCutsTheParentAtTheLastSeparator) {
    EXPECT_EQ(L"C:\\Suite\\Config\\Manager.cfg", CFileBase(L"C:/Suite/Config\\Manager.cfg").Path());
    const auto parentOf = [](const wchar_t* path) {
        std::wstring parent = L"unchanged";
        CFileBase(path).GetParentDirectory(parent);
        return parent;
    };
    EXPECT_EQ(L"C:\\a", parentOf(L"C:\\a\\b\\"));
    EXPECT_EQ(L"C:\\a", parentOf(L"C:/a/b"));
    EXPECT_EQ(L"C:\\a\\b", parentOf(L"C:\\a\\b\\c.txt"));
    EXPECT_EQ(L"C:\\", parentOf(L"C:\\Name"));
    EXPECT_EQ(L"C:\\", parentOf(L"C:\\Name\\"));
    EXPECT_EQ(L"name\\", parentOf(L"name"));
    EXPECT_EQ(L"", parentOf(L""));
}

TEST(DeleteFileOrDir, DeletesFilesReadOnlyIncludedAndRefusesFoldersAndLockedFiles) {
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
    HeldOpen hold(locked);
    EXPECT_FALSE(CFileInfo(locked).DeleteFileOrDir());
}
