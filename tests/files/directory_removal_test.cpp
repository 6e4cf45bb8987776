// The shell deletes: their opposite flags, the dropped closing quote, the log lines and the result
// texts.
#include "files/directory_removal.h"
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

using Lines = std::vector<std::wstring>;

namespace {

std::wstring AttemptLine(const std::wstring& path) {
    return L"CALDER_CA DeleteDirectory attempting to delete " + path + L" \n";
}
std::wstring SuccessLine(const std::wstring& path) {
    return L"CALDER_CA DeleteDirectory " + path + L": no errors using SHFileOperation.  \n";
}
std::wstring FailureLine(const std::wstring& path, const std::wstring& text) {
    return L"CALDER_CA DeleteDirectory " + path + L" Error: " + text + L". \n";
}

std::wstring SystemText(DWORD code) {
    wchar_t text[260] = L"";
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0x400,
                   text, 260, nullptr);
    return text;
}

// Where Wine puts a folder sent to the recycle bin: $XDG_DATA_HOME/Trash/files, which the test
// command makes in the build tree (without that folder Wine deletes outright).
std::wstring InTrash(const std::wstring& name) {
    wchar_t data[MAX_PATH] = L"";
    GetEnvironmentVariableW(L"XDG_DATA_HOME", data, MAX_PATH);
    std::wstring path = L"Z:" + std::wstring(data) + L"/Trash/files/" + name;
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path;
}

} // namespace

TEST(DeleteDirectory, DeletesOutrightDropsOnlyAClosingQuoteAndLogsTheAttemptAndSuccess) {
    ScratchFolder scratch;
    const std::wstring name = UniqueName();
    const std::wstring folder = scratch.MakeFolder(name);
    scratch.MakeFile(name + L"\\sub\\file.txt");
    const std::wstring kept = scratch.MakeFolder(L"kept");
    TestSession session;

    EXPECT_TRUE(DeleteDirectory((folder + L"\"").c_str(), 0));
    EXPECT_FALSE(PathPresent(folder));
    EXPECT_FALSE(PathPresent(InTrash(name)));
    EXPECT_EQ((Lines{AttemptLine(folder), SuccessLine(folder)}), session.LogLines());

    session.ClearMessages();
    EXPECT_FALSE(DeleteDirectory((kept + L"\"\"").c_str(), 0));
    EXPECT_TRUE(PathPresent(kept));
    ASSERT_EQ(2u, session.LogLines().size());
    EXPECT_EQ(AttemptLine(kept + L"\""), session.LogLines()[0]);

    session.ClearMessages();
    EXPECT_FALSE(DeleteDirectory(nullptr, 0));
    EXPECT_EQ(Lines{}, session.LogLines());
}

TEST(DeleteDirectory, AFailureIsToldInWordsFromTheShellsTableOrTheSystem) {
    ScratchFolder scratch;
    TestSession session;
    // Wine's shell answers 2 for a missing folder in an existing parent, 124 when the parent is
    // missing too.
    const std::wstring missing = scratch / L"missing";
    const std::wstring orphan = scratch / L"missing\\deeper";
    EXPECT_FALSE(DeleteDirectory(missing.c_str(), 0));
    EXPECT_FALSE(DeleteDirectory(orphan.c_str(), 0));
    EXPECT_EQ((Lines{AttemptLine(missing), FailureLine(missing, L"File not found.\r\n"),
                     AttemptLine(orphan),
                     FailureLine(orphan, L"The paths in the source or destination were invalid")}),
              session.LogLines());

    EXPECT_EQ(L"MAX_PATH was exceeded during the operation.", ShellResultText(0x10074));
    EXPECT_EQ(L"MAX_PATH was exceeded during the operation.", ShellResultText(183));
    EXPECT_EQ(L"An unspecified error occurred on the destination.", ShellResultText(0x10000));
    EXPECT_NE(std::wstring::npos, ShellResultText(115).find(L"directory.  Use move instead."));
    EXPECT_EQ(SystemText(119), ShellResultText(119)); // a gap in the shell's range
    EXPECT_EQ(SystemText(32), ShellResultText(32));
    EXPECT_EQ(L"", ShellResultText(0x10001)); // no row and no system text
}

TEST(DeleteFolderShell, ItsFlagRunsOppositeToDeleteDirectorysAndItLogsNothing) {
    ScratchFolder scratch;
    TestSession session;
    const std::wstring recycled = UniqueName();
    const std::wstring permanent = UniqueName();
    const std::wstring undone = UniqueName();
    for (const std::wstring& name : {recycled, permanent, undone})
        scratch.MakeFile(name + L"\\inside.txt");

    EXPECT_TRUE(DeleteFolderShell((scratch / recycled).c_str(), 0));
    EXPECT_TRUE(DeleteFolderShell((scratch / permanent).c_str(), 1));
    EXPECT_TRUE(DeleteDirectory((scratch / undone).c_str(), 1));
    EXPECT_FALSE(DeleteFolderShell((scratch / L"missing").c_str(), 1));
    for (const std::wstring& name : {recycled, permanent, undone})
        EXPECT_FALSE(PathPresent(scratch / name));
    EXPECT_TRUE(PathPresent(InTrash(recycled) + L"\\inside.txt"));
    EXPECT_FALSE(PathPresent(InTrash(permanent)));
    EXPECT_TRUE(PathPresent(InTrash(undone) + L"\\inside.txt"));
    EXPECT_EQ(2u, session.LogLines().size()) << "only DeleteDirectory logs";
}
