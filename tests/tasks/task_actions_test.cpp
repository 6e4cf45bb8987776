// The task actions: the exact schtasks command lines they run, read back through the launcher,
// with the registry and files of Wine as the actions find them.
#include "tasks/task_actions.h"

#include "harness/launch_recorder.h"
#include "harness/registry_fixture.h"
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace {

// A command line and whether its end is waited for.
using Command = std::pair<std::wstring, bool>;
using Commands = std::vector<Command>;
using Action = UINT(__stdcall*)(MSIHANDLE);

// What the actions asked the launcher to run: hidden commands, each with its wait flag.
Commands Ran(const LaunchRecorder& recorder) {
    Commands ran;
    for (const LaunchRequest& request : recorder.Requests())
        ran.push_back(
            {request.kind == LaunchKind::Command ? request.commandLine : L"(not a hidden command)",
             request.wait});
    return ran;
}

// Registering a task from its definition, waited for, then setting its program, in the background.
Commands Registered(const std::wstring& task, const std::wstring& definition,
                    const std::wstring& program, const std::wstring& argument) {
    return {{L"schtasks /Create /TN \"" + task + L"\" /XML \"" + definition + L"\"", true},
            {L"schtasks /change /TN \"" + task + L"\" /TR \"\\\"" + program + L"\\\" " + argument +
                 L"\"",
             false}};
}

const std::wstring RexionKey = L"SOFTWARE\\Tessel Technologies\\Install\\Rexion";
const std::wstring RunKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
const std::wstring RexKey = L"SOFTWARE\\Norvik\\Rex";

// The settings application's folder as recorded, or none in either view.
void RecordSettingsFolder(const std::optional<std::wstring>& folder) {
    RemoveTree(View::Native, RexionKey);
    RemoveTree(View::Bit32, RexionKey);
    if (folder)
        PutText(View::Native, RexionKey, L"Location", *folder);
}

} // namespace

TEST(LogonTasks, RemoveTheRunValueRegisterTheDefinitionAndSetTheProgram) {
    const std::wstring folder = L"C:\\Program Files\\Rex Settings";
    const std::wstring longFolder = L"C:\\" + std::wstring(230, L'r');
    struct Case {
        Action action;
        const wchar_t* task;
        std::optional<std::wstring> folder;
        UINT status;
        Commands commands; // each runs cut to the 259 characters its buffer holds
    };
    const Case cases[] = {
        {&CreateLogonSchTask, L"StartRex", folder, 0,
         Registered(L"StartRex", folder + L"\\StartRex.xml", folder + L"\\rexcmd.exe",
                    L"startwithdelay")},
        {&CreateDVRLogonSchTask, L"StartDVR", folder, 0,
         Registered(L"StartDVR", folder + L"\\StartDVR.xml", folder + L"\\HSServCmd.exe", L"")},
        {&CreateLogonSchTask, L"StartRex", folder + L"\\", 0,
         Registered(L"StartRex", folder + L"\\StartRex.xml", folder + L"\\\\rexcmd.exe",
                    L"startwithdelay")},
        {&CreateLogonSchTask, L"StartRex", longFolder, 0,
         Registered(L"StartRex", longFolder + L"\\StartRex.xml", longFolder + L"\\rexcmd.exe",
                    L"startwithdelay")},
        {&CreateLogonSchTask, L"StartRex", std::nullopt, 1603, {}},
        {&CreateDVRLogonSchTask, L"StartDVR", std::nullopt, 1603, {}},
    };
    for (Case each : cases) {
        SCOPED_TRACE(Narrow(each.task) + " in " + Narrow(each.folder.value_or(L"no folder")));
        RecordSettingsFolder(each.folder);
        PutText(View::Native, RunKey, each.task, L"old start");
        LaunchRecorder run;
        EXPECT_EQ(each.status, each.action(0));
        for (Command& command : each.commands)
            command.first.resize(std::min<size_t>(command.first.size(), 259));
        EXPECT_EQ(each.commands, Ran(run));
        EXPECT_FALSE(ValueAt(View::Native, RunKey, each.task));
    }
    RecordSettingsFolder(std::nullopt);
}

