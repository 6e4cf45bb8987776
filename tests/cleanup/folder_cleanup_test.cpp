// The folder cleanup actions through the library's export table, on real folders.
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

namespace {

std::wstring DirectoryLine(const std::wstring& path) {
    return L"CALDER_CA RemoveUSBMON Directory: " + path + L" \n";
}

std::wstring AttemptLine(const std::wstring& path) {
    return L"CALDER_CA DeleteDirectory attempting to delete " + path + L" \n";
}

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
        (Lines{DirectoryLine(folder), AttemptLine(folder),
               L"CALDER_CA DeleteDirectory " + folder + L": no errors using SHFileOperation.  \n",
               L"Calder_CA NorvikUSB3DeviceDetector folder deleted\n"}),
        session.LogLines());
}

TEST(RemoveUSBMON, AnEmptyMissingUnreadableOrLockedFolderReturns0AndIsKept) {
    ScratchFolder scratch;
    const std::wstring missing = scratch / L"missing";
    const std::wstring busy = scratch.MakeFolder(L"busy");
    HeldOpen hold(scratch.MakeFile(L"busy\\detector.exe"));
    // Too long for the buffer, though its first 259 characters still name the folder.
    std::wstring tooLong = busy;
    while (tooLong.size() < 300)
        tooLong += L"\\.";
    TestSession session;
    for (const std::wstring& value : {std::wstring(), missing, tooLong, busy}) {
        SCOPED_TRACE(Narrow(value));
        session.ClearMessages();
        session.SetProperty(L"CustomActionData", value);
        EXPECT_EQ(0u, CallExport("RemoveUSBMON", session.Handle()));
        const Lines lines = session.LogLines();
        if (value == tooLong)
            EXPECT_EQ(Lines{L"CALDER_CA Could not get INSTALLDIR  \n"}, lines);
        else if (value == busy)
            EXPECT_EQ(AttemptLine(busy), lines.at(1));
        else
            EXPECT_EQ(Lines{DirectoryLine(value)}, lines);
    }
    ASSERT_EQ(3u, session.LogLines().size());
    EXPECT_EQ(L"CALDER_CA DeleteDirectory " + busy + L" Error: ",
              session.LogLines()[2].substr(0, busy.size() + 34));
    EXPECT_TRUE(PathPresent(busy + L"\\detector.exe"));
}
