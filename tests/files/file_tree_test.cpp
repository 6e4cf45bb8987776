// Path tests, tree walks, tree copy and the recursive delete, on Wine's real file system.
#include "files/file_tree.h"
#include "frame/strings.h"
#include "harness/registry_fixture.h"
#include "harness/scratch_folder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <set>

namespace {

using PathSet = std::set<std::wstring>;

PathSet AsSet(const PathList& list) {
    return PathSet(list.begin(), list.end());
}

std::wstring Slashed(std::wstring path) {
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
}

// A tree for the walks: files at two depths, a folder named like a match and an empty folder.
struct WalkTree {
    ScratchFolder scratch;
    const std::wstring root = scratch.Path();
    const std::wstring top = scratch.MakeFile(L"top.txt");
    const std::wstring log = scratch.MakeFile(L"sub\\other.log");
    const std::wstring deep = scratch.MakeFile(L"sub\\deeper\\deep.txt");
    const std::wstring sub = scratch / L"sub";
    const std::wstring deeper = scratch / L"sub\\deeper";
    const std::wstring namedLikeAMatch = scratch.MakeFolder(L"sub\\notes.txt");
    const std::wstring empty = scratch.MakeFolder(L"empty");
};

} // namespace

TEST(PathTests, ExistenceKindAndWritabilityFollowTheReadOnlyAttribute) {
    ScratchFolder scratch;
    const std::wstring file = scratch.MakeFile(L"file.txt");
    const std::wstring missing = scratch / L"missing";
    EXPECT_TRUE(FileExists(file) && FileExists(scratch.Path()));
    EXPECT_FALSE(FileExists(missing));
    EXPECT_TRUE(IsDirectory(scratch.Path()));
    EXPECT_FALSE(IsDirectory(file) || IsDirectory(missing));

    for (const bool writable : {false, true}) {
        EXPECT_TRUE(SetWritable(file, writable));
        EXPECT_EQ(!writable, (GetFileAttributesW(file.c_str()) & FILE_ATTRIBUTE_READONLY) != 0);
        EXPECT_EQ(writable, IsWritable(file));
        EXPECT_EQ(writable, IsReadWrite(file));
    }
    EXPECT_FALSE(IsWritable(missing));
    EXPECT_FALSE(SetWritable(missing, true));
}

TEST(ListDirectoriesAndListFiles, FoldersChildFirstAFlatWalkListsFoldersARecursiveOneOnlyFiles) {
    WalkTree tree;
    PathList folders;
    ASSERT_TRUE(ListDirectories(Slashed(tree.root) + L"/", folders));
    EXPECT_EQ((PathSet{tree.sub, tree.deeper, tree.namedLikeAMatch, tree.empty}), AsSet(folders));
    EXPECT_EQ(tree.deeper, *std::find_if(folders.begin(), folders.end(),
                                         [&](auto& folder) {
                                             return folder == tree.sub || folder == tree.deeper;
                                         }))
        << "a child comes before its parent";
    EXPECT_FALSE(ListDirectories(tree.top, folders));
    EXPECT_FALSE(ListDirectories(tree.scratch / L"missing", folders));

    PathList flat, recursive;
    ASSERT_TRUE(ListFiles(tree.root, flat, L"*", false));
    EXPECT_EQ((PathSet{tree.top, tree.sub, tree.empty}), AsSet(flat));
    ASSERT_TRUE(ListFiles(Slashed(tree.root), recursive, L"*", true));
    EXPECT_EQ((PathSet{tree.top, tree.log, tree.deep}), AsSet(recursive));
    EXPECT_FALSE(ListFiles(tree.top, recursive, L"*", true));
}

TEST(ListTree, APatternFindsMatchesInEveryFolderOnceAndTheSlashedWalkStoresSlashes) {
    WalkTree tree;
    const PathSet matches = {tree.top, tree.deep, tree.namedLikeAMatch};
    PathList list, flat, slashed;
    ASSERT_TRUE(ListTree(tree.root, list, L"*.txt", true));
    EXPECT_EQ(matches, AsSet(list));
    EXPECT_EQ(matches.size(), list.size());
    ASSERT_TRUE(ListTree(tree.root, flat, L"*.txt", false));
    EXPECT_EQ((PathSet{tree.top}), AsSet(flat));
    EXPECT_FALSE(ListTree(tree.scratch / L"missing", list, L"*.txt", true));

    ASSERT_TRUE(ListTreeSlashed(tree.root, slashed, L"*.txt", true));
    EXPECT_EQ((PathSet{Slashed(tree.top), Slashed(tree.deep), Slashed(tree.namedLikeAMatch)}),
              AsSet(slashed));
    slashed.clear();
    ASSERT_TRUE(ListTreeSlashed(tree.root, slashed, L"*.*", false));
    EXPECT_EQ((PathSet{Slashed(tree.top), Slashed(tree.sub), Slashed(tree.empty)}), AsSet(slashed));
}

