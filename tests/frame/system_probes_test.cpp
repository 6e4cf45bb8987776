// The system probes under the Windows version Wine reports, special folders and file versions.
#include "frame/system_probes.h"
#include "harness/registry_fixture.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <shlobj.h>

#include <cstdio>

TEST(SystemProbes, OnlyVersion6Point1IsWindows7AndA64BitSystemIsAlwaysNativeX64) {
    // Wine reads the version it reports to a program from its AppDefaults key when it starts.
    const std::wstring settings = L"Software\\Wine\\AppDefaults\\probe_report.exe";
    const std::pair<const wchar_t*, const char*> reports[] = {{L"win7", "6.1 IsWindows7=1"},
                                                              {L"win8", "6.2 IsWindows7=0"},
                                                              {L"win10", "10.0 IsWindows7=0"}};
    for (const auto& [version, expected] : reports) {
        PutText(View::Native, settings, L"Version", version, HKEY_CURRENT_USER);
        std::string output;
        FILE* report =
            _wpopen((L"\"" + BesideTestProgram(L"probe_report.exe") + L"\"").c_str(), L"r");
        for (int character; report && (character = std::fgetc(report)) != EOF;)
            output += static_cast<char>(character);
        _pclose(report);
        EXPECT_EQ(std::string("version=1:") + expected +
                      " IsNativeX64=1 IsWow64Process32=0 Bin=BIN64",
                  output);
    }
    RemoveTree(View::Native, settings, HKEY_CURRENT_USER);
}

TEST(GetSpecialFolderPath, UnknownFolderIsFalseAndAFolderWithoutPathLeavesTheText) {
    std::wstring path = L"old";
    EXPECT_FALSE(GetSpecialFolderPath(0x70, path));
    EXPECT_TRUE(GetSpecialFolderPath(CSIDL_DRIVES, path)); // known, but no file system path
    EXPECT_EQ(L"old", path);
}

TEST(GetFileVersionString, GivesTheFixedVersionOrNothing) {
    EXPECT_EQ(L"3.14.65535.7", GetFileVersionString(BesideTestProgram(L"versioned_program.exe")));
    EXPECT_EQ(L"", GetFileVersionString(BesideTestProgram(L"probe_report.exe")));
    EXPECT_EQ(L"", GetFileVersionString(BesideTestProgram(L"no_such_program.exe")));
}
