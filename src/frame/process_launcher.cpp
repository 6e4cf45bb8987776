// The three ways the actions start another program, and the seam through which tests see them.
#include "frame/process_launcher.h"

#include "frame/action_frame.h"
#include "frame/code_texts.h"
#include "frame/strings.h"

#include <windows.h>

#include <sddl.h>
#include <shellapi.h>

#include <sstream>

const wchar_t* const SecuredProcessDescriptor =
    L"D:(A;OICI;GA;;;SY)(A;OICI;GA;;;BA)(A;OICI;GA;;;CO)(A;OICI;GRGWGX;;;IU)";

namespace {

#ifdef _WIN64
static_assert(sizeof(STARTUPINFOW) == 104, "start-up information of 104 bytes");
static_assert(sizeof(SECURITY_ATTRIBUTES) == 24, "security attributes of 24 bytes");
static_assert(sizeof(SHELLEXECUTEINFOW) == 112, "shell execute information of 112 bytes");
#endif

constexpr ULONG ShellOpenMask = SEE_MASK_NOCLOSEPROCESS; // 64
constexpr int ShellOpenShow = SW_SHOWNORMAL;             // 1

// Limit given to the bounded format of the descriptor failure line.
constexpr std::size_t DescriptorFailureLimit = 400;

// Words for the hInstApp code of a failed shell open.
const CodeText ShellOpenFailures[] = {
    {0, L"The operating system is out of memory or resources"},
    {2, L"File not found."},
    {3, L"Path not found."},
    {5, L"Access denied."},
    {8, L"Out of memory."},
    {26, L"Cannot share an open file."},
    {27, L"File association information not complete."},
    {28, L" The DDE transaction could not be completed because the request timed out"},
    {29, L"DDE operation failed."},
    {30, L"DDE operation is busy."},
    {31, L"File association not available."},
    {32, L"Dynamic-link library not found."},
};

const wchar_t* const UnknownShellOpenFailure = L"Unknown error, could be SE_ERR_FNF, or SE_ERR_PNF";

Launcher& InstalledLauncher() {
    static Launcher launcher;
    return launcher;
}

// "<prefix>Failed to lauch >command<\n Last error return: N\n", as both process wrappers put it.
std::wstring LaunchFailureText(const wchar_t* prefix, const wchar_t* commandLine, DWORD error) {
    std::wostringstream text;
    text << prefix << L"Failed to lauch >" << commandLine << L"<\n Last error return: " << error
         << L"\n";
    return text.str();
}

void CloseProcessHandles(const PROCESS_INFORMATION& process) {
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
}

bool StartHidden(wchar_t* commandLine, bool wait) {
    STARTUPINFOW startupInfo{};
    startupInfo.cb = sizeof(startupInfo);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine, nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &startupInfo, &process)) {
        // The text is put together and dropped: this wrapper reports nothing but its answer.
        LaunchFailureText(L"\n", commandLine, GetLastError());
        return false;
    }
    if (wait)
        WaitForSingleObject(process.hProcess, INFINITE);
    CloseProcessHandles(process);
    return true;
}

bool StartThroughShell(const wchar_t* file, const wchar_t* parameters, bool wait) {
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = ShellOpenMask;
    info.lpVerb = L"open";
    info.lpFile = file;
    info.lpParameters = parameters;
    info.nShow = ShellOpenShow;
    if (!ShellExecuteExW(&info)) {
        LogMessage(SessionHandle, L"Calder_CA failed to launch the following: %s",
                   TextForCode(ShellOpenFailures, reinterpret_cast<INT_PTR>(info.hInstApp),
                               UnknownShellOpenFailure));
        return false;
    }
    if (wait) {
        LogMessage(SessionHandle,
                   L"Calder_CA launched the following successfully: %s \nWaiting for process to "
                   L"end...",
                   file);
        WaitForSingleObject(info.hProcess, INFINITE);
        LogMessage(SessionHandle, L"Calder_CA Process: %s \nsuccessfully ended launching", file);
    } else {
        LogMessage(SessionHandle, L"Calder_CA launched the following successfully: %s", file);
    }
    // The process handle stays open until the process that asked ends.
    return true;
}

} // namespace

bool RunCommandWithDescriptor(wchar_t* commandLine, bool wait, const wchar_t* descriptorText) {
    STARTUPINFOW startupInfo{};
    startupInfo.cb = sizeof(startupInfo);
    PROCESS_INFORMATION process{};
    SECURITY_ATTRIBUTES attributes{};
    attributes.nLength = sizeof(attributes);
    attributes.lpSecurityDescriptor = nullptr;
    attributes.bInheritHandle = TRUE;

    // The descriptor is not freed: it lives as long as the process that made it.
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(
            descriptorText, SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr)) {
        wchar_t line[FixedFormatChars];
        FormatWideStringFixed(line, DescriptorFailureLimit,
                              L"CALDER_CA Failed to "
                              L"ConvertStringSecurityDescriptorToSecurityDescriptor: error = %d\n",
                              static_cast<int>(GetLastError()));
        LogMessage(SessionHandle, L"%s", line);
    } else {
        LogMessage(SessionHandle, L"CALDER_CA Security String converted");
    }

    if (!CreateProcessW(nullptr, commandLine, &attributes, nullptr, FALSE, 0, nullptr, nullptr,
                        &startupInfo, &process)) {
        const DWORD error = GetLastError();
        LogMessage(SessionHandle, L"%s",
                   LaunchFailureText(L"\nCALDER_CA ", commandLine, error).c_str());
        return false;
    }
    if (wait) {
        LogMessage(SessionHandle,
                   L"CreateProcess successfully launched %s \nWaitng for process to return...",
                   commandLine);
        WaitForSingleObject(process.hProcess, INFINITE);
        LogMessage(SessionHandle,
                   L"CreateProcess successfully returned from wait after launching %s \n",
                   commandLine);
    } else {
        LogMessage(SessionHandle,
                   L"CreateProcess successfully launched %s \nWating flag was not set.",
                   commandLine);
    }
    CloseProcessHandles(process);
    return true;
}

bool RunCommand(wchar_t* commandLine, std::wstring&, bool wait) {
    if (const Launcher& launcher = InstalledLauncher())
        return launcher({LaunchKind::Command, commandLine, L"", wait});
    return StartHidden(commandLine, wait);
}

bool RunCommandSecured(wchar_t* commandLine, std::wstring&, bool wait) {
    if (const Launcher& launcher = InstalledLauncher())
        return launcher({LaunchKind::Secured, commandLine, L"", wait});
    return RunCommandWithDescriptor(commandLine, wait, SecuredProcessDescriptor);
}

bool RunShellOpen(const wchar_t* file, const wchar_t* parameters, bool wait) {
    if (const Launcher& launcher = InstalledLauncher())
        return launcher(
            {LaunchKind::ShellOpen, file, parameters == nullptr ? L"" : parameters, wait});
    return StartThroughShell(file, parameters, wait);
}

Launcher InstallLauncher(Launcher launcher) {
    Launcher previous = std::move(InstalledLauncher());
    InstalledLauncher() = std::move(launcher);
    return previous;
}
