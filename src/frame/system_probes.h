// What kind of Windows the action runs on, the system's special folders and a program's version.
#pragma once

#include <windows.h>

#include <string>

// GetVersionExW into `info`, which the caller has cleared and given its size (276 bytes).
bool GetOsVersionInfo(OSVERSIONINFOW& info);

// True on Windows 7 exactly: platform 2, version 6.1.
bool IsWindows7();

// True on a 64-bit Windows (x64 or Itanium). The processor comes from GetNativeSystemInfo on
// major version 10 only and from GetSystemInfo otherwise; when that is not a 64-bit one, the
// answer is whether the process runs under the 32-on-64 emulation.
bool IsNativeX64();

// True when this process runs under the 32-on-64 emulation; false where the system cannot say.
bool IsWow64Process32();

// The install manager's program folder name: "BIN64" on a 64-bit Windows, else "Bin".
std::wstring GetBinFolderName();

// The folder of a CSIDL value. True only when the shell knows the folder; `path` takes the
// folder's path when it has one, and keeps its old text otherwise.
bool GetSpecialFolderPath(int csidl, std::wstring& path);

// The fixed file version of a program as "major.minor.build.revision", or an empty string when
// the file has no version resource.
std::wstring GetFileVersionString(const std::wstring& path);
