// The task actions: the exact schtasks command lines they run, read back through the launcher,
// with the registry and files of Wine as the actions find them.
#include "tasks/task_actions.h"

#include "harness/launch_recorder.h"
#include "harness/registry_fixture.h"
#include "harness/test_session.h"
#include "tasks/task_definition.h"

#include <shellapi.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Command {
    std::wstring line;
    bool wait;
    bool operator==(const Command& other) const { return line == other.line && wait == other.wait; }
};
using Commands = std::vector<Command>;

void PrintTo(const Command& command, std::ostream* out) {
    *out << (command.wait ? "wait " : "nowait ") << Narrow(command.line);
}

// What the actions asked the launcher to run: hidden commands, each with its wait flag.
Commands Ran(const LaunchRecorder& recorder) {
    Commands ran;
    for (const LaunchRequest& request : recorder.Requests())
        ran.push_back(
            {request.kind == LaunchKind::Command ? request.commandLine : L"(not a hidden command)",
             request.wait});
    return ran;
}

// The arguments a program receives from a command line, split as the platform's runtime does.
std::vector<std::wstring> Arguments(const std::wstring& commandLine) {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(commandLine.c_str(), &count);
    std::vector<std::wstring> split(arguments, arguments + count);
    LocalFree(arguments);
    return split;
}

const std::wstring RexionKey = L"SOFTWARE\\Tessel Technologies\\Install\\Rexion";
const std::wstring RunKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
const std::wstring BrandingKey = L"SOFTWARE\\Norvik\\Rex";
const std::wstring SettingsFolder = L"C:\\Program Files\\Rex Settings";

// The settings application's folder recorded for the test, removed afterwards.
class SettingsLocation {
public:
    explicit SettingsLocation(const std::wstring& folder) {
        PutText(View::Native, RexionKey, L"Location", folder);
    }
    ~SettingsLocation() { RemoveTree(View::Native, RexionKey); }
};

bool RunValueExists(const std::wstring& name) {
    return ValueAt(View::Native, RunKey, name).has_value();
}

std::wstring TempFolder() {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    return folder;
}

} // namespace

TEST(LogonTasks, EachRemovesItsRunValueRegistersItsDefinitionAndSetsItsProgram) {
    struct Expected {
        UINT(__stdcall* action)(MSIHANDLE);
        const wchar_t* name;
        Commands commands;
    };
    const Expected actions[] = {
        {&CreateLogonSchTask,
         L"StartRex",
         {{L"schtasks /Create /TN \"StartRex\" /XML \"" + SettingsFolder + L"\\StartRex.xml\"",
           true},
          {L"schtasks /change /TN \"StartRex\" /TR \"\\\"" + SettingsFolder +
               L"\\rexcmd.exe\\\" startwithdelay\"",
           false}}},
        {&CreateDVRLogonSchTask,
         L"StartDVR",
         {{L"schtasks /Create /TN \"StartDVR\" /XML \"" + SettingsFolder + L"\\StartDVR.xml\"",
           true},
          {L"schtasks /change /TN \"StartDVR\" /TR \"\\\"" + SettingsFolder +
               L"\\HSServCmd.exe\\\" \"",
           false}}},
    };
    SettingsLocation location(SettingsFolder);
    for (const Expected& expected : actions) {
        SCOPED_TRACE(Narrow(expected.name));
        PutText(View::Native, RunKey, expected.name, L"old start");
        LaunchRecorder run;
        EXPECT_EQ(0u, expected.action(0));
        EXPECT_EQ(expected.commands, Ran(run));
        EXPECT_FALSE(RunValueExists(expected.name));
    }
}

TEST(LogonTasks, BlanksInTheFolderKeepTheDefinitionAndTheProgramOneArgumentEach) {
    SettingsLocation location(SettingsFolder + L"\\");
    LaunchRecorder run;
    CreateLogonSchTask(0);
    ASSERT_EQ(2u, Ran(run).size());
    EXPECT_EQ((std::vector<std::wstring>{L"schtasks", L"/Create", L"/TN", L"StartRex", L"/XML",
                                         SettingsFolder + L"\\StartRex.xml"}),
              Arguments(Ran(run)[0].line));
    // The program is always joined with a backslash, even to a folder that ends in one.
    EXPECT_EQ(
        (std::vector<std::wstring>{L"schtasks", L"/change", L"/TN", L"StartRex", L"/TR",
                                   L"\"" + SettingsFolder + L"\\\\rexcmd.exe\" startwithdelay"}),
        Arguments(Ran(run)[1].line));
}

TEST(LogonTasks, WithoutTheFolderFailWithNothingRunButTheirRunValueIsGone) {
    RemoveTree(View::Native, RexionKey);
    RemoveTree(View::Bit32, RexionKey);
    const std::pair<UINT(__stdcall*)(MSIHANDLE), const wchar_t*> actions[] = {
        {&CreateLogonSchTask, L"StartRex"}, {&CreateDVRLogonSchTask, L"StartDVR"}};
    for (const auto& [action, name] : actions) {
        PutText(View::Native, RunKey, name, L"old start");
        LaunchRecorder run;
        EXPECT_EQ(1603u, action(0));
        EXPECT_TRUE(Ran(run).empty());
        EXPECT_FALSE(RunValueExists(name));
    }
}

