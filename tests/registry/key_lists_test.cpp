// Listings of subkeys and values over both views, removal of all values, the retained names.
#include "frame/action_frame.h"
#include "harness/registry_fixture.h"
#include "registry/key_lists.h"

#include <gtest/gtest.h>

#include <algorithm>

// The library defines this list where it loads; the test program stands in for that.
std::vector<std::wstring> RetainedNames;

using Names = std::vector<std::wstring>;

namespace {

Names Listed(void (*enumerate)(RegistryKeyLister&), const std::wstring& path) {
    RegistryKeyLister lister;
    lister.root = HKEY_LOCAL_MACHINE;
    lister.subkey = path;
    enumerate(lister);
    return lister.names;
}

Names Sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
}

// A key of the native view opened for the operations that take an open one.
HKEY Opened(const std::wstring& path, RegistryKey& key) {
    EXPECT_EQ(ERROR_SUCCESS,
              RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, key.Receive()));
    return key.Get();
}

} // namespace

TEST(KeyListings, SubkeysOfBothViewsExactlyOnceValuesOfThe32BitViewOnlyWhenTheNativeHasNone) {
    ScratchKey scratch;
    for (const wchar_t* name : {L"Alpha", L"Shared", L"Name"})
        PutKey(View::Bit64, scratch / L"Keys\\" + name);
    for (const wchar_t* name : {L"Beta", L"Shared", L"NAME"})
        PutKey(View::Bit32, scratch / L"Keys\\" + name);
    EXPECT_EQ((Names{L"Alpha", L"Name", L"Shared", L"Beta", L"NAME"}),
              Listed(&EnumerateSubkeys, scratch / L"Keys"));
    PutKey(View::Bit32, scratch / L"Lone\\Only32");
    EXPECT_EQ(Names{L"Only32"}, Listed(&EnumerateSubkeys, scratch / L"Lone"));
    EXPECT_TRUE(Listed(&EnumerateSubkeys, scratch / L"Absent").empty());

    PutText(View::Bit64, scratch / L"Both", L"Native1", L"x");
    PutText(View::Bit64, scratch / L"Both", L"Native2", L"x");
    PutText(View::Bit32, scratch / L"Both", L"Other32", L"x");
    EXPECT_EQ((Names{L"Native1", L"Native2"}), Sorted(Listed(&EnumerateValues, scratch / L"Both")));
    PutKey(View::Bit64, scratch / L"Empty");
    PutText(View::Bit32, scratch / L"Empty", L"Only32", L"x");
    PutValue(View::Bit32, scratch / L"Empty", L"Number32", REG_DWORD, "\1\0\0\0", 4);
    EXPECT_EQ((Names{L"Number32", L"Only32"}),
              Sorted(Listed(&EnumerateValues, scratch / L"Empty")));
    EXPECT_TRUE(Listed(&EnumerateValues, scratch / L"Absent").empty());
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
    RegistryKey key;
    DeleteAllValues(Opened(path, key), L"ignored");
    EXPECT_EQ((Names{L"", L" "}), Sorted(Listed(&EnumerateValues, path)));
    EXPECT_EQ(L"default", TextAt(View::Native, path, L"").value_or(L""));
    EXPECT_TRUE(KeyExists(View::Native, path + L"\\Child"));
}

TEST(CollectRetainedNames, AppendsSubkeysAndTextsOfUpTo129CharactersWithSlashes) {
    ScratchKey scratch;
    const std::wstring path = scratch / L"Keep";
    const std::wstring longest = L"C:\\" + std::wstring(126, L'k'); // 129 characters
    PutKey(View::Native, path + L"\\Sub1");
    PutKey(View::Native, path + L"\\Sub2");
    PutText(View::Native, path, L"a", L"C:\\Program Files\\Suite\\");
    PutText(View::Native, path, L"b", longest);
    PutText(View::Native, path, L"c", longest + L"k");
    PutValue(View::Native, path, L"d", REG_DWORD, "\1\0\0\0", 4);
    PutValue(View::Native, path, L"e", REG_EXPAND_SZ, L"%X%", 8);
    RetainedNames = {L"earlier"};
    RegistryKey key;
    CollectRetainedNames(Opened(path, key));
    EXPECT_EQ((Names{L"earlier", L"Sub1", L"Sub2", L"C:/Program Files/Suite/",
                     L"C:/" + std::wstring(126, L'k')}),
              RetainedNames);
    RetainedNames.clear();
}
