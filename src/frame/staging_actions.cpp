// Staging actions copy INSTALLDIR or a package table value into the property named after a
// deferred action, which the engine hands to that action as CustomActionData; and the gate that
// stops a package not started by the install manager.
#include "frame/staging_actions.h"

#include "frame/action_frame.h"
#include "frame/msi_table.h"
#include "frame/strings.h"

#include <initializer_list>
#include <string>

#ifndef CALDER_VENDOR_URL
#error "CALDER_VENDOR_URL must be defined by the build"
#endif

const wchar_t* const VendorWebAddress = CALDER_VENDOR_URL;

namespace {

// One property a staging action sets, with its two log lines (the success line takes the value).
struct StagedProperty {
    const wchar_t* name;
    const wchar_t* setFailedLine;
    const wchar_t* setLine;
};

// How a staging action's status follows from its sets.
enum class SetRule {
    EverySetCounts, // all sets are attempted; any failure gives the failure status
    LastSetDecides, // all sets are attempted; a failure before the last is only logged
};

struct StagingAction {
    const wchar_t* startLine;
    const wchar_t* readFailedLine;
    std::initializer_list<StagedProperty> targets;
    SetRule rule;
    UINT success;
    UINT failure;
};

// Sets every target to `value`, logging each outcome, and gives the action's status.
UINT StageValue(const StagingAction& action, const wchar_t* value) {
    bool allSet = true;
    bool lastSet = false;
    for (const StagedProperty& target : action.targets) {
        lastSet = SetProperty(SessionHandle, target.name, value);
        if (lastSet)
            LogMessage(SessionHandle, target.setLine, value);
        else
            LogMessage(SessionHandle, target.setFailedLine);
        allSet = allSet && lastSet;
    }
    const bool succeeded = action.rule == SetRule::EverySetCounts ? allSet : lastSet;
    return succeeded ? action.success : action.failure;
}

// The shape of every INSTALLDIR staging action: start line, one read, the sets.
UINT StageInstallDir(MSIHANDLE session, const StagingAction& action) {
    SessionHandle = session;
    LogMessage(session, action.startLine);

    wchar_t installDir[MaxPropertyChars];
    if (!ReadProperty(SessionHandle, L"INSTALLDIR", installDir)) {
        LogMessage(SessionHandle, action.readFailedLine);
        return action.failure;
    }
    return StageValue(action, installDir);
}

const StagingAction SetInstallDirAction{
    L"Calder_CA SetInstallDir() start",
    L"Calder_CA SetInstallDir() failed to get Pid from Tessel Property table.",
    {{L"DeleteTKMDir", L"Calder_CA DeleteTKMDir SetInstallDir() failed to set Pid in CustomActionData",
      L"Calder_CA DeleteTKMDir SetInstallDir(), %s should be set in CustomActionData \n"},
     {L"UpdateCfg", L"Calder_CA UpdateCfg SetInstallDir() failed to set Pid in CustomActionData",
      L"Calder_CA UpdateCfg SetInstallDir(), %s should be set in CustomActionData \n"}},
    SetRule::EverySetCounts,
    ERROR_SUCCESS,
    ERROR_INSTALL_FAILURE,
};

const StagingAction SetTkmTesselPidAction{
    L"Calder_CA SetTkmTesselPid() start",
    L"Calder_CA SetTkmTesselPid() failed to get Pid from Tessel Property table.",
    {{L"CleanRegistry", L"Calder_CA SetTkmTesselPid() failed to set Pid in CustomActionData",
      L"Calder_CA SetTkmTesselPid(), %s should be set in CustomActionData \n"}},
    SetRule::EverySetCounts,
    ERROR_SUCCESS,
    ERROR_INSTALL_FAILURE,
};

const StagingAction GetInstallQ7DirAction{
    L"Calder_CA GetInstallQ7Dir() start",
    L"Calder_CA SetInstallQ7Dir() failed.",
    {{L"DeleteInstallQ7", L"Calder_CA DeleteInstallQ7 failed to set Pid in CustomActionData",
      L"Calder_CA DeleteInstallQ7, %s should be set in CustomActionData \n"}},
    SetRule::EverySetCounts,
    ERROR_SUCCESS,
    ERROR_INSTALL_FAILURE,
};

const StagingAction GetInstallTLDirAction{
    L"Calder_CA GetInstallTLDir() start",
    L"Calder_CA SetInstallTLDir() failed.",
    {{L"DeleteInstallTL", L"Calder_CA DeleteInstallTL failed to be set in CustomActionData",
      L"Calder_CA DeleteInstallTL, %s should be set in CustomActionData \n"}},
    SetRule::EverySetCounts,
    1,
    0,
};

const StagingAction GetInstallEmberDirAction{
    L"Calder_CA GetInstallEmberDir() start",
    L"Calder_CA SetInstallEmberDir() failed.",
    {{L"DeleteInstallEmber", L"Calder_CA DeleteInstallEmber failed to set Pid in CustomActionData",
      L"Calder_CA DeleteInstallEmber, %s should be set in CustomActionData \n"}},
    SetRule::EverySetCounts,
    1,
    0,
};

const StagingAction GetInstallUSBMonDirAction{
    L"Calder_CA GetInstallUSBMonDir() start",
    L"Calder_CA SetInstallUSBMONDir() failed.",
    {{L"DeleteUSBMONDir",
      L"Calder_CA DeleteUSBMONDir failed to set Installdir in CustomActionData",
      L"Calder_CA DeleteUSBMONDir, %s should be set in CustomActionData \n"}},
    SetRule::EverySetCounts,
    1,
    0,
};

const StagingAction GetInstallProxyDirAction{
    L"Calder_CA GetInstallProxyDir() start",
    L"Calder_CA SetInstallProxyDir() failed.",
    {{L"LaunchInstallProxyExe",
      L"Calder_CA LaunchInstallProxyExe failed to set Pid in CustomActionData",
      L"Calder_CA LaunchInstallProxyExe, %s should be set in CustomActionData \n"},
     {L"SetInstallProxyReg", L"Calder_CA SetInstallProxyReg failed to set Pid in CustomActionData",
      L"Calder_CA SetInstallProxyReg, %s should be set in CustomActionData \n"}},
    SetRule::LastSetDecides,
    1,
    0,
};

const wchar_t* const NotFromManagerText =
    L"This package requires Norvik Installer Setup.\nPlease obtain and install Norvik Installer from";
const wchar_t* const AbortText =
    L" to continue installing this package.\nThis application will now abort.";

} // namespace

