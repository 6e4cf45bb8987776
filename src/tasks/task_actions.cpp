// Actions that create, run and remove the suite's scheduled tasks with the platform's schtasks.
#include "tasks/task_actions.h"

#include "frame/action_frame.h"
#include "frame/locations.h"
#include "frame/process_launcher.h"
#include "frame/strings.h"
#include "frame/system_probes.h"
#include "registry/registry_key.h"
#include "registry/values.h"
#include "tasks/task_definition.h"

#include <shlwapi.h>

namespace {

// A task registered from a definition in the settings application's folder, whose program is
// then set to the installed one.
struct SuiteTask {
    const wchar_t* name;           // also the Run value that an older version left behind
    const wchar_t* definitionFile; // in the settings application's folder
    const wchar_t* createCommand;  // %s: the definition's path
    const wchar_t* changeCommand;  // %s: the program's path, %s: its argument
    const wchar_t* program;        // in the settings application's folder
    const wchar_t* argument;
};

const SuiteTask StartRexTask = {
    L"StartRex",
    L"StartRex.xml",
    L"schtasks /Create /TN \"StartRex\" /XML \"%s\"",
    L"schtasks /change /TN \"StartRex\" /TR \"\\\"%s\\\" %s\"",
    L"rexcmd.exe",
    L"startwithdelay",
};

const SuiteTask StartDvrTask = {
    L"StartDVR",
    L"StartDVR.xml",
    L"schtasks /Create /TN \"StartDVR\" /XML \"%s\"",
    L"schtasks /change /TN \"StartDVR\" /TR \"\\\"%s\\\" %s\"",
    L"HSServCmd.exe",
    L"",
};

const SuiteTask StartRexBenchmarkTask = {
    L"StartRexBM",
    L"StartRexBM.xml",
    L"schtasks /Create /TN \"StartRexBM\" /XML \"%s\"",
    L"schtasks /change /TN \"StartRexBM\" /TR \"\\\"%s\\\" %s\"",
    L"rexcmd.exe",
    L"benchmark",
};

constexpr wchar_t RunKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t BenchmarkDoneValue[] = L"SOFTWARE\\Norvik\\Rex\\GiBenchmark";
constexpr wchar_t BrandingKey[] = L"SOFTWARE\\Norvik\\Rex";
constexpr wchar_t LazyStartValue[] = L"LazeStart";

constexpr wchar_t DeleteStartRex[] = L"schtasks /delete /TN \"StartRex\" /F";
constexpr wchar_t DeleteStartDvr[] = L"schtasks /delete /TN \"StartDVR\" /F";
constexpr wchar_t DeleteStartRexBenchmark[] = L"schtasks /delete /TN \"StartRexBM\" /F";
constexpr wchar_t DeleteUpdater[] = L"schtasks /delete /TN \"Norvik Updater\" /F";
constexpr wchar_t RunStartRex[] = L"schtasks /run /TN \"StartRex\"";

// Formats a command into the fixed buffer and runs it. A command that does not fit runs as far
// as the buffer holds it. Whether the process could be started.
template <class... Texts>
bool RunTaskCommand(bool wait, const wchar_t* format, const Texts&... texts) {
    wchar_t command[TaskCommandChars];
    FormatWideString(command, TaskCommandChars, format, texts.c_str()...);
    std::wstring output;
    return RunCommand(command, output, wait);
}

// Sets the task's program to the installed one, in the background: the folder is read anew and
// always joined with a backslash.
void ChangeTaskProgram(const SuiteTask& task) {
    registry_string<std::wstring> location;
    location.SetPath(SuiteLocationPath(SuiteLocation::RexionFolder));
    std::wstring folder;
    location.ReadString(folder);
    RunTaskCommand(false, task.changeCommand, folder + L"\\" + task.program,
                   std::wstring(task.argument));
}

// Removes the task's Run value, registers the task from its definition and sets its program.
// 1603 when the settings application's folder is not recorded.
UINT CreateLogonTask(const SuiteTask& task) {
    RemoveRunValue(task.name);
    std::wstring folder;
    if (!ReadSuiteLocation(SuiteLocation::RexionFolder, folder))
        return ERROR_INSTALL_FAILURE;
    RunTaskCommand(true, task.createCommand,
                   folder + PathSeparatorFor(folder) + task.definitionFile);
    ChangeTaskProgram(task);
    return ERROR_SUCCESS;
}

bool BenchmarkAlreadyRun() {
    registry_string<std::wstring> done(HKEY_CURRENT_USER);
    done.SetPath(BenchmarkDoneValue);
    if (!done.ValueExists())
        return false;
    std::wstring text;
    done.ReadString(text);
    return text == L"1";
}

// The rewritten definition's place: the temporary folder, or nothing when it is unknown.
std::wstring TemporaryDefinitionPath(const SuiteTask& task) {
    wchar_t folder[MaxPropertyChars];
    if (GetTempPathW(MaxPropertyChars, folder) == 0)
        return std::wstring();
    return std::wstring(folder) + task.definitionFile;
}

} // namespace

