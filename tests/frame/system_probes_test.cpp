// The system probes under the Windows version Wine reports, special folders and file versions.
#include "frame/strings.h"
#include "frame/system_probes.h"
#include "harness/registry_fixture.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <shlobj.h>

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

    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    CreatePipe(&readEnd, &writeEnd, &inheritable, 0);
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    startup.hStdError = writeEnd;
    PROCESS_INFORMATION process = {};
    std::wstring command = L"\"" + ProgramFolder() + L"probe_report.exe\"";
    std::string output;
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &process)) {
        CloseHandle(writeEnd);
        writeEnd = nullptr;
        char chunk[256];
        DWORD got = 0;
        while (ReadFile(readEnd, chunk, sizeof(chunk), &got, nullptr) && got > 0)
            output.append(chunk, got);
        WaitForSingleObject(process.hProcess, INFINITE);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    if (writeEnd != nullptr)
        CloseHandle(writeEnd);
    CloseHandle(readEnd);
    RemoveTree(View::Native, settings, HKEY_CURRENT_USER);
    return output;
}

std::wstring Environment(const wchar_t* name) {
    wchar_t value[MAX_PATH] = {};
    GetEnvironmentVariableW(name, value, MAX_PATH);
    return value;
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

TEST(GetSpecialFolderPath, EachFolderInUseMatchesWhatTheSystemReportsElsewhere) {
    wchar_t windows[MAX_PATH], system[MAX_PATH], system32On64[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    GetSystemDirectoryW(system, MAX_PATH);
    GetSystemWow64DirectoryW(system32On64, MAX_PATH);
    const std::wstring startMenu = L"\\Microsoft\\Windows\\Start Menu\\Programs";
    const struct {
        int csidl;
        std::wstring expected;
    } folders[] = {
        {CSIDL_PROGRAMS, Environment(L"APPDATA") + startMenu},
        {CSIDL_COMMON_PROGRAMS, Environment(L"ProgramData") + startMenu},
        {CSIDL_COMMON_APPDATA, Environment(L"ProgramData")},
        {CSIDL_WINDOWS, windows},
        {CSIDL_SYSTEM, system},
        {CSIDL_PROGRAM_FILES, Environment(L"ProgramFiles")},
        {CSIDL_SYSTEMX86, system32On64},
        {CSIDL_PROGRAM_FILESX86, Environment(L"ProgramFiles(x86)")},
    };
    for (const auto& folder : folders) {
        std::wstring path = L"old";
        EXPECT_TRUE(GetSpecialFolderPath(folder.csidl, path)) << folder.csidl;
        EXPECT_TRUE(EqualFolded(folder.expected, path))
            << folder.csidl << ": " << Narrow(path) << " vs " << Narrow(folder.expected);
    }
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