extern "C" UINT __stdcall SetInstallDir(MSIHANDLE session) {
    return StageInstallDir(session, SetInstallDirAction);
}

extern "C" UINT __stdcall SetTkmTesselPid(MSIHANDLE session) {
    SessionHandle = session;
    LogMessage(session, SetTkmTesselPidAction.startLine);

    std::wstring pid;
    if (!GetFromMSITable(InstallPropertiesQuery, L"TESSEL_PID", pid)) {
        LogMessage(SessionHandle, SetTkmTesselPidAction.readFailedLine);
        return SetTkmTesselPidAction.failure;
    }
    return StageValue(SetTkmTesselPidAction, pid.c_str());
}

extern "C" UINT __stdcall GetInstallQ7Dir(MSIHANDLE session) {
    return StageInstallDir(session, GetInstallQ7DirAction);
}

extern "C" UINT __stdcall GetInstallTLDir(MSIHANDLE session) {
    return StageInstallDir(session, GetInstallTLDirAction);
}

extern "C" UINT __stdcall GetInstallEmberDir(MSIHANDLE session) {
    return StageInstallDir(session, GetInstallEmberDirAction);
}

extern "C" UINT __stdcall GetInstallUSBMonDir(MSIHANDLE session) {
    return StageInstallDir(session, GetInstallUSBMonDirAction);
}

extern "C" UINT __stdcall GetInstallProxyDir(MSIHANDLE session) {
    return StageInstallDir(session, GetInstallProxyDirAction);
}

// Uses its argument for every call and leaves SessionHandle alone.
extern "C" UINT __stdcall LaunchedFromTKM(MSIHANDLE session) {
    wchar_t launched[MaxPropertyChars];
    if (ReadProperty(session, L"LAUNCHED_FROM_TKM", launched) && EqualFolded(launched, L"1")) {
        LogMessage(session, L"CALDER_CA Launched from TKM: %s \n", launched);
        return ERROR_SUCCESS;
    }
    LogMessage(session, L"CALDER_CA Not Launched from TKM and unable to get property");
    const std::wstring text =
        std::wstring(NotFromManagerText) + VendorWebAddress + AbortText;
    ShowUserMessage(session, text.c_str(), 0);
    return ERROR_INSTALL_SOURCE_ABSENT;
}
