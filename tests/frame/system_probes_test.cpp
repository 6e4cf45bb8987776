// The system probes under the Windows version Wine reports, special folders and file versions.
#include "frame/system_probes.h"
#include "harness/registry_fixture.h"

#include <gtest/gtest.h>

#include <shlobj.h>

#include <cstdio>

namespace {

// The folder of this test program, where the build puts the programs the tests run.
std::wstring ProgramFolder() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder = path;
    return folder.substr(0, folder.rfind(L'\\') + 1);
}

// Runs the probe reporter with the Windows version Wine reports to it alone set to `version`
// (Wine reads HKCU\Software\Wine\AppDefaults\<program>\Version when a process starts), and gives
// what it printed.
std::string ProbesUnder(const std::wstring& version) {
    const std::wstring settings = L"Software\\Wine\\AppDefaults\\probe_report.exe";
    PutText(View::Native, settings, L"Version", version, HKEY_CURRENT_USER);
    std::string output;
    if (FILE* report = _wpopen((L"\"" + ProgramFolder() + L"probe_report.exe\"").c_str(), L"r")) {
        for (int character; (character = std::fgetc(report)) != EOF;)
            output += static_cast<char>(character);
        _pclose(report);
    }
    RemoveTree(View::Native, settings, HKEY_CURRENT_USER);
    return output;
}

} // namespace

TEST(SystemProbes, OnlyVersion6Point1IsWindows7AndA64BitSystemIsAlwaysNativeX64) {
    EXPECT_EQ("version=1:6.1 IsWindows7=1 IsNativeX64=1 IsWow64Process32=0 Bin=BIN64",
              ProbesUnder(L"win7"));
    EXPECT_EQ("version=1:6.2 IsWindows7=0 IsNativeX64=1 IsWow64Process32=0 Bin=BIN64",
              ProbesUnder(L"win8"));
    EXPECT_EQ("version=1:10.0 IsWindows7=0 IsNativeX64=1 IsWow64Process32=0 Bin=BIN64",
              ProbesUnder(L"win10"));
}

TEST(GetSpecialFolderPath, UnknownFolderIsFalseAndAFolderWithoutPathLeavesTheText) {
    std::wstring path = L"old";
    EXPECT_FALSE(GetSpecialFolderPath(0x70, path));
    EXPECT_EQ(L"old", path);
    // The computer folder is known but has no path in the file system.
    EXPECT_TRUE(GetSpecialFolderPath(CSIDL_DRIVES, path));
    EXPECT_EQ(L"old", path);
}

TEST(GetFileVersionString, GivesTheFixedVersionOrNothing) {
    EXPECT_EQ(L"3.14.65535.7", GetFileVersionString(ProgramFolder() + L"versioned_program.exe"));
    EXPECT_EQ(L"", GetFileVersionString(ProgramFolder() + L"probe_report.exe"));
    EXPECT_EQ(L"", GetFileVersionString(ProgramFolder() + L"no_such_program.exe"));
}
