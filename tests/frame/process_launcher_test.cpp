// The process launcher on real processes: a probe program records its command line and exits with a
// chosen code.
#include "frame/process_launcher.h"
#include "harness/launch_recorder.h"
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <sddl.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using Lines = std::vector<std::wstring>;

namespace {

const std::wstring ProbeProgram = BesideTestProgram(L"launch_probe.exe");
const wchar_t* const MissingProgram = L"C:\\calder-missing\\missing.exe";

// A run of the probe: it records its command line in `record` once `wait` allows, then exits.
struct Probe {
    Probe(const ScratchFolder& scratch, int exitCode = 0, const std::wstring& wait = L"")
        : record(scratch / UniqueName()),
          arguments(L"\"" + record + L"\" " + std::to_wstring(exitCode) +
                    (wait.empty() ? L"" : L" " + wait)),
          commandLine(L"\"" + ProbeProgram + L"\" " + arguments) {}
    bool Recorded() const { return PathPresent(record); }
    bool RecordsWithinTenSeconds() const {
        for (int tries = 0; tries < 200 && !Recorded(); ++tries)
            Sleep(50);
        return Recorded();
    }
    std::wstring RecordedLine() const {
        std::ifstream file(std::filesystem::path(record), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / 2);
    }
    std::wstring record, arguments, commandLine;
};

// A named event the probe waits for before it records.
struct GoAhead {
    std::wstring name = UniqueName();
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, name.c_str());
    ~GoAhead() {
        SetEvent(event);
        CloseHandle(event);
    }
};

using ProcessWrapper = bool (*)(wchar_t*, std::wstring&, bool);

bool Started(ProcessWrapper wrapper, std::wstring commandLine, bool wait) {
    std::wstring output;
    const bool started = wrapper(commandLine.data(), output, wait);
    EXPECT_EQ(L"", output);
    return started;
}

} // namespace

TEST(ProcessWrappers, WaitOnlyWithTheFlagAndAnswerTrueWhateverTheExitCode) {
    for (const ProcessWrapper wrapper : {&RunCommand, &RunCommandSecured}) {
        ScratchFolder scratch;
        Probe waited(scratch, 7, L"sleep:300");
        EXPECT_TRUE(Started(wrapper, waited.commandLine, true));
        ASSERT_TRUE(waited.Recorded()) << "returned before the program ended";
        EXPECT_EQ(waited.commandLine, waited.RecordedLine());

        GoAhead go;
        Probe running(scratch, 0, go.name);
        EXPECT_TRUE(Started(wrapper, running.commandLine, false));
        EXPECT_FALSE(running.Recorded()) << "waited although the flag was clear";
        SetEvent(go.event);
        EXPECT_TRUE(running.RecordsWithinTenSeconds());
    }
}

TEST(RunCommand, LogsNothingAndAMissingProgramIsFalse) {
    ScratchFolder scratch;
    TestSession session;
    EXPECT_TRUE(Started(&RunCommand, Probe(scratch).commandLine, true));
    EXPECT_FALSE(Started(&RunCommand, MissingProgram, true));
    EXPECT_EQ(Lines{}, session.LogLines());
}

TEST(RunCommandSecured, LogsTheDescriptorTheLaunchTheWaitAndAFailureWithItsError) {
    ScratchFolder scratch;
    const std::wstring command = Probe(scratch, 1).commandLine;
    TestSession session;
    EXPECT_TRUE(Started(&RunCommandSecured, command, true));
    EXPECT_TRUE(Started(&RunCommandSecured, command, false));
    EXPECT_FALSE(Started(&RunCommandSecured, MissingProgram, true));
    const std::wstring converted = L"CALDER_CA Security String converted";
    EXPECT_EQ(
        (Lines{converted,
               L"CreateProcess successfully launched " + command +
                   L" \nWaitng for process to return...",
               L"CreateProcess successfully returned from wait after launching " + command + L" \n",
               converted,
               L"CreateProcess successfully launched " + command + L" \nWating flag was not set.",
               converted,
               L"\nCALDER_CA Failed to lauch >" + std::wstring(MissingProgram) +
                   L"<\n Last error return: 2\n"}),
        session.LogLines());
}

