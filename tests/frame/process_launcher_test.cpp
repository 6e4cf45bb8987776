// The process launcher on real processes: a probe program records its command line and exits with a
// chosen code.
#include "frame/action_frame.h"
#include "frame/process_launcher.h"
#include "harness/launch_recorder.h"
#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <sddl.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using Lines = std::vector<std::wstring>;

namespace {

std::wstring ProbeProgram() {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring folder = self;
    return folder.substr(0, folder.rfind(L'\\')) + L"\\launch_probe.exe";
}

// One run of the probe: its command line, the file it records into, and a go-ahead event.
class Probe {
  public:
    explicit Probe(const ScratchFolder& scratch, int exitCode = 0, const std::wstring& wait = L"")
        : record_(scratch / L"record.txt") {
        commandLine_ = L"\"" + ProbeProgram() + L"\" \"" + record_ + L"\" " +
                       std::to_wstring(exitCode) + (wait.empty() ? L"" : L" " + wait);
    }
    std::wstring& CommandLine() { return commandLine_; }
    wchar_t* Writable() {
        buffer_.assign(commandLine_.begin(), commandLine_.end());
        buffer_.push_back(L'\0');
        return buffer_.data();
    }
    bool Recorded() const { return PathPresent(record_); }
    std::wstring RecordedLine() const {
        std::ifstream file(std::filesystem::path(record_), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()),
                            bytes.size() / sizeof(wchar_t));
    }
    // Waits up to ten seconds for a probe started without waiting to record.
    bool RecordsWithinTenSeconds() const {
        for (int tries = 0; tries < 200 && !Recorded(); ++tries)
            Sleep(50);
        return Recorded();
    }

  private:
    std::wstring record_;
    std::wstring commandLine_;
    std::vector<wchar_t> buffer_;
};

// A named event the probe waits for before it records.
class GoAhead {
  public:
    GoAhead() : name_(UniqueName()), event_(CreateEventW(nullptr, TRUE, FALSE, name_.c_str())) {}
    ~GoAhead() { CloseHandle(event_); }
    const std::wstring& Name() const { return name_; }
    void Give() { SetEvent(event_); }

  private:
    std::wstring name_;
    HANDLE event_;
};

struct LoggedSession {
    TestSession session;
    LoggedSession() { SessionHandle = session.Handle(); }
};

const wchar_t* const MissingProgram = L"C:\\calder-missing\\missing.exe /quiet";

} // namespace

using ProcessWrapper = bool (*)(wchar_t*, std::wstring&, bool);

TEST(ProcessWrappers, WaitOnlyWithTheFlagAndAnswerTrueWhateverTheExitCode) {
    for (const ProcessWrapper run : {&RunCommand, &RunCommandSecured}) {
        ScratchFolder scratch;
        Probe waited(scratch, 7, L"sleep:300");
        std::wstring output;
        EXPECT_TRUE(run(waited.Writable(), output, true));
        ASSERT_TRUE(waited.Recorded()) << "returned before the program ended";
        EXPECT_EQ(waited.CommandLine(), waited.RecordedLine());
        EXPECT_EQ(L"", output);

        ScratchFolder other;
        GoAhead go;
        Probe running(other, 0, go.Name());
        EXPECT_TRUE(run(running.Writable(), output, false));
        EXPECT_FALSE(running.Recorded()) << "waited although the flag was clear";
        go.Give();
        EXPECT_TRUE(running.RecordsWithinTenSeconds());
    }
}

TEST(RunCommand, LogsNothingAndAMissingProgramIsFalse) {
    ScratchFolder scratch;
    Probe probe(scratch, 0);
    LoggedSession logged;
    std::wstring output;
    EXPECT_TRUE(RunCommand(probe.Writable(), output, true));

    std::wstring command = MissingProgram;
    EXPECT_FALSE(RunCommand(command.data(), output, true));
    EXPECT_EQ(Lines{}, logged.session.LogLines());
}

TEST(RunCommandSecured, LogsTheDescriptorTheLaunchAndTheWait) {
    ScratchFolder scratch;
    Probe probe(scratch, 1);
    LoggedSession logged;
    std::wstring output;

    EXPECT_TRUE(RunCommandSecured(probe.Writable(), output, true));
    EXPECT_TRUE(RunCommandSecured(probe.Writable(), output, false));
    const std::wstring& command = probe.CommandLine();
    EXPECT_EQ(
        (Lines{L"CALDER_CA Security String converted",
               L"CreateProcess successfully launched " + command +
                   L" \nWaitng for process to return...",
               L"CreateProcess successfully returned from wait after launching " + command + L" \n",
               L"CALDER_CA Security String converted",
               L"CreateProcess successfully launched " + command + L" \nWating flag was not set."}),
        logged.session.LogLines());
}

