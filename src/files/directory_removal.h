// Removing a folder with everything in it through the shell's file operation.
#pragma once

#include <string>

// Silent shell delete. `permanent` non-zero deletes outright; 0 sends the folder to the recycle
// bin. True when the shell reports 0.
bool DeleteFolderShell(const wchar_t* path, int permanent);

// Logged shell delete. `allowUndo` non-zero sends the folder to the recycle bin; 0 deletes
// outright: the opposite sense of DeleteFolderShell's flag. A closing double quote at the very
// end of `path` is dropped. A failure is logged with the shell's result in words. A null path
// is false with nothing logged.
bool DeleteDirectory(const wchar_t* path, int allowUndo);

// The words for a result of the shell's file operation, from its own table or from the system.
std::wstring ShellResultText(int result);
