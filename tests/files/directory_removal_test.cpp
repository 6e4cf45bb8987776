// The shell deletes: their opposite flags, the dropped closing quote, the log lines and the result
// texts.
#include "files/directory_removal.h"
#include "frame/action_frame.h"
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>

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

// The recycle bin of this test run. Wine moves an undoable delete into $XDG_DATA_HOME/Trash
// (by default the user's home) when that folder exists, and deletes outright when it does not;
// the test command points XDG_DATA_HOME into the build tree so that nothing reaches the home.
class TestRunTrash {
  public:
    TestRunTrash() {
        wchar_t data[MAX_PATH] = L"";
        if (GetEnvironmentVariableW(L"XDG_DATA_HOME", data, MAX_PATH) == 0)
            return;
        folder_ = std::wstring(L"Z:") + data + L"/Trash";
        for (wchar_t& character : folder_)
            if (character == L'/')
                character = L'\\';
        std::filesystem::create_directories(std::filesystem::path(folder_));
    }
    bool Ready() const { return !folder_.empty(); }
    // Where a folder of this name lands; removed with its record afterwards.
    std::wstring Holding(const std::wstring& name) {
        names_.push_back(name);
        return folder_ + L"\\files\\" + name;
    }
    ~TestRunTrash() {
        std::error_code ignored;
        for (const std::wstring& name : names_) {
            std::filesystem::remove_all(folder_ + L"\\files\\" + name, ignored);
            std::filesystem::remove(folder_ + L"\\info\\" + name + L".trashinfo", ignored);
        }
    }

  private:
    std::wstring folder_;
    std::vector<std::wstring> names_;
};

// A session whose log the library's helpers write to through SessionHandle.
struct LoggedSession {
    TestSession session;
    LoggedSession() { SessionHandle = session.Handle(); }
};

} // namespace

TEST(DeleteDirectory, DeletesTheFolderOutrightAndLogsTheAttemptAndSuccess) {
    ScratchFolder scratch;
    TestRunTrash trash;
    ASSERT_TRUE(trash.Ready()) << "XDG_DATA_HOME must point into the build tree (scripts/test.sh)";
    const std::wstring name = UniqueName();
    const std::wstring folder = scratch.MakeFolder(name);
    scratch.MakeFile(name + L"\\sub\\file.txt");
    LoggedSession logged;

    EXPECT_TRUE(DeleteDirectory(folder.c_str(), 0));
    EXPECT_FALSE(PathPresent(folder));
    EXPECT_FALSE(PathPresent(trash.Holding(name)));
    EXPECT_EQ((Lines{AttemptLine(folder), SuccessLine(folder)}), logged.session.LogLines());
}

TEST(DeleteDirectory, DropsOnlyAClosingQuote) {
    ScratchFolder scratch;
    const std::wstring folder = scratch.MakeFolder(L"quoted");
    LoggedSession logged;

    EXPECT_TRUE(DeleteDirectory((folder + L"\"").c_str(), 0));
    EXPECT_FALSE(PathPresent(folder));
    EXPECT_EQ((Lines{AttemptLine(folder), SuccessLine(folder)}), logged.session.LogLines());

    const std::wstring kept = scratch.MakeFolder(L"kept");
    logged.session.ClearMessages();
    EXPECT_FALSE(DeleteDirectory((kept + L"\"\"").c_str(), 0));
    EXPECT_TRUE(PathPresent(kept));
    ASSERT_EQ(2u, logged.session.LogLines().size());
    EXPECT_EQ(AttemptLine(kept + L"\""), logged.session.LogLines()[0]);
}

TEST(DeleteDirectory, ANullPathIsFalseWithNothingLogged) {
    LoggedSession logged;
    EXPECT_FALSE(DeleteDirectory(nullptr, 0));
    EXPECT_EQ(Lines{}, logged.session.LogLines());
}

TEST(DeleteDirectory, AMissingFolderIsToldInWordsFromTheSystemOrTheTable) {
    ScratchFolder scratch;
    LoggedSession logged;

    // Wine's shell answers 2 for a missing folder in an existing parent: no row, system text.
    const std::wstring missing = scratch / L"missing";
    EXPECT_FALSE(DeleteDirectory(missing.c_str(), 0));
    EXPECT_EQ((Lines{AttemptLine(missing), FailureLine(missing, SystemText(2))}),
              logged.session.LogLines());
    EXPECT_EQ(L"File not found.\r\n", SystemText(2));

    // And 124 when the parent is missing too: the table's words.
    logged.session.ClearMessages();
    const std::wstring orphan = scratch / L"missing\\deeper";
    EXPECT_FALSE(DeleteDirectory(orphan.c_str(), 0));
    EXPECT_EQ((Lines{AttemptLine(orphan),
                     FailureLine(orphan, L"The paths in the source or destination were invalid")}),
              logged.session.LogLines());
}

TEST(ShellResultText, KnownResultsHaveTheirOwnWordsTheRestTheSystemsText) {
    EXPECT_EQ(L"MAX_PATH was exceeded during the operation.", ShellResultText(0x10074));
    EXPECT_EQ(L"MAX_PATH was exceeded during the operation.", ShellResultText(183));
    EXPECT_EQ(L"An unspecified error occurred on the destination.", ShellResultText(0x10000));
    EXPECT_NE(std::wstring::npos, ShellResultText(115).find(L"directory.  Use move instead."));
    EXPECT_EQ(SystemText(119), ShellResultText(119)); // a gap in the shell's range
    EXPECT_EQ(SystemText(32), ShellResultText(32));
    EXPECT_EQ(L"", ShellResultText(0x10001)); // no row and no system text
}

TEST(DeleteFolderShell, ItsFlagRunsOppositeToDeleteDirectorys) {
    ScratchFolder scratch;
    TestRunTrash trash;
    ASSERT_TRUE(trash.Ready()) << "XDG_DATA_HOME must point into the build tree (scripts/test.sh)";
    LoggedSession logged;

    const std::wstring recycled = UniqueName();
    scratch.MakeFile(recycled + L"\\inside.txt");
    EXPECT_TRUE(DeleteFolderShell((scratch / recycled).c_str(), 0));
    EXPECT_FALSE(PathPresent(scratch / recycled));
    EXPECT_TRUE(PathPresent(trash.Holding(recycled) + L"\\inside.txt"));

    const std::wstring permanent = UniqueName();
    scratch.MakeFile(permanent + L"\\inside.txt");
    EXPECT_TRUE(DeleteFolderShell((scratch / permanent).c_str(), 1));
    EXPECT_FALSE(PathPresent(scratch / permanent));
    EXPECT_FALSE(PathPresent(trash.Holding(permanent)));

    const std::wstring undone = UniqueName();
    scratch.MakeFile(undone + L"\\inside.txt");
    EXPECT_TRUE(DeleteDirectory((scratch / undone).c_str(), 1));
    EXPECT_TRUE(PathPresent(trash.Holding(undone) + L"\\inside.txt"));

    EXPECT_FALSE(DeleteFolderShell((scratch / L"missing").c_str(), 1));
    EXPECT_EQ(2u, logged.session.LogLines().size()) << "only DeleteDirectory logs";
}
