// The staging family and the install manager gate, called through the library's export table.
#include "frame/action_frame.h"
#include "frame/staging_actions.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

namespace {

// One single-target INSTALLDIR staging action with its texts and statuses.
struct SingleTarget {
    const char* exportName;
    const wchar_t* property;
    const wchar_t* startLine;
    const wchar_t* readFailedLine;
    const wchar_t* setLinePrefix; // the success line is prefix + value + " should be set ..."
    UINT success;
    UINT failure;
};

const SingleTarget SingleTargets[] = {
    {"GetInstallQ7Dir", L"DeleteInstallQ7", L"Calder_CA GetInstallQ7Dir() start",
     L"Calder_CA SetInstallQ7Dir() failed.", L"Calder_CA DeleteInstallQ7, ", 0, 1603},
    {"GetInstallTLDir", L"DeleteInstallTL", L"Calder_CA GetInstallTLDir() start",
     L"Calder_CA SetInstallTLDir() failed.", L"Calder_CA DeleteInstallTL, ", 1, 0},
    {"GetInstallEmberDir", L"DeleteInstallEmber", L"Calder_CA GetInstallEmberDir() start",
     L"Calder_CA SetInstallEmberDir() failed.", L"Calder_CA DeleteInstallEmber, ", 1, 0},
    {"GetInstallUSBMonDir", L"DeleteUSBMONDir", L"Calder_CA GetInstallUSBMonDir() start",
     L"Calder_CA SetInstallUSBMONDir() failed.", L"Calder_CA DeleteUSBMONDir, ", 1, 0},
};

std::wstring SetLine(const std::wstring& prefix, const std::wstring& value) {
    return prefix + value + L" should be set in CustomActionData \n";
}

const std::wstring Folder = L"C:\\Program Files\\Tessel Technologies\\Suite\\";
const std::wstring TooLong(MaxPropertyChars, L'a');    // 260 characters: a failed read
const std::wstring Longest(MaxPropertyChars - 1, L'b'); // 259 characters: still read

// Makes MsiSetPropertyW fail for one property name, for the duration of a test.
class FailingSet {
public:
    explicit FailingSet(const wchar_t* name) {
        failing_ = name;
        SetPropertyThroughEngine = &Set;
    }
    ~FailingSet() { SetPropertyThroughEngine = &MsiSetPropertyW; }

private:
    static UINT WINAPI Set(MSIHANDLE session, LPCWSTR name, LPCWSTR value) {
        return std::wstring(name) == failing_ ? ERROR_FUNCTION_FAILED
                                              : MsiSetPropertyW(session, name, value);
    }
    static inline std::wstring failing_;
};

} // namespace

TEST(StagingFamily, EachSingleTargetActionStagesInstallDirWithItsOwnTextsAndStatus) {
    for (const SingleTarget& action : SingleTargets) {
        SCOPED_TRACE(action.exportName);
        for (const std::wstring& value : {Folder, Longest}) {
            TestSession session;
            session.SetProperty(L"INSTALLDIR", value);
            EXPECT_EQ(action.success, CallExport(action.exportName, session.Handle()));
            EXPECT_EQ(value, session.Property(action.property));
            EXPECT_EQ((Lines{action.startLine, SetLine(action.setLinePrefix, value)}),
                      session.LogLines());
        }
    }
}

