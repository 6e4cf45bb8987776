// The suite's locations read from Wine's registry: the 64-bit twins, both views, buffer limits.
#include "frame/locations.h"
#include "harness/registry_fixture.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

namespace {

const std::wstring InstallKey = L"SOFTWARE\\Tessel Technologies\\Install";

// The suite's keys, absent from both views while a test starts and after it ends.
struct SuiteKeys {
    SuiteKeys() { Remove(); }
    ~SuiteKeys() { Remove(); }
    static void Remove() {
        for (View view : {View::Bit64, View::Bit32})
            for (const wchar_t* tree : {L"SOFTWARE\\Tessel Technologies", L"SOFTWARE\\Tessel"})
                RemoveTree(view, tree);
    }
};

std::wstring Read(SuiteLocation location) {
    std::wstring value = L"untouched";
    ReadSuiteLocation(location, value);
    return value;
}

} // namespace

TEST(SuiteLocations, A64BitSystemReadsTheTwinAndBothViewsOfIt) {
    SuiteKeys keys;
    PutText(View::Native, InstallKey + L"\\Q7", L"InstallDir", L"C:\\Q7 of a 32-bit system");
    EXPECT_EQ(L"untouched", Read(SuiteLocation::PowerSavingFolder));
    PutText(View::Native, L"SOFTWARE\\Wow6432Node\\Tessel Technologies\\Install\\Q764",
            L"InstallDir", L"C:\\Q764");
    EXPECT_EQ(L"C:\\Q764", Read(SuiteLocation::PowerSavingFolder));

    // Without a twin the path is the same on both systems, read from either view.
    EXPECT_EQ(SuiteLocationPath(SuiteLocation::RexionFolder, false),
              SuiteLocationPath(SuiteLocation::RexionFolder));
    PutText(View::Bit32, InstallKey + L"\\Rexion", L"Location", L"C:\\Rexion\\");
    EXPECT_EQ(L"C:\\Rexion\\", Read(SuiteLocation::RexionFolder));
    EXPECT_EQ(L"untouched", Read(SuiteLocation::DvrFolder));
}

TEST(InstallFolderLookups, FixedBuffersLimitTheFolderTo129Or259Characters) {
    TestSession session;
    SuiteKeys keys;
    std::wstring folder = L"untouched";
    EXPECT_FALSE(GetINSTFolder(folder));
    EXPECT_FALSE(GetTkmInstallDir(folder));
    EXPECT_EQ(L"", GetInstallDirOrEmpty());
    EXPECT_EQ(L"untouched", folder);
    EXPECT_TRUE(session.LogLines().empty());

    const std::wstring fits = L"C:\\" + std::wstring(126, L'f'); // 129 characters
    const std::wstring over = fits + L"o";
    const std::wstring keyLine =
        L"CALDER_CA Inside GetINSTFolder is, SOFTWARE\\Tessel Technologies\\Install\\ \n";
    PutText(View::Native, InstallKey, L"InstallDir", fits);
    PutText(View::Native, InstallKey, L"TKMInstallDir", over);
    EXPECT_TRUE(GetINSTFolder(folder));
    EXPECT_FALSE(GetTkmInstallDir(folder));
    EXPECT_EQ(fits, folder);
    EXPECT_EQ((Lines{keyLine, L"CALDER_CA Inside GetINSTFolder2 is, " + fits + L" \n"}),
              session.LogLines());

    session.ClearMessages();
    folder = L"untouched";
    PutText(View::Native, InstallKey, L"InstallDir", over);
    PutText(View::Native, InstallKey, L"TKMInstallDir", fits);
    EXPECT_FALSE(GetINSTFolder(folder));
    EXPECT_TRUE(GetTkmInstallDir(folder));
    EXPECT_EQ(fits, folder);
    EXPECT_EQ(Lines{keyLine}, session.LogLines());
    EXPECT_EQ(over, GetInstallDirOrEmpty());
    const std::wstring longest = L"C:\\" + std::wstring(256, L'l'); // 259 characters
    PutText(View::Native, InstallKey, L"InstallDir", longest);
    EXPECT_EQ(longest, GetInstallDirOrEmpty());
    PutText(View::Native, InstallKey, L"InstallDir", longest + L"x");
    EXPECT_EQ(L"", GetInstallDirOrEmpty());
}
