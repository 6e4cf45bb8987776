// Path tests, tree walks, tree copy and the recursive delete, on Wine's real file system.
#include "files/file_tree.h"
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <set>
#include <vector>

namespace {

using PathSet = std::set<std::wstring>;

PathSet AsSet(const PathList& list) {
    return PathSet(list.begin(), list.end());
}

std::size_t IndexOf(const PathList& list, const std::wstring& path) {
    return static_cast<std::size_t>(
        std::distance(list.begin(), std::find(list.begin(), list.end(), path)));
}

std::wstring Slashed(std::wstring path) {
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
}

const wchar_t* const SessionManagerKey = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager";
const wchar_t* const PendingRenames = L"PendingFileRenameOperations";

// The strings of the pending rename operations for the next boot (source, target, source, ...).
std::vector<std::wstring> PendingRenameStrings() {
    DWORD bytes = 0;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, SessionManagerKey, PendingRenames, RRF_RT_REG_MULTI_SZ,
                     nullptr, nullptr, &bytes) != ERROR_SUCCESS)
        return {};
    std::vector<wchar_t> data(bytes / sizeof(wchar_t) + 1, L'\0');
    RegGetValueW(HKEY_LOCAL_MACHINE, SessionManagerKey, PendingRenames, RRF_RT_REG_MULTI_SZ,
                 nullptr, data.data(), &bytes);
    std::vector<std::wstring> strings;
    for (const wchar_t* at = data.data(); at < data.data() + data.size() - 1; at += wcslen(at) + 1)
        strings.emplace_back(at);
    return strings;
}

// Holds a file open for reading and writing without delete sharing.
class LockedFile {
  public:
    explicit LockedFile(const std::wstring& path)
        : handle_(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                              nullptr)) {}
    ~LockedFile() { CloseHandle(handle_); }
    bool Held() const { return handle_ != INVALID_HANDLE_VALUE; }

  private:
    HANDLE handle_;
};

} // namespace

