// Starting other programs: hidden, with a security descriptor, or through the shell.
#pragma once

#include <functional>
#include <string>

// Runs `commandLine` (writable: the platform may touch it) with no console window. With `wait`
// set it blocks until the program ends, without a limit. `output` is not used. True when the
// process could be created; how it ends is never read. Logs nothing.
bool RunCommand(wchar_t* commandLine, std::wstring& output, bool wait);

// Runs `commandLine` with a security descriptor for the process object and a window for a
// console program, logging each step. Same arguments and answer as RunCommand.
bool RunCommandSecured(wchar_t* commandLine, std::wstring& output, bool wait);

// Opens `file` with `parameters` through the shell, logging the outcome. True when the shell
// started it.
bool RunShellOpen(const wchar_t* file, const wchar_t* parameters, bool wait);

// The descriptor RunCommandSecured gives a process: full access to the system, the
// administrators and the creator owner; read, write and execute to the interactive user.
extern const wchar_t* const SecuredProcessDescriptor;

// RunCommandSecured's steps with the descriptor text given: a text that cannot be converted is
// logged and the process is started without a descriptor.
bool RunCommandWithDescriptor(wchar_t* commandLine, bool wait, const wchar_t* descriptorText);

// The seam between the actions and the processes they start. Every call of the three wrappers
// above reaches the installed launcher; the real one is installed unless a test replaces it.
enum class LaunchKind { Command, Secured, ShellOpen };

struct LaunchRequest {
    LaunchKind kind;
    std::wstring commandLine; // the command line, or the file for ShellOpen
    std::wstring parameters;  // ShellOpen only
    bool wait;
};

// Answers whether the process could be started, in place of the platform.
using Launcher = std::function<bool(const LaunchRequest&)>;

// Installs `launcher` for every later call; an empty one restores the real launcher. Gives back
// the one that was installed before. The shipped library never calls this.
Launcher InstallLauncher(Launcher launcher);
