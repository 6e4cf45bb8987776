// The staging family and the install manager gate, called through the library's export table.
#include "frame/action_frame.h"
#include "frame/staging_actions.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

namespace {

struct Target {
    const wchar_t* property;
    const wchar_t* setPrefix; // the success line is prefix + value + SetSuffix
    const wchar_t* setFailedLine;
    UINT statusWhenSetFails;
};

// An INSTALLDIR staging action: its export, the core function behind it, its texts and statuses.
struct Staging {
    const char* name;
    UINT(__stdcall* core)(MSIHANDLE);
    const wchar_t* readFailedLine;
    UINT success;
    UINT failure;
    std::vector<Target> targets;
};

const wchar_t* const SetSuffix = L" should be set in CustomActionData \n";

const Staging InstallDirStaging[] = {
    {"SetInstallDir",
     &SetInstallDir,
     L"Calder_CA SetInstallDir() failed to get Pid from Tessel Property table.",
     0,
     1603,
     {{L"DeleteTKMDir", L"Calder_CA DeleteTKMDir SetInstallDir(), ",
       L"Calder_CA DeleteTKMDir SetInstallDir() failed to set Pid in CustomActionData", 1603},
      {L"UpdateCfg", L"Calder_CA UpdateCfg SetInstallDir(), ",
       L"Calder_CA UpdateCfg SetInstallDir() failed to set Pid in CustomActionData", 1603}}},
    {"GetInstallQ7Dir",
     &GetInstallQ7Dir,
     L"Calder_CA SetInstallQ7Dir() failed.",
     0,
     1603,
     {{L"DeleteInstallQ7", L"Calder_CA DeleteInstallQ7, ",
       L"Calder_CA DeleteInstallQ7 failed to set Pid in CustomActionData", 1603}}},
    {"GetInstallTLDir",
     &GetInstallTLDir,
     L"Calder_CA SetInstallTLDir() failed.",
     1,
     0,
     {{L"DeleteInstallTL", L"Calder_CA DeleteInstallTL, ",
       L"Calder_CA DeleteInstallTL failed to be set in CustomActionData", 0}}},
    {"GetInstallEmberDir",
     &GetInstallEmberDir,
     L"Calder_CA SetInstallEmberDir() failed.",
     1,
     0,
     {{L"DeleteInstallEmber", L"Calder_CA DeleteInstallEmber, ",
       L"Calder_CA DeleteInstallEmber failed to set Pid in CustomActionData", 0}}},
    {"GetInstallUSBMonDir",
     &GetInstallUSBMonDir,
     L"Calder_CA SetInstallUSBMONDir() failed.",
     1,
     0,
     {{L"DeleteUSBMONDir", L"Calder_CA DeleteUSBMONDir, ",
       L"Calder_CA DeleteUSBMONDir failed to set Installdir in CustomActionData", 0}}},
    // A failed first set is only logged: the second decides.
    {"GetInstallProxyDir",
     &GetInstallProxyDir,
     L"Calder_CA SetInstallProxyDir() failed.",
     1,
     0,
     {{L"LaunchInstallProxyExe", L"Calder_CA LaunchInstallProxyExe, ",
       L"Calder_CA LaunchInstallProxyExe failed to set Pid in CustomActionData", 1},
      {L"SetInstallProxyReg", L"Calder_CA SetInstallProxyReg, ",
       L"Calder_CA SetInstallProxyReg failed to set Pid in CustomActionData", 0}}},
};

std::wstring StartLine(const Staging& action) {
    return L"Calder_CA " + std::wstring(action.name, action.name + strlen(action.name)) +
           L"() start";
}

const std::wstring Folder = L"C:\\Program Files\\Tessel Technologies\\Suite\\";
const std::wstring TooLong(MaxPropertyChars, L'a'); // 260 characters: a failed read

// Makes MsiSetPropertyW fail for one property name while it lives.
class FailingSet {
public:
    explicit FailingSet(const wchar_t* name) {
        failing_ = name;
        SetPropertyThroughEngine = &Set;
    }
    ~FailingSet() { SetPropertyThroughEngine = &MsiSetPropertyW; }

private:
    static UINT WINAPI Set(MSIHANDLE session, LPCWSTR name, LPCWSTR value) {
        return failing_ == name ? ERROR_FUNCTION_FAILED : MsiSetPropertyW(session, name, value);
    }
    static inline std::wstring failing_;
};

} // namespace