TEST(StagingFamily, InstallDirOf260CharactersIsAFailedReadAndSetsNothing) {
    for (const SingleTarget& action : SingleTargets) {
        SCOPED_TRACE(action.exportName);
        TestSession session;
        session.SetProperty(L"INSTALLDIR", TooLong);
        EXPECT_EQ(action.failure, CallExport(action.exportName, session.Handle()));
        EXPECT_EQ(L"", session.Property(action.property));
        EXPECT_EQ((Lines{action.startLine, action.readFailedLine}), session.LogLines());
    }
    TestSession session;
    session.SetProperty(L"INSTALLDIR", TooLong);
    EXPECT_EQ(1603u, CallExport("SetInstallDir", session.Handle()));
    EXPECT_EQ(0u, CallExport("GetInstallProxyDir", session.Handle()));
    for (const wchar_t* property :
         {L"DeleteTKMDir", L"UpdateCfg", L"LaunchInstallProxyExe", L"SetInstallProxyReg"})
        EXPECT_EQ(L"", session.Property(property));
    EXPECT_EQ((Lines{L"Calder_CA SetInstallDir() start",
                     L"Calder_CA SetInstallDir() failed to get Pid from Tessel Property table.",
                     L"Calder_CA GetInstallProxyDir() start",
                     L"Calder_CA SetInstallProxyDir() failed."}),
              session.LogLines());
}

TEST(StagingFamily, AnUnsetInstallDirReadsAsEmptyAndIsStagedAsSuch) {
    TestSession session;
    EXPECT_EQ(1u, CallExport("GetInstallTLDir", session.Handle()));
    EXPECT_EQ((Lines{L"Calder_CA GetInstallTLDir() start",
                     L"Calder_CA DeleteInstallTL,  should be set in CustomActionData \n"}),
              session.LogLines());
}

TEST(SetInstallDir, StagesBothPropertiesInOrder) {
    TestSession session;
    session.SetProperty(L"INSTALLDIR", Folder);
    EXPECT_EQ(0u, CallExport("SetInstallDir", session.Handle()));
    EXPECT_EQ(Folder, session.Property(L"DeleteTKMDir"));
    EXPECT_EQ(Folder, session.Property(L"UpdateCfg"));
    EXPECT_EQ((Lines{L"Calder_CA SetInstallDir() start",
                     L"Calder_CA DeleteTKMDir SetInstallDir(), " + Folder +
                         L" should be set in CustomActionData \n",
                     L"Calder_CA UpdateCfg SetInstallDir(), " + Folder +
                         L" should be set in CustomActionData \n"}),
              session.LogLines());
}

TEST(SetInstallDir, AFailedFirstSetStillTriesTheSecondAndFails) {
    TestSession session;
    session.SetProperty(L"INSTALLDIR", Folder);
    FailingSet failing(L"DeleteTKMDir");
    EXPECT_EQ(1603u, SetInstallDir(session.Handle()));
    EXPECT_EQ(Folder, session.Property(L"UpdateCfg"));
    EXPECT_EQ((Lines{L"Calder_CA SetInstallDir() start",
                     L"Calder_CA DeleteTKMDir SetInstallDir() failed to set Pid in CustomActionData",
                     L"Calder_CA UpdateCfg SetInstallDir(), " + Folder +
                         L" should be set in CustomActionData \n"}),
              session.LogLines());
}

TEST(GetInstallProxyDir, StagesBothPropertiesAndReturnsOne) {
    TestSession session;
    session.SetProperty(L"INSTALLDIR", Folder);
    EXPECT_EQ(1u, CallExport("GetInstallProxyDir", session.Handle()));
    EXPECT_EQ(Folder, session.Property(L"LaunchInstallProxyExe"));
    EXPECT_EQ(Folder, session.Property(L"SetInstallProxyReg"));
    EXPECT_EQ(3u, session.LogLines().size());
}

TEST(GetInstallProxyDir, OnlyTheSecondSetDecidesTheStatus) {
    TestSession session;
    session.SetProperty(L"INSTALLDIR", Folder);
    {
        FailingSet failing(L"LaunchInstallProxyExe");
        EXPECT_EQ(1u, GetInstallProxyDir(session.Handle()));
    }
    EXPECT_EQ(L"Calder_CA LaunchInstallProxyExe failed to set Pid in CustomActionData",
              session.LogLines().at(1));
    session.ClearMessages();
    {
        FailingSet failing(L"SetInstallProxyReg");
        EXPECT_EQ(0u, GetInstallProxyDir(session.Handle()));
    }
    EXPECT_EQ((Lines{L"Calder_CA GetInstallProxyDir() start",
                     L"Calder_CA LaunchInstallProxyExe, " + Folder +
                         L" should be set in CustomActionData \n",
                     L"Calder_CA SetInstallProxyReg failed to set Pid in CustomActionData"}),
              session.LogLines());
}