TEST(LogonTasks, ACommandBeyondTheBufferRunsCutTo259Characters) {
    const std::wstring folder = L"C:\\" + std::wstring(230, L'r');
    SettingsLocation location(folder);
    LaunchRecorder run;
    EXPECT_EQ(0u, CreateLogonSchTask(0));
    ASSERT_EQ(2u, Ran(run).size());
    const std::wstring whole =
        L"schtasks /Create /TN \"StartRex\" /XML \"" + folder + L"\\StartRex.xml\"";
    EXPECT_EQ(whole.substr(0, TaskCommandChars - 1), Ran(run)[0].line);
    EXPECT_EQ(TaskCommandChars - 1, Ran(run)[1].line.size());
}

TEST(BenchmarkTask, IsMadeFromARewrittenCopyUnlessTheBenchmarkRanOrItsDefinitionIsMissing) {
    const std::wstring settings = TempFolder() + L"Rex Benchmark";
    CreateDirectoryW(settings.c_str(), nullptr);
    const std::wstring definition = settings + L"\\StartRexBM.xml";
    const std::wstring copy = TempFolder() + L"StartRexBM.xml";
    const std::wstring benchmark = L"SOFTWARE\\Norvik\\Rex";
    SettingsLocation location(settings);
    const Commands expected = {
        {L"schtasks /Create /TN \"StartRexBM\" /XML \"" + copy + L"\"", true},
        {L"schtasks /change /TN \"StartRexBM\" /TR \"\\\"" + settings +
             L"\\rexcmd.exe\\\" benchmark\"",
         false}};

    {
        LaunchRecorder run;
        EXPECT_EQ(0u, CreateBenchMarkRunOnceSchTask(0));
        EXPECT_TRUE(Ran(run).empty()) << "no definition in the folder";
    }
    const std::wstring text =
        L"\xFEFF<Task><StartBoundary>2010-01-01T00:00:00</StartBoundary></Task>";
    HANDLE file =
        CreateFileW(definition.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size() * 2), &written, nullptr);
    CloseHandle(file);
    for (const wchar_t* ran : {L"", L"0", L"1 ", L"1"}) {
        SCOPED_TRACE(Narrow(ran));
        DeleteFileW(copy.c_str());
        if (*ran != L'\0')
            PutText(View::Native, benchmark, L"GiBenchmark", ran, HKEY_CURRENT_USER);
        LaunchRecorder run;
        EXPECT_EQ(0u, CreateBenchMarkRunOnceSchTask(0));
        const bool made = std::wstring(ran) != L"1";
        EXPECT_EQ(made ? expected : Commands{}, Ran(run));
        EXPECT_EQ(made, GetFileAttributesW(copy.c_str()) != INVALID_FILE_ATTRIBUTES);
    }
    RemoveTree(View::Native, benchmark, HKEY_CURRENT_USER);
    DeleteFileW(copy.c_str());
    DeleteFileW(definition.c_str());
    RemoveDirectoryW(settings.c_str());
}

TEST(RemoveTasks, EachDeletesItsTaskAndGivesWhetherSchtasksStarted) {
    const std::pair<UINT(__stdcall*)(MSIHANDLE), std::wstring> actions[] = {
        {&RemoveRexSchedularTask, L"schtasks /delete /TN \"StartRex\" /F"},
        {&RemoveDVRSchedularTask, L"schtasks /delete /TN \"StartDVR\" /F"},
        {&RemoveBenchMarkRunOnceSchedularTask, L"schtasks /delete /TN \"StartRexBM\" /F"},
        {&RemoveSchedularTask, L"schtasks /delete /TN \"Norvik Updater\" /F"},
    };
    for (const auto& [action, line] : actions) {
        for (bool starts : {true, false}) {
            LaunchRecorder run(starts);
            EXPECT_EQ(starts ? 1u : 0u, action(0));
            EXPECT_EQ((Commands{{line, true}}), Ran(run));
        }
    }
}

TEST(BrandingTask, DeletesTheLogonTaskOnlyForALazyStartOfOne) {
    const Commands deleted = {{L"schtasks /delete /TN \"StartRex\" /F", true}};
    RemoveTree(View::Native, BrandingKey);
    RemoveTree(View::Bit32, BrandingKey);
    struct Case {
        const char* what;
        bool write;
        DWORD type;
        DWORD value;
        Commands expected;
    };
    const Case cases[] = {
        {"no key", false, REG_DWORD, 0, {}},
        {"LazeStart 1", true, REG_DWORD, 1, deleted},
        {"LazeStart 0", true, REG_DWORD, 0, {}},
        {"LazeStart 2", true, REG_DWORD, 2, {}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        if (each.write)
            PutValue(View::Native, BrandingKey, L"LazeStart", each.type, &each.value, 4);
        LaunchRecorder run;
        EXPECT_EQ(0u, DeleteSchedTaskonBranding(0));
        EXPECT_EQ(each.expected, Ran(run));
    }
    RemoveTree(View::Native, BrandingKey);
}

// A fresh Wine prefix reports Windows 7, where the task is not run.
TEST(LaunchRex, RunsNothingOnWindows7AndGivesOne) {
    LaunchRecorder run;
    EXPECT_EQ(1u, LaunchRex(0));
    EXPECT_TRUE(Ran(run).empty());
}

TEST(TaskActions, AreExportedUnderTheirExactNames) {
    for (const char* name : {"CreateLogonSchTask", "CreateDVRLogonSchTask",
                             "CreateBenchMarkRunOnceSchTask", "LaunchRex", "RemoveRexSchedularTask",
                             "RemoveDVRSchedularTask", "RemoveBenchMarkRunOnceSchedularTask",
                             "RemoveSchedularTask", "DeleteSchedTaskonBranding"})
        EXPECT_TRUE(HasExport(name)) << name;
}