TEST(RunCommandSecured, ADescriptorThatCannotBeMadeIsLoggedAndTheProgramStillStarts) {
    ScratchFolder scratch;
    Probe probe(scratch);
    TestSession session;
    EXPECT_TRUE(RunCommandWithDescriptor(probe.commandLine.data(), true, L"D:(no such entry)"));
    EXPECT_TRUE(probe.Recorded());
    PSECURITY_DESCRIPTOR unused = nullptr;
    ASSERT_FALSE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(no such entry)", 1,
                                                                      &unused, nullptr));
    const Lines lines = session.LogLines();
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ(L"CALDER_CA Failed to ConvertStringSecurityDescriptorToSecurityDescriptor: error = " +
                  std::to_wstring(GetLastError()) + L"\n",
              lines[0]);
    EXPECT_EQ(L"CreateProcess successfully launched " + probe.commandLine +
                  L" \nWaitng for process to return...",
              lines[1]);
}

TEST(RunShellOpen, StartsTheFileWithItsParametersWaitsAsToldAndLogsTheShellsReason) {
    ScratchFolder scratch;
    Probe waited(scratch, 5, L"sleep:300");
    TestSession session;
    EXPECT_TRUE(RunShellOpen(ProbeProgram.c_str(), waited.arguments.c_str(), true));
    EXPECT_TRUE(waited.Recorded());
    EXPECT_FALSE(RunShellOpen(MissingProgram, L"", true));
    EXPECT_EQ((Lines{L"Calder_CA launched the following successfully: " + ProbeProgram +
                         L" \nWaiting for process to end...",
                     L"Calder_CA Process: " + ProbeProgram + L" \nsuccessfully ended launching",
                     L"Calder_CA failed to launch the following: File not found."}),
              session.LogLines());

    session.ClearMessages();
    GoAhead go;
    Probe running(scratch, 0, go.name);
    EXPECT_TRUE(RunShellOpen(ProbeProgram.c_str(), running.arguments.c_str(), false));
    EXPECT_FALSE(running.Recorded());
    EXPECT_EQ(Lines{L"Calder_CA launched the following successfully: " + ProbeProgram},
              session.LogLines());
}

TEST(LaunchSeam, ARecorderSeesEveryRequestAndChoosesTheAnswerTheRealLauncherReturnsAfter) {
    ScratchFolder scratch;
    Probe probe(scratch);
    TestSession session;
    {
        LaunchRecorder recorder(false);
        EXPECT_FALSE(Started(&RunCommand, probe.commandLine, true));
        recorder.AnswerWith(true);
        EXPECT_TRUE(Started(&RunCommandSecured, probe.commandLine, false));
        EXPECT_TRUE(RunShellOpen(L"C:\\Tools\\tool.exe", L"/run", true));

        ASSERT_EQ(3u, recorder.Requests().size());
        const LaunchRequest& command = recorder.Requests()[0];
        EXPECT_EQ(LaunchKind::Command, command.kind);
        EXPECT_EQ(probe.commandLine, command.commandLine);
        EXPECT_TRUE(command.wait);
        EXPECT_EQ(LaunchKind::Secured, recorder.Requests()[1].kind);
        EXPECT_FALSE(recorder.Requests()[1].wait);
        const LaunchRequest& shell = recorder.Requests()[2];
        EXPECT_EQ(LaunchKind::ShellOpen, shell.kind);
        EXPECT_EQ(L"C:\\Tools\\tool.exe", shell.commandLine);
        EXPECT_EQ(L"/run", shell.parameters);
    }
    EXPECT_FALSE(probe.Recorded()) << "a recorded request starts nothing";
    EXPECT_EQ(Lines{}, session.LogLines());
    EXPECT_TRUE(Started(&RunCommand, probe.commandLine, true));
    EXPECT_TRUE(probe.Recorded());
}