TEST(BenchmarkTask, IsMadeFromARewrittenCopyUnlessTheBenchmarkRanOrItsDefinitionIsMissing) {
    ScratchFolder settings;
    RecordSettingsFolder(settings.Path());
    wchar_t temp[MAX_PATH];
    const std::wstring copy = std::wstring(temp, GetTempPathW(MAX_PATH, temp)) + L"StartRexBM.xml";
    const Commands made = Registered(L"StartRexBM", copy, settings / L"rexcmd.exe", L"benchmark");
    {
        LaunchRecorder run;
        EXPECT_EQ(0u, CreateBenchMarkRunOnceSchTask(0));
        EXPECT_EQ(Commands{}, Ran(run)) << "no definition in the folder";
    }
    settings.MakeFile(L"StartRexBM.xml", std::string("\xFF\xFE<\0T\0/\0>\0", 10));
    for (const wchar_t* ran : {L"", L"0", L"1 ", L"1"}) {
        SCOPED_TRACE(Narrow(ran));
        DeleteFileW(copy.c_str());
        if (*ran != L'\0')
            PutText(View::Native, RexKey, L"GiBenchmark", ran, HKEY_CURRENT_USER);
        LaunchRecorder run;
        EXPECT_EQ(0u, CreateBenchMarkRunOnceSchTask(0));
        const bool make = std::wstring(ran) != L"1";
        EXPECT_EQ(make ? made : Commands{}, Ran(run));
        EXPECT_EQ(make, PathPresent(copy));
    }
    RemoveTree(View::Native, RexKey, HKEY_CURRENT_USER);
    DeleteFileW(copy.c_str());
    RecordSettingsFolder(std::nullopt);
}

// A fresh Wine prefix reports Windows 7, where LaunchRex runs nothing.
TEST(FixedCommands, EachRunsItsCommandAndGivesItsStatus) {
    const struct {
        Action action;
        const wchar_t* line;
        UINT started, notStarted;
    } cases[] = {
        {&RemoveRexSchedularTask, L"schtasks /delete /TN \"StartRex\" /F", 1, 0},
        {&RemoveDVRSchedularTask, L"schtasks /delete /TN \"StartDVR\" /F", 1, 0},
        {&RemoveBenchMarkRunOnceSchedularTask, L"schtasks /delete /TN \"StartRexBM\" /F", 1, 0},
        {&RemoveSchedularTask, L"schtasks /delete /TN \"Norvik Updater\" /F", 1, 0},
        {&LaunchRex, nullptr, 1, 1},
    };
    for (const auto& each : cases)
        for (bool starts : {true, false}) {
            LaunchRecorder run(starts);
            EXPECT_EQ(starts ? each.started : each.notStarted, each.action(0));
            EXPECT_EQ((each.line ? Commands{{each.line, true}} : Commands{}), Ran(run));
        }
}

TEST(BrandingTask, DeletesTheLogonTaskOnlyForALazyStartOfOne) {
    RemoveTree(View::Native, RexKey);
    const std::optional<DWORD> values[] = {std::nullopt, 1, 0, 2};
    for (const std::optional<DWORD>& lazyStart : values) {
        SCOPED_TRACE(lazyStart ? std::to_string(*lazyStart) : "no key");
        if (lazyStart)
            PutValue(View::Native, RexKey, L"LazeStart", REG_DWORD, &*lazyStart, 4);
        LaunchRecorder run;
        EXPECT_EQ(0u, DeleteSchedTaskonBranding(0));
        const Commands deleted = {{L"schtasks /delete /TN \"StartRex\" /F", true}};
        EXPECT_EQ(lazyStart == 1u ? deleted : Commands{}, Ran(run));
    }
    RemoveTree(View::Native, RexKey);
}

TEST(TaskActions, AreExportedUnderTheirExactNames) {
    for (const char* name : {"CreateLogonSchTask", "CreateDVRLogonSchTask",
                             "CreateBenchMarkRunOnceSchTask", "LaunchRex", "RemoveRexSchedularTask",
                             "RemoveDVRSchedularTask", "RemoveBenchMarkRunOnceSchedularTask",
                             "RemoveSchedularTask", "DeleteSchedTaskonBranding"})
        EXPECT_TRUE(HasExport(name)) << name;
}
