// A program the launcher tests start: waits for an event or a time if told, records its command
// line, exits with a chosen code. Arguments: <record file> <exit code> [<event> | sleep:<ms>]
#include <windows.h>

#include <cwchar>
#include <string>

int wmain(int argc, wchar_t** argv) {
    if (argc < 3)
        return 100;
    if (argc > 3 && std::wcsncmp(argv[3], L"sleep:", 6) == 0)
        Sleep(std::wcstoul(argv[3] + 6, nullptr, 10));
    else if (HANDLE event = argc > 3 ? OpenEventW(SYNCHRONIZE, FALSE, argv[3]) : nullptr)
        WaitForSingleObject(event, 30000);
    // Written beside the record and renamed into place, so that a reader sees all or nothing.
    const std::wstring partial = std::wstring(argv[1]) + L".partial";
    HANDLE file =
        CreateFileW(partial.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, GetCommandLineW(), static_cast<DWORD>(std::wcslen(GetCommandLineW()) * 2),
              &written, nullptr);
    CloseHandle(file);
    MoveFileExW(partial.c_str(), argv[1], MOVEFILE_REPLACE_EXISTING);
    return std::wcstol(argv[2], nullptr, 10);
}