TEST(PathTests, ExistenceKindAndWritabilityFollowTheReadOnlyAttribute) {
    ScratchFolder scratch;
    const std::wstring file = scratch.MakeFile(L"file.txt");
    const std::wstring missing = scratch / L"missing";

    EXPECT_TRUE(FileExists(file));
    EXPECT_TRUE(FileExists(scratch.Path()));
    EXPECT_FALSE(FileExists(missing));
    EXPECT_TRUE(IsDirectory(scratch.Path()));
    EXPECT_FALSE(IsDirectory(file));
    EXPECT_FALSE(IsDirectory(missing));

    EXPECT_TRUE(SetWritable(file, false));
    EXPECT_TRUE(GetFileAttributesW(file.c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(IsWritable(file));
    EXPECT_FALSE(IsReadWrite(file));
    EXPECT_TRUE(SetWritable(file, true));
    EXPECT_FALSE(GetFileAttributesW(file.c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(IsWritable(file));
    EXPECT_TRUE(IsReadWrite(file));

    EXPECT_FALSE(IsWritable(missing));
    EXPECT_FALSE(SetWritable(missing, true));
}

TEST(ListDirectories, ListsEveryFolderChildBeforeParentWithBackslashes) {
    ScratchFolder scratch;
    const std::wstring a = scratch.MakeFolder(L"a");
    const std::wstring ab = scratch.MakeFolder(L"a\\b");
    const std::wstring c = scratch.MakeFolder(L"c");
    scratch.MakeFile(L"a\\file.txt");

    PathList list;
    ASSERT_TRUE(ListDirectories(Slashed(scratch.Path()) + L"/", list));
    EXPECT_EQ((PathSet{a, ab, c}), AsSet(list));
    EXPECT_LT(IndexOf(list, ab), IndexOf(list, a));

    EXPECT_FALSE(ListDirectories(scratch / L"a\\file.txt", list));
    EXPECT_FALSE(ListDirectories(scratch / L"missing", list));
}

TEST(ListFiles, AFlatWalkListsFoldersTooARecursiveOneOnlyFiles) {
    ScratchFolder scratch;
    const std::wstring top = scratch.MakeFile(L"top.txt");
    const std::wstring sub = scratch.MakeFolder(L"sub");
    const std::wstring deep = scratch.MakeFile(L"sub\\deeper\\deep.log");

    PathList flat;
    ASSERT_TRUE(ListFiles(scratch.Path(), flat, L"*", false));
    EXPECT_EQ((PathSet{top, sub}), AsSet(flat));

    PathList recursive;
    ASSERT_TRUE(ListFiles(Slashed(scratch.Path()), recursive, L"*", true));
    EXPECT_EQ((PathSet{top, deep}), AsSet(recursive));

    EXPECT_FALSE(ListFiles(top, recursive, L"*", true));
}

TEST(ListTree, APatternFindsMatchesInFoldersWhoseNamesDoNotMatch) {
    ScratchFolder scratch;
    const std::wstring top = scratch.MakeFile(L"top.txt");
    const std::wstring nested = scratch.MakeFile(L"data\\more\\nested.txt");
    scratch.MakeFile(L"data\\other.log");
    const std::wstring folderNamedLikeAMatch = scratch.MakeFolder(L"data\\notes.txt");

    PathList list;
    ASSERT_TRUE(ListTree(scratch.Path(), list, L"*.txt", true));
    EXPECT_EQ((PathSet{top, nested, folderNamedLikeAMatch}), AsSet(list));
    EXPECT_EQ(AsSet(list).size(), list.size());

    PathList flat;
    ASSERT_TRUE(ListTree(scratch.Path(), flat, L"*.txt", false));
    EXPECT_EQ((PathSet{top}), AsSet(flat));

    EXPECT_FALSE(ListTree(scratch / L"missing", list, L"*.txt", true));
}

TEST(ListTreeSlashed, StoresEveryListedEntryWithSlashes) {
    ScratchFolder scratch;
    const std::wstring file = scratch.MakeFile(L"values.dat");
    const std::wstring folder = scratch.MakeFolder(L"Retained");

    PathList list;
    ASSERT_TRUE(ListTreeSlashed(scratch.Path(), list, L"*.*", false));
    EXPECT_EQ((PathSet{Slashed(file), Slashed(folder)}), AsSet(list));

    const std::wstring nested = scratch.MakeFile(L"Retained\\inner.txt");
    PathList recursive;
    ASSERT_TRUE(ListTreeSlashed(scratch.Path(), recursive, L"*.txt", true));
    EXPECT_EQ((PathSet{Slashed(nested)}), AsSet(recursive));
}

TEST(IsFolderEmpty, OnlyFilesCountAndAMissingFolderIsNotEmpty) {
    ScratchFolder scratch;
    scratch.MakeFolder(L"root\\a\\b\\c");
    scratch.MakeFolder(L"root\\d");
    EXPECT_TRUE(IsFolderEmpty(scratch / L"root"));
    EXPECT_TRUE(IsFolderEmpty(scratch / L"root\\a\\b\\c"));

    const std::wstring deep = scratch.MakeFile(L"root\\a\\b\\c\\last.txt");
    EXPECT_FALSE(IsFolderEmpty(scratch / L"root"));
    EXPECT_TRUE(IsFolderEmpty(scratch / L"root\\d"));

    EXPECT_FALSE(IsFolderEmpty(scratch / L"missing"));
    EXPECT_FALSE(IsFolderEmpty(deep));
}

TEST(CopyTree, CopiesTheTreeAndOverwritesReadOnlyFiles) {
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
    HANDLE file =
        CreateFileW(existing.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    char text[32] = {};
    DWORD read = 0;
    ReadFile(file, text, sizeof(text) - 1, &read, nullptr);
    CloseHandle(file);
    EXPECT_STREQ("new driver", text);

    ASSERT_TRUE(CopyTree(from, scratch / L"fresh")); // a missing destination is made
    EXPECT_TRUE(PathPresent(scratch / L"fresh\\sub\\deeper\\inf.txt"));

    EXPECT_FALSE(CopyTree(scratch / L"missing", scratch / L"to"));
}

TEST(RemoveDirRecursive, DeletesTheTreeReadOnlyFilesIncluded) {
    ScratchFolder scratch;
    const std::wstring readOnly = scratch.MakeFile(L"tree\\sub\\read-only.txt");
    scratch.MakeFile(L"tree\\plain.txt");
    scratch.MakeFolder(L"tree\\empty");
    SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_READONLY);

    EXPECT_TRUE(removeDirRecursive(scratch / L"tree"));
    EXPECT_FALSE(PathPresent(scratch / L"tree"));
}

TEST(RemoveDirRecursive, AFileOrAMissingPathIsFalse) {
    ScratchFolder scratch;
    const std::wstring file = scratch.MakeFile(L"file.txt");
    EXPECT_FALSE(removeDirRecursive(file));
    EXPECT_TRUE(PathPresent(file));
    EXPECT_FALSE(removeDirRecursive(scratch / L"missing"));
}

TEST(RemoveDirRecursive, ALockedFileWaitsForRebootAndKeepsItsFolderFor500Ms) {
    ScratchFolder scratch;
    const std::wstring locked = scratch.MakeFile(L"tree\\in use.dll");
    scratch.MakeFile(L"tree\\other.txt");
    scratch.MakeFile(L"tree\\sub\\nested.txt");
    LockedFile hold(locked);
    ASSERT_TRUE(hold.Held());

    const DWORD start = GetTickCount();
    const bool removed = removeDirRecursive(scratch / L"tree");
    const DWORD elapsed = GetTickCount() - start;

    EXPECT_FALSE(removed);
    EXPECT_GE(elapsed, 490u);
    EXPECT_LT(elapsed, 3000u);
    EXPECT_TRUE(PathPresent(locked));
    EXPECT_FALSE(PathPresent(scratch / L"tree\\other.txt"));
    EXPECT_FALSE(PathPresent(scratch / L"tree\\sub"));

    const std::vector<std::wstring> pending = PendingRenameStrings();
    const auto scheduled =
        std::find_if(pending.begin(), pending.end(), [&](const std::wstring& text) {
            return text.size() >= locked.size() &&
                   _wcsicmp(text.c_str() + text.size() - locked.size(), locked.c_str()) == 0;
        });
    ASSERT_NE(pending.end(), scheduled) << "no pending rename for " << Narrow(locked);
    ASSERT_LT(static_cast<std::size_t>(scheduled - pending.begin()) + 1, pending.size());
    EXPECT_EQ(L"", *(scheduled + 1)) << "the target of a delete at reboot is empty";
    // The entry stays for the run's prefix, which the test command makes afresh.
}