TEST(SetTkmTesselPid, StagesThePackageIdFromItsOwnTable) {
    TestSession session(InstallProperties{{L"TESSEL_PID", L"{5D1E0B7C-0000-4C2A-9E11-7A6B2C3D4E5F}"}});
    EXPECT_EQ(0u, CallExport("SetTkmTesselPid", session.Handle()));
    EXPECT_EQ(L"{5D1E0B7C-0000-4C2A-9E11-7A6B2C3D4E5F}", session.Property(L"CleanRegistry"));
    EXPECT_EQ((Lines{L"Calder_CA SetTkmTesselPid() start",
                     L"Calder_CA GetFromMSITable(), Reading Property table\n ",
                     L"Calder_CA GetFromMSITable() PackageRead Property Value is "
                     L"{5D1E0B7C-0000-4C2A-9E11-7A6B2C3D4E5F} \n",
                     L"Calder_CA SetTkmTesselPid(), {5D1E0B7C-0000-4C2A-9E11-7A6B2C3D4E5F} "
                     L"should be set in CustomActionData \n"}),
              session.LogLines());
}

TEST(SetTkmTesselPid, MissingRowFailsWithoutSetting) {
    TestSession session;
    EXPECT_EQ(1603u, CallExport("SetTkmTesselPid", session.Handle()));
    EXPECT_EQ(L"", session.Property(L"CleanRegistry"));
    EXPECT_EQ((Lines{L"Calder_CA SetTkmTesselPid() start",
                     L"Calder_CA GetFromMSITable(), Reading Property table\n ",
                     L"Calder_CA SetTkmTesselPid() failed to get Pid from Tessel Property table."}),
              session.LogLines());
}

TEST(SetTkmTesselPid, FailedSetIsLoggedAndFails) {
    TestSession session(InstallProperties{{L"TESSEL_PID", L"7"}});
    FailingSet failing(L"CleanRegistry");
    EXPECT_EQ(1603u, SetTkmTesselPid(session.Handle()));
    EXPECT_EQ(L"Calder_CA SetTkmTesselPid() failed to set Pid in CustomActionData",
              session.LogLines().back());
}

TEST(LaunchedFromTKM, OneInAnyCaseLetsTheInstallGoOnSilently) {
    TestSession session;
    session.SetProperty(L"LAUNCHED_FROM_TKM", L"1");
    EXPECT_EQ(0u, CallExport("LaunchedFromTKM", session.Handle()));
    EXPECT_EQ(Lines{L"CALDER_CA Launched from TKM: 1 \n"}, session.LogLines());
    EXPECT_TRUE(session.UserMessages().empty());
}

TEST(LaunchedFromTKM, AnyOtherValueAbortsWithOneLineAndOneMessage) {
    const std::wstring expected =
        std::wstring(L"This package requires Norvik Installer Setup.\nPlease obtain and install "
                     L"Norvik Installer from") +
        VendorWebAddress +
        L" to continue installing this package.\nThis application will now abort.";
    for (const std::wstring& value : {std::wstring(L"0"), std::wstring(), std::wstring(L" 1"),
                                      std::wstring(L"11"), TooLong}) {
        SCOPED_TRACE(Narrow(value));
        TestSession session;
        if (!value.empty())
            session.SetProperty(L"LAUNCHED_FROM_TKM", value);
        EXPECT_EQ(1612u, CallExport("LaunchedFromTKM", session.Handle()));
        EXPECT_EQ(Lines{L"CALDER_CA Not Launched from TKM and unable to get property"},
                  session.LogLines());
        const std::vector<CapturedMessage> shown = session.UserMessages();
        ASSERT_EQ(1u, shown.size());
        EXPECT_EQ(expected, shown[0].text);
        EXPECT_EQ(0u, shown[0].flags);
    }
}