TEST(RunCommandSecured, AMissingProgramLogsTheFailureWithTheError) {
    LoggedSession logged;
    std::wstring command = MissingProgram;
    std::wstring output;
    EXPECT_FALSE(RunCommandSecured(command.data(), output, true));
    EXPECT_EQ((Lines{L"CALDER_CA Security String converted", L"\nCALDER_CA Failed to lauch >" +
                                                                 std::wstring(MissingProgram) +
                                                                 L"<\n Last error return: 2\n"}),
              logged.session.LogLines());
}

TEST(RunCommandSecured, ADescriptorThatCannotBeMadeIsLoggedAndTheProgramStillStarts) {
    ScratchFolder scratch;
    Probe probe(scratch, 0);
    LoggedSession logged;

    EXPECT_TRUE(RunCommandWithDescriptor(probe.Writable(), true, L"D:(no such entry)"));
    EXPECT_TRUE(probe.Recorded());
    const Lines lines = logged.session.LogLines();
    ASSERT_EQ(3u, lines.size());
    const std::wstring prefix =
        L"CALDER_CA Failed to ConvertStringSecurityDescriptorToSecurityDescriptor: error = ";
    EXPECT_EQ(prefix, lines[0].substr(0, prefix.size()));
    PSECURITY_DESCRIPTOR unused = nullptr;
    ASSERT_FALSE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(no such entry)", 1,
                                                                      &unused, nullptr));
    EXPECT_EQ(std::to_wstring(GetLastError()) + L"\n", lines[0].substr(prefix.size()));
    EXPECT_EQ(L"CreateProcess successfully launched " + probe.CommandLine() +
                  L" \nWaitng for process to return...",
              lines[1]);
}

TEST(RunShellOpen, StartsTheFileWithItsParametersAndWaits) {
    ScratchFolder scratch;
    const std::wstring program = ProbeProgram();
    const std::wstring record = scratch / L"record.txt";
    const std::wstring parameters = L"\"" + record + L"\" 5 sleep:300";
    LoggedSession logged;

    EXPECT_TRUE(RunShellOpen(program.c_str(), parameters.c_str(), true));
    EXPECT_TRUE(PathPresent(record));
    EXPECT_EQ((Lines{L"Calder_CA launched the following successfully: " + program +
                         L" \nWaiting for process to end...",
                     L"Calder_CA Process: " + program + L" \nsuccessfully ended launching"}),
              logged.session.LogLines());

    logged.session.ClearMessages();
    GoAhead go;
    const std::wstring later = scratch / L"later.txt";
    const std::wstring waiting = L"\"" + later + L"\" 0 " + go.Name();
    EXPECT_TRUE(RunShellOpen(program.c_str(), waiting.c_str(), false));
    EXPECT_EQ(Lines{L"Calder_CA launched the following successfully: " + program},
              logged.session.LogLines());
    go.Give();
}

TEST(RunShellOpen, AMissingFileLogsTheShellsReasonNotTheName) {
    LoggedSession logged;
    EXPECT_FALSE(RunShellOpen(L"C:\\calder-missing\\missing.exe", L"", true));
    EXPECT_EQ(Lines{L"Calder_CA failed to launch the following: File not found."},
              logged.session.LogLines());
}

TEST(LaunchSeam, ARecorderSeesEveryRequestAndChoosesTheAnswerTheRealLauncherReturnsAfter) {
    ScratchFolder scratch;
    Probe probe(scratch, 0);
    LoggedSession logged;
    std::wstring output;
    {
        LaunchRecorder recorder(false);
        EXPECT_FALSE(RunCommand(probe.Writable(), output, true));
        recorder.AnswerWith(true);
        EXPECT_TRUE(RunCommandSecured(probe.Writable(), output, false));
        EXPECT_TRUE(RunShellOpen(L"C:\\Tools\\tool.exe", L"/run", true));

        ASSERT_EQ(3u, recorder.Requests().size());
        const LaunchRequest& command = recorder.Requests()[0];
        EXPECT_EQ(LaunchKind::Command, command.kind);
        EXPECT_EQ(probe.CommandLine(), command.commandLine);
        EXPECT_TRUE(command.wait);
        EXPECT_EQ(LaunchKind::Secured, recorder.Requests()[1].kind);
        EXPECT_FALSE(recorder.Requests()[1].wait);
        const LaunchRequest& shell = recorder.Requests()[2];
        EXPECT_EQ(LaunchKind::ShellOpen, shell.kind);
        EXPECT_EQ(L"C:\\Tools\\tool.exe", shell.commandLine);
        EXPECT_EQ(L"/run", shell.parameters);
    }
    EXPECT_FALSE(probe.Recorded()) << "a recorded request starts nothing";
    EXPECT_EQ(Lines{}, logged.session.LogLines());

    EXPECT_TRUE(RunCommand(probe.Writable(), output, true));
    EXPECT_TRUE(probe.Recorded());
}
