// A program the launcher tests start: records its command line, waits for a go-ahead if told, exits
// with a chosen code. Arguments: <record file> <exit code> [<event to wait for> |
// sleep:<milliseconds>]
#include <windows.h>

#include <cstdlib>
#include <cwchar>
#include <string>

namespace {

void WaitAsTold(const wchar_t* instruction) {
    if (std::wcsncmp(instruction, L"sleep:", 6) == 0) {
        Sleep(static_cast<DWORD>(std::wcstoul(instruction + 6, nullptr, 10)));
        return;
    }
    HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, instruction);
    if (event) {
        WaitForSingleObject(event, 30000);
        CloseHandle(event);
    }
}

// Writes the command line beside the record and renames it into place, so a reader sees all or
// nothing.
void Record(const std::wstring& record) {
    const std::wstring partial = record + L".partial";
    HANDLE file =
        CreateFileW(partial.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    const wchar_t* line = GetCommandLineW();
    DWORD written = 0;
    WriteFile(file, line, static_cast<DWORD>(std::wcslen(line) * sizeof(wchar_t)), &written,
              nullptr);
    CloseHandle(file);
    MoveFileExW(partial.c_str(), record.c_str(), MOVEFILE_REPLACE_EXISTING);
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 3)
        return 100;
    if (argc > 3)
        WaitAsTold(argv[3]);
    Record(argv[1]);
    return std::wcstol(argv[2], nullptr, 10);
}