TEST(StagingFamily, EachActionStagesInstallDirUpTo259CharactersAnd260IsAFailedRead) {
    for (const Staging& action : InstallDirStaging)
        for (const std::wstring& value :
             {Folder, std::wstring(259, L'b'), std::wstring(), TooLong}) {
            SCOPED_TRACE(action.name + (" " + std::to_string(value.size())));
            TestSession session;
            session.SetProperty(L"INSTALLDIR", value);
            const bool read = value.size() < MaxPropertyChars;
            EXPECT_EQ(read ? action.success : action.failure,
                      CallExport(action.name, session.Handle()));
            Lines expected = {StartLine(action)};
            if (!read)
                expected.push_back(action.readFailedLine);
            for (const Target& target : action.targets) {
                EXPECT_EQ(read ? value : L"", session.Property(target.property));
                if (read)
                    expected.push_back(target.setPrefix + value + SetSuffix);
            }
            EXPECT_EQ(expected, session.LogLines());
        }
}

TEST(StagingFamily, AFailedSetIsLoggedAndTheLaterSetsAreStillTried) {
    for (const Staging& action : InstallDirStaging)
        for (const Target& failing : action.targets) {
            SCOPED_TRACE(Narrow(failing.property));
            TestSession session;
            session.SetProperty(L"INSTALLDIR", Folder);
            FailingSet failingSet(failing.property);
            EXPECT_EQ(failing.statusWhenSetFails, action.core(session.Handle()));
            Lines expected = {StartLine(action)};
            for (const Target& target : action.targets) {
                const bool failed = &target == &failing;
                EXPECT_EQ(failed ? L"" : Folder, session.Property(target.property));
                expected.push_back(failed ? target.setFailedLine
                                          : target.setPrefix + Folder + SetSuffix);
            }
            EXPECT_EQ(expected, session.LogLines());
        }
}

TEST(SetTkmTesselPid, StagesThePackageIdFromItsOwnTableOrFails) {
    const std::wstring pid = L"{5D1E0B7C-0000-4C2A-9E11-7A6B2C3D4E5F}";
    const std::wstring start = L"Calder_CA SetTkmTesselPid() start";
    const std::wstring reading = L"Calder_CA GetFromMSITable(), Reading Property table\n ";
    TestSession session(InstallProperties{{L"TESSEL_PID", pid}});
    EXPECT_EQ(0u, CallExport("SetTkmTesselPid", session.Handle()));
    EXPECT_EQ(pid, session.Property(L"CleanRegistry"));
    const Lines read = {start, reading,
                        L"Calder_CA GetFromMSITable() PackageRead Property Value is " + pid +
                            L" \n"};
    Lines expected = read;
    expected.push_back(L"Calder_CA SetTkmTesselPid(), " + pid + SetSuffix);
    EXPECT_EQ(expected, session.LogLines());

    session.ClearMessages();
    FailingSet failing(L"CleanRegistry");
    EXPECT_EQ(1603u, SetTkmTesselPid(session.Handle()));
    expected = read;
    expected.push_back(L"Calder_CA SetTkmTesselPid() failed to set Pid in CustomActionData");
    EXPECT_EQ(expected, session.LogLines());

    TestSession withoutRow;
    EXPECT_EQ(1603u, CallExport("SetTkmTesselPid", withoutRow.Handle()));
    EXPECT_EQ(L"", withoutRow.Property(L"CleanRegistry"));
    EXPECT_EQ((Lines{start, reading,
                     L"Calder_CA SetTkmTesselPid() failed to get Pid from Tessel Property table."}),
              withoutRow.LogLines());
}

TEST(LaunchedFromTKM, OnlyOneLetsTheInstallGoOnAnyOtherValueAbortsWithOneLineAndOneMessage) {
    const std::wstring message =
        L"This package requires Norvik Installer Setup.\nPlease obtain and install Norvik "
        L"Installer from" +
        std::wstring(VendorWebAddress) +
        L" to continue installing this package.\nThis application will now abort.";
    for (const std::wstring& value : {std::wstring(L"1"), std::wstring(L"0"), std::wstring(),
                                      std::wstring(L" 1"), std::wstring(L"11"), TooLong}) {
        SCOPED_TRACE(Narrow(value));
        TestSession session;
        session.SetProperty(L"LAUNCHED_FROM_TKM", value);
        if (value == L"1") {
            EXPECT_EQ(0u, CallExport("LaunchedFromTKM", session.Handle()));
            EXPECT_EQ(Lines{L"CALDER_CA Launched from TKM: 1 \n"}, session.LogLines());
            EXPECT_TRUE(session.UserMessages().empty());
            continue;
        }
        EXPECT_EQ(1612u, CallExport("LaunchedFromTKM", session.Handle()));
        EXPECT_EQ(Lines{L"CALDER_CA Not Launched from TKM and unable to get property"},
                  session.LogLines());
        ASSERT_EQ(1u, session.UserMessages().size());
        EXPECT_EQ(message, session.UserMessages()[0].text);
        EXPECT_EQ(0u, session.UserMessages()[0].flags);
    }
}
