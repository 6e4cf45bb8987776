// The shell-based folder deletes: a silent one and one that logs each attempt and its outcome.
#include "files/directory_removal.h"

#include "frame/action_frame.h"
#include "frame/code_texts.h"

#include <windows.h>

#include <shellapi.h>

#include <cwchar>
#include <memory>
#include <new>

namespace {

// FOF_SILENT | FOF_NOCONFIRMATION, and the same with FOF_ALLOWUNDO.
constexpr FILEOP_FLAGS PermanentDelete = 0x14;
constexpr FILEOP_FLAGS UndoableDelete = 0x54;

// Capacity of the buffer the system's message text is read into.
constexpr DWORD SystemTextChars = 260;
constexpr DWORD SystemTextFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
constexpr DWORD UserDefaultLanguage = 0x400;

// The shell's own results, looked up in this order before the system's messages.
const CodeText ShellResults[] = {
    {0x10074, L"MAX_PATH was exceeded during the operation."},
    {0x10000, L"An unspecified error occurred on the destination."},
    {113, L"Source and destination file are the same"},
    {114, L"Multiple paths were specified in the source of the operation, but only one "
          L"destination path"},
    {115, L"Rename operation was specified but the destination path is a different directory.  "
          L"Use move instead."},
    {116, L"Source is a root directory, cannot be moved or renamed"},
    {117, L"Operation was cancelled by the user (or silently cancelled if the specified flags "
          L"were supplied to SHFileOperation)"},
    {118, L"The destination is a sub-tree of the source"},
    {120, L"Security problems on source"},
    {121, L"The source or destination path exceeded or would exceed MAX_PATH"},
    {122, L"Operation involved multiple destination paths which can fail in the case of a move "
          L"operation"},
    {124, L"The paths in the source or destination were invalid"},
    {125, L"Source and destination have the same parent folder."},
    {126, L"The destination path is to an existing file"},
    {128, L"The destination path is to an existing folder"},
    {129, L"The name of the file exceeds MAX_PATH"},
    {130, L"Destination is a Read-Only CDRom, possibly unformatted"},
    {131, L"Destination is a Read-Only DVD, possibly unformatted"},
    {132, L"Destination is a Recordable (AudioL) CDRom, possibly unformatted"},
    {183, L"MAX_PATH was exceeded during the operation."},
};

// Runs the shell's delete on a list of paths that ends in two NULs.
int ShellDelete(const wchar_t* doublyTerminated, FILEOP_FLAGS flags) {
    SHFILEOPSTRUCTW operation{};
    operation.hwnd = nullptr;
    operation.wFunc = FO_DELETE;
    operation.pFrom = doublyTerminated;
    operation.pTo = nullptr;
    operation.fFlags = flags;
    return SHFileOperationW(&operation);
}

// The path copied character by character into `length + 2` characters padded with NUL; a double
// quote that is the path's very last character becomes NUL.
void CopyWithoutClosingQuote(const wchar_t* path, std::size_t length, wchar_t* buffer) {
    for (std::size_t at = 0; at < length + 2; ++at) {
        wchar_t character = at < length ? path[at] : L'\0';
        if (character == L'"' && at + 1 == length)
            character = L'\0';
        buffer[at] = character;
    }
}

} // namespace

std::wstring ShellResultText(int result) {
    if (const wchar_t* known = TextForCode(ShellResults, result, nullptr))
        return known;
    wchar_t text[SystemTextChars] = L"";
    FormatMessageW(SystemTextFlags, nullptr, static_cast<DWORD>(result), UserDefaultLanguage, text,
                   SystemTextChars, nullptr);
    return text;
}

bool DeleteFolderShell(const wchar_t* path, int permanent) {
    const std::size_t length = std::wcslen(path);
    std::unique_ptr<wchar_t[]> buffer(new wchar_t[length + 2]);
    std::wmemcpy(buffer.get(), path, length + 1);
    // The shell reads a list that ends in two NULs: both are set, so the second is never left
    // to whatever the allocation held.
    buffer[length] = L'\0';
    buffer[length + 1] = L'\0';
    return ShellDelete(buffer.get(), permanent != 0 ? PermanentDelete : UndoableDelete) == 0;
}

bool DeleteDirectory(const wchar_t* path, int allowUndo) {
    if (path == nullptr)
        return false;
    const std::size_t length = std::wcslen(path);
    std::unique_ptr<wchar_t[]> buffer;
    try {
        buffer.reset(new wchar_t[length + 2]);
    } catch (const std::bad_alloc&) {
        LogMessage(SessionHandle, L"CALDER_CA Could not allocate temp buffer !  \n");
        return false;
    }
    CopyWithoutClosingQuote(path, length, buffer.get());
    LogMessage(SessionHandle, L"CALDER_CA DeleteDirectory attempting to delete %s \n",
               buffer.get());

    const int result = ShellDelete(buffer.get(), allowUndo != 0 ? UndoableDelete : PermanentDelete);
    if (result == 0) {
        LogMessage(SessionHandle,
                   L"CALDER_CA DeleteDirectory %s: no errors using SHFileOperation.  \n",
                   buffer.get());
        // The success path keeps its copy until the process ends.
        buffer.release();
        return true;
    }
    LogMessage(SessionHandle, L"CALDER_CA DeleteDirectory %s Error: %s. \n", buffer.get(),
               ShellResultText(result).c_str());
    return false;
}