bool RemoveRunValue(const std::wstring& name) {
    RegistryKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, RunKey, 0, KEY_ALL_ACCESS, key.Receive()) !=
        ERROR_SUCCESS)
        return false;
    return RegDeleteValueW(key.Get(), name.c_str()) == ERROR_SUCCESS;
}

extern "C" UINT __stdcall CreateLogonSchTask(MSIHANDLE) {
    return CreateLogonTask(StartRexTask);
}

extern "C" UINT __stdcall CreateDVRLogonSchTask(MSIHANDLE) {
    return CreateLogonTask(StartDvrTask);
}

// Registers the run-once benchmark task from a copy of its definition that starts tomorrow, unless
// the benchmark has run or its definition is missing. Always 0.
extern "C" UINT __stdcall CreateBenchMarkRunOnceSchTask(MSIHANDLE) {
    const SuiteTask& task = StartRexBenchmarkTask;
    if (BenchmarkAlreadyRun())
        return ERROR_SUCCESS;
    std::wstring folder;
    if (!ReadSuiteLocation(SuiteLocation::RexionFolder, folder))
        return ERROR_SUCCESS;
    const std::wstring source = folder + PathSeparatorFor(folder) + task.definitionFile;
    if (!PathFileExistsW(source.c_str()))
        return ERROR_SUCCESS;
    const std::wstring destination = TemporaryDefinitionPath(task);
    RewriteStartBoundary(source, destination);
    RunTaskCommand(true, task.createCommand, destination);
    ChangeTaskProgram(task);
    return ERROR_SUCCESS;
}

// Starts the logon task now, except on Windows 7. Always 1.
extern "C" UINT __stdcall LaunchRex(MSIHANDLE) {
    if (!IsWindows7())
        RunTaskCommand(true, RunStartRex);
    return 1;
}

// The remove family: whether schtasks could be started (1) or not (0).
extern "C" UINT __stdcall RemoveRexSchedularTask(MSIHANDLE) {
    return RunTaskCommand(true, DeleteStartRex);
}

extern "C" UINT __stdcall RemoveDVRSchedularTask(MSIHANDLE) {
    return RunTaskCommand(true, DeleteStartDvr);
}

extern "C" UINT __stdcall RemoveBenchMarkRunOnceSchedularTask(MSIHANDLE) {
    return RunTaskCommand(true, DeleteStartRexBenchmark);
}

extern "C" UINT __stdcall RemoveSchedularTask(MSIHANDLE) {
    return RunTaskCommand(true, DeleteUpdater);
}

// Deletes the logon task when the branding asks for a lazy start (LazeStart = 1). Always 0. The
// branding key stays open until the process ends.
extern "C" UINT __stdcall DeleteSchedTaskonBranding(MSIHANDLE) {
    HKEY branding = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, BrandingKey, 0, KEY_READ, &branding) != ERROR_SUCCESS)
        return ERROR_SUCCESS;
    DWORD lazyStart = 0;
    DWORD type = REG_DWORD;
    DWORD size = sizeof lazyStart;
    if (RegQueryValueExW(branding, LazyStartValue, nullptr, &type,
                         reinterpret_cast<BYTE*>(&lazyStart), &size) == ERROR_SUCCESS &&
        lazyStart == 1)
        RunTaskCommand(true, DeleteStartRex);
    return ERROR_SUCCESS;
}
