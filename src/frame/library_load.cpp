// Load and unload of the library: an entry that does nothing, and the process-wide objects in their order.
#include "frame/action_frame.h"

// The static initialisers below run in the order they stand in this file. Nothing here touches
// the registry, a property or a file.

// 1. The retained-names list starts empty; the runtime frees it at unload.
std::vector<std::wstring> RetainedNames;

// 2. The address of IsWow64Process, looked up once at load. Nothing reads this copy: the probe
//    that needs the function looks it up again on each call.
extern const FARPROC LoadedIsWow64Process =
    GetProcAddress(GetModuleHandleW(L"kernel32"), "IsWow64Process");

// 3. The crash handler and 4. the logging facade are constructed here, after the two above, once
//    those subsystems exist; the frame works without them.

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }
