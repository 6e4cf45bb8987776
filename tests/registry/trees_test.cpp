// Removal of whole registry trees in one view, and where it stops.
#include "harness/registry_fixture.h"
#include "registry/trees.h"

#include <gtest/gtest.h>

#include <cwchar>

namespace {

// root\A with A\B, A\B\C and A\D, in one view.
void PutTree(View view, const std::wstring& root) {
    PutText(view, root + L"\\A\\B\\C", L"Leaf", L"1");
    PutText(view, root + L"\\A\\D", L"Leaf", L"2");
    PutText(view, root + L"\\A", L"Top", L"3");
}

// Fills a path buffer as the callers of DeleteTreeHklm32 do, with a marker after the text.
void FillPath(wchar_t (&buffer)[TreePathChars], const std::wstring& path) {
    std::wmemset(buffer, L'#', TreePathChars);
    std::wcscpy(buffer, path.c_str());
}

} // namespace

TEST(DeleteTree, AbsentKeyIsASuccess) {
    ScratchKey scratch;
    EXPECT_TRUE(DeleteTree32(HKEY_LOCAL_MACHINE, scratch / L"Absent"));
    EXPECT_TRUE(DeleteTreeNative(HKEY_LOCAL_MACHINE, scratch / L"Absent"));
    wchar_t path[TreePathChars];
    FillPath(path, scratch / L"Absent\\");
    EXPECT_TRUE(DeleteTreeHklm32(path));
    EXPECT_EQ(scratch / L"Absent\\", path); // untouched when the key never opened
}

TEST(DeleteTree, EachViewRemovesItsWholeTreeAndOnlyThat) {
    ScratchKey scratch;
    PutTree(View::Bit32, scratch.Path());
    PutTree(View::Bit64, scratch.Path());
    EXPECT_TRUE(DeleteTree32(HKEY_LOCAL_MACHINE, scratch / L"A"));
    EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"A"));
    EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"A\\B\\C"));

    EXPECT_TRUE(DeleteTreeNative(HKEY_LOCAL_MACHINE, scratch / L"A"));
    EXPECT_FALSE(KeyExists(View::Bit64, scratch / L"A"));
}

TEST(DeleteTree, ChildThatCannotBeRemovedStopsTheDeleteAndLeavesTheLaterChildren) {
    ScratchKey scratch;
    for (const wchar_t* child : {L"a", L"b\\inner", L"c"})
        PutKey(View::Bit64, scratch / L"P\\" + child);
    // b keeps a child and refuses DELETE, so it can neither go nor be opened to empty it.
    DenyDelete(View::Bit64, scratch / L"P\\b", true);
    EXPECT_FALSE(DeleteTreeNative(HKEY_LOCAL_MACHINE, scratch / L"P"));
    EXPECT_FALSE(KeyExists(View::Bit64, scratch / L"P\\a"));
    EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"P\\b\\inner"));
    EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"P\\c"));
    DenyDelete(View::Bit64, scratch / L"P\\b", false);
}

TEST(DeleteTreeHklm32, RemovesThe32BitTreeAndGivesTheBufferBackWithoutTheFinalBackslash) {
    ScratchKey scratch;
    PutTree(View::Bit32, scratch.Path());
    PutTree(View::Bit64, scratch.Path());
    wchar_t path[TreePathChars];
    FillPath(path, scratch / L"A\\");
    EXPECT_TRUE(DeleteTreeHklm32(path));
    EXPECT_EQ(scratch / L"A", path);
    EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"A"));
    EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"A\\B\\C"));

    PutTree(View::Bit32, scratch.Path());
    FillPath(path, scratch / L"A");
    EXPECT_TRUE(DeleteTreeHklm32(path));
    EXPECT_EQ(scratch / L"A", path);
    EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"A"));
}

TEST(DeleteTreeHklm32, KeyThatRefusesDeletionOnBothTriesIsAFailure) {
    ScratchKey scratch;
    PutKey(View::Bit32, scratch / L"Locked\\Child");
    DenyDelete(View::Bit32, scratch / L"Locked", true);
    wchar_t path[TreePathChars];
    FillPath(path, scratch / L"Locked");
    EXPECT_FALSE(DeleteTreeHklm32(path));
    EXPECT_EQ(scratch / L"Locked", path);
    EXPECT_TRUE(KeyExists(View::Bit32, scratch / L"Locked\\Child"));
    DenyDelete(View::Bit32, scratch / L"Locked", false);
}
