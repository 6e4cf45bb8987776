// Actions that create, run and remove the suite's scheduled tasks with the platform's schtasks.
#pragma once

#include <windows.h>

#include <msi.h>

#include <cstddef>
#include <string>

// Capacity in wide characters, terminator included, of the buffer every schtasks command is
// formatted into. A longer command runs cut to the first 259 characters.
constexpr std::size_t TaskCommandChars = 260;

// Deletes the value `name` under HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run, opened with
// KEY_ALL_ACCESS. True when the delete succeeded.
bool RemoveRunValue(const std::wstring& name);

extern "C" {
UINT __stdcall CreateLogonSchTask(MSIHANDLE session);
UINT __stdcall CreateDVRLogonSchTask(MSIHANDLE session);
UINT __stdcall CreateBenchMarkRunOnceSchTask(MSIHANDLE session);
UINT __stdcall LaunchRex(MSIHANDLE session);
UINT __stdcall RemoveRexSchedularTask(MSIHANDLE session);
UINT __stdcall RemoveDVRSchedularTask(MSIHANDLE session);
UINT __stdcall RemoveBenchMarkRunOnceSchedularTask(MSIHANDLE session);
UINT __stdcall RemoveSchedularTask(MSIHANDLE session);
UINT __stdcall DeleteSchedTaskonBranding(MSIHANDLE session);
}
