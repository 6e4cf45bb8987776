// Listings of subkeys and values over both views, removal of all values, the retained names.
#include "frame/action_frame.h"
#include "harness/registry_fixture.h"
#include "registry/key_lists.h"
#include "registry/registry_key.h"

#include <gtest/gtest.h>

#include <algorithm>

// The library defines this list where it loads; the test program stands in for that.
std::vector<std::wstring> RetainedNames;

using Names = std::vector<std::wstring>;

namespace {

Names Subkeys(const std::wstring& path) {
    RegistryKeyLister lister;
    lister.root = HKEY_LOCAL_MACHINE;
    lister.subkey = path;
    EnumerateSubkeys(lister);
    return lister.names;
}

Names Values(const std::wstring& path) {
    RegistryKeyLister lister;
    lister.root = HKEY_LOCAL_MACHINE;
    lister.subkey = path;
    EnumerateValues(lister);
    std::sort(lister.names.begin(), lister.names.end());
    return lister.names;
}

// A key of the native view for the operations that take an open one; the caller owns it.
HKEY Opened(const std::wstring& path) {
    HKEY key = nullptr;
    EXPECT_EQ(ERROR_SUCCESS,
              RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key));
    return key;
}

} // namespace

TEST(EnumerateSubkeys, ListsNativeNamesThenThe32BitNamesNotYetListedExactly) {
    ScratchKey scratch;
    for (const wchar_t* name : {L"Alpha", L"Shared", L"Name"})
        PutKey(View::Bit64, scratch / name);
    for (const wchar_t* name : {L"Beta", L"Shared", L"NAME"})
        PutKey(View::Bit32, scratch / name);
    const Names listed = Subkeys(scratch.Path());
    ASSERT_EQ(5u, listed.size());
    EXPECT_EQ((Names{L"Alpha", L"Name", L"Shared"}), Names(listed.begin(), listed.begin() + 3));
    EXPECT_EQ((Names{L"Beta", L"NAME"}), Names(listed.begin() + 3, listed.end()));

    EXPECT_EQ((Names{L"Only32"}),
              (PutKey(View::Bit32, scratch / L"Lone\\Only32"), Subkeys(scratch / L"Lone")));
    EXPECT_TRUE(Subkeys(scratch / L"Absent").empty());
}

TEST(EnumerateValues, The32BitViewIsReadOnlyWhenTheNativeViewGivesNoName) {
    ScratchKey scratch;
    PutText(View::Bit64, scratch / L"Both", L"Native1", L"x");
    PutText(View::Bit64, scratch / L"Both", L"Native2", L"x");
    PutText(View::Bit32, scratch / L"Both", L"Other32", L"x");
    EXPECT_EQ((Names{L"Native1", L"Native2"}), Values(scratch / L"Both"));

    PutKey(View::Bit64, scratch / L"Empty");
    PutText(View::Bit32, scratch / L"Empty", L"Only32", L"x");
    PutValue(View::Bit32, scratch / L"Empty", L"Number32", REG_DWORD, "\1\0\0\0", 4);
    EXPECT_EQ((Names{L"Number32", L"Only32"}), Values(scratch / L"Empty"));
    EXPECT_TRUE(Values(scratch / L"Absent").empty());
}

TEST(DeleteAllValues, RemovesEveryNamedValueButTheOneBlankAndKeepsTheDefault) {
    ScratchKey scratch;
    const std::wstring path = scratch / L"Values";
    PutText(View::Native, path, L"", L"default");
    PutText(View::Native, path, L" ", L"blank");
    PutText(View::Native, path, L"  ", L"two blanks");
    for (int index = 0; index < 12; ++index)
        PutText(View::Native, path, L"Value" + std::to_wstring(index), L"x");
    PutValue(View::Native, path, L"Number", REG_DWORD, "\5\0\0\0", 4);
    PutKey(View::Native, path + L"\\Child");
    DeleteAllValues(RegistryKey(Opened(path)).Get(), L"ignored");
    EXPECT_EQ((Names{L"", L" "}), Values(path));
    EXPECT_EQ(L"default", TextAt(View::Native, path, L"").value_or(L""));
    EXPECT_TRUE(KeyExists(View::Native, path + L"\\Child"));
}

TEST(CollectRetainedNames, AppendsSubkeysAndShortTextsWithSlashes) {
    ScratchKey scratch;
    const std::wstring path = scratch / L"Keep";
    const std::wstring longest = L"C:\\" + std::wstring(126, L'k'); // 129 characters
    const std::wstring tooLong = L"C:\\" + std::wstring(127, L'k'); // 130 characters
    PutKey(View::Native, path + L"\\Sub1");
    PutKey(View::Native, path + L"\\Sub2");
    PutText(View::Native, path, L"a", L"C:\\Program Files\\Suite\\");
    PutText(View::Native, path, L"b", longest);
    PutText(View::Native, path, L"c", tooLong);
    PutValue(View::Native, path, L"d", REG_DWORD, "\1\0\0\0", 4);
    PutValue(View::Native, path, L"e", REG_EXPAND_SZ, L"%X%", 8);

    RetainedNames = {L"earlier"};
    CollectRetainedNames(RegistryKey(Opened(path)).Get());
    std::wstring slashed = longest;
    std::replace(slashed.begin(), slashed.end(), L'\\', L'/');
    EXPECT_EQ((Names{L"earlier", L"Sub1", L"Sub2", L"C:/Program Files/Suite/", slashed}),
              RetainedNames);
    RetainedNames.clear();
}
