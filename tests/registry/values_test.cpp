// Values on both registry views: where reads look, where writes land, how a path is split.
#include "harness/registry_fixture.h"
#include "harness/test_session.h"
#include "registry/values.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

namespace {

std::wstring Read(const std::wstring& fullPath, bool* exists = nullptr) {
    registry_string<std::wstring> value;
    value.SetPath(fullPath);
    if (exists != nullptr)
        *exists = value.ValueExists();
    std::wstring text = L"left over";
    value.ReadString(text);
    return text;
}

DWORD StoredBytes(View view, const std::wstring& key, const std::wstring& name) {
    const auto value = ValueAt(view, key, name);
    return value ? static_cast<DWORD>(value->data.size()) : 0;
}

} // namespace

TEST(RegistryValueRead, NativeViewFirstThe32BitViewOnlyWhenTheNativeLacksTheValueAnyTextType) {
    ScratchKey scratch;
    bool exists = false;
    PutText(View::Bit32, scratch / L"Only32", L"Folder", L"C:\\32-bit only");
    EXPECT_EQ(L"C:\\32-bit only", Read(scratch / L"Only32\\Folder", &exists));
    EXPECT_TRUE(exists);

    PutKey(View::Bit64, scratch / L"BothKeys");
    PutText(View::Bit32, scratch / L"BothKeys", L"Folder", L"from the 32-bit view");
    EXPECT_EQ(L"from the 32-bit view", Read(scratch / L"BothKeys\\Folder", &exists));
    EXPECT_TRUE(exists);

    PutText(View::Bit32, scratch / L"Differ", L"Folder", L"32-bit text");
    PutText(View::Bit64, scratch / L"Differ", L"Folder", L"native text");
    EXPECT_EQ(L"native text", Read(scratch / L"Differ\\Folder"));

    EXPECT_EQ(L"", Read(scratch / L"Differ\\Missing", &exists));
    EXPECT_FALSE(exists);
    EXPECT_EQ(L"", Read(scratch / L"NoKey\\Folder", &exists));
    EXPECT_FALSE(exists);

    // Text without its terminator, and text of another type, are read as text.
    PutValue(View::Bit64, scratch.Path(), L"Bare", REG_SZ, L"abcXYZ", 6);
    PutValue(View::Bit64, scratch.Path(), L"Expand", REG_EXPAND_SZ, L"%TEMP%", 14);
    EXPECT_EQ(L"abc", Read(scratch / L"Bare"));
    EXPECT_EQ(L"%TEMP%", Read(scratch / L"Expand"));
}

TEST(RegistryValueSetPath, AFinalBackslashNamesTheDefaultValueNoBackslashKeyAndValueAlike) {
    ScratchKey scratch;
    PutText(View::Bit64, scratch / L"Key", L"", L"default text");
    EXPECT_EQ(L"default text", Read(scratch / L"Key\\"));

    const std::wstring lone = L"CalderTests" + NewGuid();
    registry_string<std::wstring> userValue(HKEY_CURRENT_USER);
    userValue.SetPath(lone);
    userValue.WriteString(L"lone");
    EXPECT_EQ(L"lone", TextAt(View::Native, lone, lone, HKEY_CURRENT_USER).value_or(L"absent"));
    RemoveTree(View::Native, lone, HKEY_CURRENT_USER);
}

TEST(RegistryValueWrite, BothViewsGetTheKeyAndTheTextWithItsTerminatorCountedWhenOpenedOrAsked) {
    ScratchKey scratch;
    registry_string<std::wstring> value;
    value.SetPath(scratch / L"New\\Deeper\\Folder");
    value.WriteString(L"C:\\Suite");
    for (View view : {View::Bit32, View::Bit64}) {
        EXPECT_EQ(L"C:\\Suite", TextAt(view, scratch / L"New\\Deeper", L"Folder").value_or(L""));
        EXPECT_EQ(DWORD{18}, StoredBytes(view, scratch / L"New\\Deeper", L"Folder"));
    }
    EXPECT_EQ(nullptr, value.NativeKey());
    EXPECT_EQ(nullptr, value.Key32());

    registry_string64<std::wstring> only64;
    only64.SetPath(scratch / L"Run\\Aero");
    only64.WriteString(L"on");
    EXPECT_EQ(DWORD{6}, StoredBytes(View::Bit64, scratch / L"Run", L"Aero"));
    EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"Run"));

    // Opening both views creates only on request and leaves both handles to the caller.
    value.SetPath(scratch / L"Both\\Name");
    EXPECT_FALSE(value.OpenBothViews(false));
    EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"Both"));

    ASSERT_TRUE(value.OpenBothViews(true));
    ASSERT_NE(nullptr, value.NativeKey());
    ASSERT_NE(nullptr, value.Key32());
    value.SetStringOnOpenViews(L"two");
    RegDeleteValueW(value.Key32(), L"Name");
    value.CloseBothViews();
    EXPECT_EQ(L"two", TextAt(View::Bit64, scratch / L"Both", L"Name").value_or(L""));
    EXPECT_FALSE(TextAt(View::Bit32, scratch / L"Both", L"Name").has_value());
}

TEST(CreateRegDWValue, CreatesTheUserKeyWhenAbsentAndStoresFourBytes) {
    const std::wstring norvik = L"SOFTWARE\\Norvik";
    RemoveTree(View::Native, norvik, HKEY_CURRENT_USER);
    EXPECT_TRUE(CreateRegDWValue(L"Switch", 7));
    EXPECT_TRUE(CreateRegDWValue(L"Switch", 0x12345678));
    const auto stored = ValueAt(View::Native, norvik, L"Switch", HKEY_CURRENT_USER);
    RemoveTree(View::Native, norvik, HKEY_CURRENT_USER);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(DWORD{REG_DWORD}, stored->type);
    EXPECT_EQ((std::vector<BYTE>{0x78, 0x56, 0x34, 0x12}), stored->data);
}

TEST(WriteHklmString, MachineKeyThatCannotBeOpenedSendsTheValueUnderClassesRoot) {
    TestSession session;
    ScratchKey scratch;
    const Lines written = {L"Calder_CA CreatePanorelContextMenu() - Successfully created GUID"};

    PutKey(View::Native, scratch.Path());
    EXPECT_EQ(0u, WriteHklmString(scratch.Path(), L"Guid", L"{1234}"));
    EXPECT_EQ(L"{1234}", TextAt(View::Native, scratch.Path(), L"Guid").value_or(L""));
    EXPECT_EQ(written, session.LogLines());

    session.ClearMessages();
    const std::wstring classesKey = L"CalderTests" + NewGuid();
    EXPECT_EQ(0u, WriteHklmString(classesKey, L"Guid", L"{5678}"));
    EXPECT_EQ(L"{5678}",
              TextAt(View::Native, classesKey, L"Guid", HKEY_CLASSES_ROOT).value_or(L""));
    EXPECT_EQ(written, session.LogLines());
    RemoveTree(View::Native, classesKey, HKEY_CLASSES_ROOT);
}