TEST(IsFolderEmpty, OnlyFilesCountAndAMissingFolderIsNotEmpty) {
    ScratchFolder scratch;
    scratch.MakeFolder(L"root\\a\\b\\c");
    scratch.MakeFolder(L"root\\d");
    EXPECT_TRUE(IsFolderEmpty(scratch / L"root"));
    const std::wstring deep = scratch.MakeFile(L"root\\a\\b\\c\\last.txt");
    EXPECT_FALSE(IsFolderEmpty(scratch / L"root"));
    EXPECT_TRUE(IsFolderEmpty(scratch / L"root\\d"));
    EXPECT_FALSE(IsFolderEmpty(scratch / L"missing"));
    EXPECT_FALSE(IsFolderEmpty(deep));
}

TEST(CopyTree, CopiesTheTreeOverwritingReadOnlyFilesAndMakesAMissingDestination) {
    ScratchFolder scratch;
    scratch.MakeFile(L"from\\driver.sys", "new driver");
    scratch.MakeFile(L"from\\sub\\deeper\\inf.txt", "inf");
    const std::wstring from = scratch / L"from";
    const std::wstring existing = scratch.MakeFile(L"to\\driver.sys", "old driver");
    SetFileAttributesW(existing.c_str(), FILE_ATTRIBUTE_READONLY);

    ASSERT_TRUE(CopyTree(from, scratch / L"to"));
    PathList copied;
    ListFiles(scratch / L"to", copied, L"*", true);
    EXPECT_EQ((PathSet{existing, scratch / L"to\\sub\\deeper\\inf.txt"}), AsSet(copied));
    std::string text;
    std::getline(std::ifstream(existing.c_str()), text);
    EXPECT_EQ("new driver", text);

    ASSERT_TRUE(CopyTree(from, scratch / L"fresh"));
    EXPECT_TRUE(PathPresent(scratch / L"fresh\\sub\\deeper\\inf.txt"));
    EXPECT_FALSE(CopyTree(scratch / L"missing", scratch / L"to"));
}

TEST(RemoveDirRecursive, DeletesTheTreeReadOnlyFilesIncludedAndRefusesAFileOrAMissingPath) {
    ScratchFolder scratch;
    const std::wstring readOnly = scratch.MakeFile(L"tree\\sub\\read-only.txt");
    scratch.MakeFile(L"tree\\plain.txt");
    scratch.MakeFolder(L"tree\\empty");
    SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(removeDirRecursive(scratch / L"tree"));
    EXPECT_FALSE(PathPresent(scratch / L"tree"));

    const std::wstring file = scratch.MakeFile(L"file.txt");
    EXPECT_FALSE(removeDirRecursive(file));
    EXPECT_TRUE(PathPresent(file));
    EXPECT_FALSE(removeDirRecursive(scratch / L"missing"));
}

TEST(RemoveDirRecursive, ALockedFileWaitsForRebootAndKeepsItsFolderFor500Ms) {
    ScratchFolder scratch;
    std::wstring locked = scratch.MakeFile(L"tree\\in use.dll");
    scratch.MakeFile(L"tree\\other.txt");
    scratch.MakeFile(L"tree\\sub\\nested.txt");
    HeldOpen hold(locked);

    const DWORD start = GetTickCount();
    EXPECT_FALSE(removeDirRecursive(scratch / L"tree"));
    const DWORD elapsed = GetTickCount() - start;
    EXPECT_GE(elapsed, 490u);
    EXPECT_LT(elapsed, 3000u);
    EXPECT_TRUE(PathPresent(locked));
    EXPECT_FALSE(PathPresent(scratch / L"tree\\other.txt"));
    EXPECT_FALSE(PathPresent(scratch / L"tree\\sub"));

    // Each pending rename is a source and its target; a delete at reboot has an empty target.
    // The entry stays for the run's prefix, which the test command makes afresh.
    const auto pending =
        ValueAt(View::Native, L"SYSTEM\\CurrentControlSet\\Control\\Session Manager",
                L"PendingFileRenameOperations");
    ASSERT_TRUE(pending.has_value());
    std::wstring strings(reinterpret_cast<const wchar_t*>(pending->data.data()),
                         pending->data.size() / sizeof(wchar_t));
    ToLowerInPlace(strings);
    ToLowerInPlace(locked += std::wstring(2, L'\0'));
    EXPECT_NE(std::wstring::npos, strings.find(locked)) << "no delete at reboot for the file";
}
