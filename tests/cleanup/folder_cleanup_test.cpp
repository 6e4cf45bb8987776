// The folder cleanup actions through the library's export table, on real folders.
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

namespace {

std::wstring DirectoryLine(const std::wstring& path) {
    return L"CALDER_CA RemoveUSBMON Directory: " + path + L" \n";
}

const wchar_t* const DeletedLine = L"Calder_CA NorvikUSB3DeviceDetector folder deleted\n";

} // namespace

TEST(RemoveUSBMON, DeletesTheFolderFromCustomActionDataAndReturns1) {
    ScratchFolder scratch;
    const std::wstring folder = scratch.MakeFolder(L"NorvikUSB3DeviceDetector");
    scratch.MakeFile(L"NorvikUSB3DeviceDetector\\bin\\detector.exe");
    TestSession session;
    session.SetProperty(L"CustomActionData", folder);

    EXPECT_EQ(1u, CallExport("RemoveUSBMON", session.Handle()));
    EXPECT_FALSE(PathPresent(folder));
    EXPECT_EQ(
        (Lines{DirectoryLine(folder),
               L"CALDER_CA DeleteDirectory attempting to delete " + folder + L" \n",
               L"CALDER_CA DeleteDirectory " + folder + L": no errors using SHFileOperation.  \n",
               DeletedLine}),
        session.LogLines());
}

TEST(RemoveUSBMON, AnEmptyOrMissingFolderReturns0AndDeletesNothing) {
    ScratchFolder scratch;
    TestSession session;
    EXPECT_EQ(0u, CallExport("RemoveUSBMON", session.Handle()));
    EXPECT_EQ(Lines{DirectoryLine(L"")}, session.LogLines());

    session.ClearMessages();
    const std::wstring missing = scratch / L"missing";
    session.SetProperty(L"CustomActionData", missing);
    EXPECT_EQ(0u, CallExport("RemoveUSBMON", session.Handle()));
    EXPECT_EQ(Lines{DirectoryLine(missing)}, session.LogLines());
}

TEST(RemoveUSBMON, AFailedReadIsAnEmptyFolderNotTheTruncatedText) {
    ScratchFolder scratch;
    const std::wstring folder = scratch.MakeFolder(L"kept");
    // A value too long for the buffer, whose first 259 characters still name the folder.
    std::wstring value = folder;
    while (value.size() < 300)
        value += L"\\.";
    TestSession session;
    session.SetProperty(L"CustomActionData", value);

    EXPECT_EQ(0u, CallExport("RemoveUSBMON", session.Handle()));
    EXPECT_TRUE(PathPresent(folder));
    EXPECT_EQ(Lines{L"CALDER_CA Could not get INSTALLDIR  \n"}, session.LogLines());
}

TEST(RemoveUSBMON, AFolderTheShellCannotDeleteReturns0) {
    ScratchFolder scratch;
    const std::wstring folder = scratch.MakeFolder(L"busy");
    const std::wstring locked = scratch.MakeFile(L"busy\\detector.exe");
    HANDLE hold = CreateFileW(locked.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr);
    TestSession session;
    session.SetProperty(L"CustomActionData", folder);

    EXPECT_EQ(0u, CallExport("RemoveUSBMON", session.Handle()));
    CloseHandle(hold);
    const Lines lines = session.LogLines();
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ(L"CALDER_CA DeleteDirectory " + folder + L" Error: ",
              lines[2].substr(0, folder.size() + 34));
}
