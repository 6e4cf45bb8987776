// Removal of whole registry trees in one view, and where it stops.
#include "harness/registry_fixture.h"
#include "registry/trees.h"

#include <gtest/gtest.h>

#include <cwchar>

namespace {

// root\A with A\B, A\B\C and A\D, in both views.
void PutTrees(const std::wstring& root) {
    for (View view : {View::Bit32, View::Bit64}) {
        PutKey(view, root + L"\\A\\B\\C");
        PutKey(view, root + L"\\A\\D");
        PutText(view, root + L"\\A", L"Top", L"3");
    }
}

// Runs DeleteTreeHklm32 on a buffer filled as its callers fill it, with a marker after the text;
// gives the result and the text the buffer holds afterwards.
std::pair<bool, std::wstring> DeleteTreeHklm32On(const std::wstring& path) {
    wchar_t buffer[TreePathChars];
    std::wmemset(buffer, L'#', TreePathChars);
    std::wcscpy(buffer, path.c_str());
    const bool deleted = DeleteTreeHklm32(buffer);
    return {deleted, buffer};
}

} // namespace

TEST(DeleteTree, EachViewRemovesItsWholeTreeAndOnlyThatAndAnAbsentKeyIsASuccess) {
    ScratchKey scratch;
    PutTrees(scratch.Path());
    EXPECT_TRUE(DeleteTree32(HKEY_LOCAL_MACHINE, scratch / L"A"));
    EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"A"));
    EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"A\\B\\C"));
    EXPECT_TRUE(DeleteTreeNative(HKEY_LOCAL_MACHINE, scratch / L"A"));
    EXPECT_FALSE(KeyExists(View::Bit64, scratch / L"A"));

    EXPECT_TRUE(DeleteTree32(HKEY_LOCAL_MACHINE, scratch / L"Absent"));
    EXPECT_TRUE(DeleteTreeNative(HKEY_LOCAL_MACHINE, scratch / L"Absent"));
    EXPECT_EQ(std::make_pair(true, scratch / L"Absent\\"),
              DeleteTreeHklm32On(scratch / L"Absent\\"));
}

TEST(DeleteTreeHklm32, RemovesThe32BitTreeAndGivesTheBufferBackWithoutTheFinalBackslash) {
    ScratchKey scratch;
    for (const std::wstring& path : {scratch / L"A\\", scratch / L"A"}) {
        PutTrees(scratch.Path());
        EXPECT_EQ(std::make_pair(true, scratch / L"A"), DeleteTreeHklm32On(path));
        EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"A"));
        EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"A\\B\\C"));
    }
}

TEST(DeleteTree, AChildThatCannotBeRemovedStopsTheDeleteAndLeavesTheLaterChildren) {
    ScratchKey scratch;
    for (View view : {View::Bit32, View::Bit64}) {
        for (const wchar_t* child : {L"a", L"b\\inner", L"c"})
            PutKey(view, scratch / L"P\\" + child);
        // b keeps a child and refuses DELETE, so it can neither go nor be opened to empty it.
        DenyDelete(view, scratch / L"P\\b", true);
    }
    EXPECT_FALSE(DeleteTreeNative(HKEY_LOCAL_MACHINE, scratch / L"P"));
    EXPECT_FALSE(KeyExists(View::Bit64, scratch / L"P\\a"));
    EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"P\\b\\inner"));
    EXPECT_TRUE(KeyExists(View::Bit64, scratch / L"P\\c"));
    EXPECT_EQ(std::make_pair(false, scratch / L"P\\b"), DeleteTreeHklm32On(scratch / L"P\\b"));
    EXPECT_TRUE(KeyExists(View::Bit32, scratch / L"P\\b\\inner"));
    for (View view : {View::Bit32, View::Bit64})
        DenyDelete(view, scratch / L"P\\b", false);
}
