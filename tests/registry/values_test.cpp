// Values on both registry views: where reads look, where writes land, how a path is split.
#include "frame/action_frame.h"
#include "harness/registry_fixture.h"
#include "harness/test_session.h"
#include "registry/values.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

namespace {

std::wstring Read(const std::wstring& fullPath, HKEY root = HKEY_LOCAL_MACHINE) {
    registry_string<std::wstring> value(root);
    value.SetPath(fullPath);
    std::wstring text = L"left over";
    value.ReadString(text);
    return text;
}

bool Exists(const std::wstring& fullPath) {
    registry_string<std::wstring> value;
    value.SetPath(fullPath);
    return value.ValueExists();
}

} // namespace

TEST(RegistryValueRead, FallsBackToThe32BitViewOnlyWhenTheNativeViewLacksTheValue) {
    ScratchKey scratch;
    const std::wstring onlyKey32 = scratch / L"Only32";
    PutText(View::Bit32, onlyKey32, L"Folder", L"C:\\32-bit only");
    EXPECT_TRUE(Exists(onlyKey32 + L"\\Folder"));
    EXPECT_EQ(L"C:\\32-bit only", Read(onlyKey32 + L"\\Folder"));

    const std::wstring bothKeys = scratch / L"BothKeys";
    PutKey(View::Bit64, bothKeys);
    PutText(View::Bit32, bothKeys, L"Folder", L"from the 32-bit view");
    EXPECT_TRUE(Exists(bothKeys + L"\\Folder"));
    EXPECT_EQ(L"from the 32-bit view", Read(bothKeys + L"\\Folder"));

    const std::wstring differ = scratch / L"Differ";
    PutText(View::Bit32, differ, L"Folder", L"32-bit text");
    PutText(View::Bit64, differ, L"Folder", L"native text");
    EXPECT_EQ(L"native text", Read(differ + L"\\Folder"));

    EXPECT_FALSE(Exists(differ + L"\\Missing"));
    EXPECT_EQ(L"", Read(differ + L"\\Missing"));
    EXPECT_FALSE(Exists(scratch / L"NoKey\\Folder"));
    EXPECT_EQ(L"", Read(scratch / L"NoKey\\Folder"));
}

TEST(RegistryValueRead, TextStoredWithoutTerminatorOrAsAnotherTypeIsReadAsText) {
    ScratchKey scratch;
    PutKey(View::Bit64, scratch.Path());
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_LOCAL_MACHINE, scratch.Path().c_str(), 0,
                                           KEY_ALL_ACCESS | KEY_WOW64_64KEY, &key));
    RegSetValueExW(key, L"Bare", 0, REG_SZ, reinterpret_cast<const BYTE*>(L"abcXYZ"), 6);
    RegSetValueExW(key, L"Expand", 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>(L"%TEMP%"), 14);
    RegCloseKey(key);
    EXPECT_EQ(L"abc", Read(scratch / L"Bare"));
    EXPECT_EQ(L"%TEMP%", Read(scratch / L"Expand"));
}

TEST(RegistryValueSetPath, SplitsAtTheLastBackslash) {
    ScratchKey scratch;
    registry_value value;
    value.SetPath(scratch / L"Key\\Name");
    EXPECT_EQ(scratch / L"Key", value.Subkey());
    EXPECT_EQ(L"Name", value.ValueName());

    // A final backslash names the key's default value.
    PutText(View::Bit64, scratch / L"Key", L"", L"default text");
    value.SetPath(scratch / L"Key\\");
    EXPECT_EQ(scratch / L"Key", value.Subkey());
    EXPECT_EQ(L"", value.ValueName());
    EXPECT_EQ(L"default text", Read(scratch / L"Key\\"));

    // Without a backslash the whole text is both the key and the value name.
    const std::wstring lone = L"CalderTests" + NewGuid();
    registry_string<std::wstring> userValue(HKEY_CURRENT_USER);
    userValue.SetPath(lone);
    EXPECT_EQ(lone, userValue.Subkey());
    EXPECT_EQ(lone, userValue.ValueName());
    userValue.WriteString(L"lone");
    EXPECT_EQ(L"lone", TextAt(View::Native, lone, lone, HKEY_CURRENT_USER).value_or(L"absent"));
    RemoveTree(View::Native, lone, HKEY_CURRENT_USER);
}

TEST(RegistryValueWrite, CreatesTheKeyInBothViewsWithTheTerminatorCounted) {
    ScratchKey scratch;
    registry_string<std::wstring> value;
    value.SetPath(scratch / L"New\\Deeper\\Folder");
    value.WriteString(L"C:\\Suite");
    for (View view : {View::Bit32, View::Bit64}) {
        EXPECT_EQ(L"C:\\Suite", TextAt(view, scratch / L"New\\Deeper", L"Folder").value_or(L""));
        EXPECT_EQ(DWORD{18}, ValueBytes(view, scratch / L"New\\Deeper", L"Folder").value_or(0));
    }
    EXPECT_EQ(nullptr, value.NativeKey());
    EXPECT_EQ(nullptr, value.Key32());
}

TEST(RegistryValueWrite, SixtyFourBitWriterLeavesThe32BitViewAlone) {
    ScratchKey scratch;
    registry_string64<std::wstring> value;
    value.SetPath(scratch / L"Run\\Aero");
    value.WriteString(L"on");
    EXPECT_EQ(L"on", TextAt(View::Bit64, scratch / L"Run", L"Aero").value_or(L""));
    EXPECT_EQ(DWORD{6}, ValueBytes(View::Bit64, scratch / L"Run", L"Aero").value_or(0));
    EXPECT_FALSE(KeyExists(View::Bit32, scratch / L"Run"));
}

TEST(RegistryValueOpenBothViews, OpensWhatExistsCreatesOnRequestAndLeavesTheHandlesOpen) {
    ScratchKey scratch;
    registry_value value;
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
    EXPECT_TRUE(CreateRegDWValue(L"CalderTestsSwitch", 7));
    EXPECT_TRUE(CreateRegDWValue(L"CalderTestsOther", 1));
    EXPECT_TRUE(CreateRegDWValue(L"CalderTestsSwitch", 0x12345678));
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_CURRENT_USER, norvik.c_str(), 0, KEY_READ, &key));
    DWORD type = 0, number = 0, bytes = sizeof(number);
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(key, L"CalderTestsSwitch", nullptr, &type,
                                              reinterpret_cast<BYTE*>(&number), &bytes));
    RegCloseKey(key);
    EXPECT_EQ(DWORD{REG_DWORD}, type);
    EXPECT_EQ(DWORD{0x12345678}, number);
    EXPECT_EQ(DWORD{4}, bytes);
    RemoveTree(View::Native, norvik, HKEY_CURRENT_USER);
}

TEST(WriteHklmString, MachineKeyThatCannotBeOpenedSendsTheValueUnderClassesRoot) {
    TestSession session;
    SessionHandle = session.Handle();
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
    EXPECT_FALSE(KeyExists(View::Native, classesKey));
    EXPECT_EQ(written, session.LogLines());
    RemoveTree(View::Native, classesKey, HKEY_CLASSES_ROOT);
}
