// Folder cleanup at uninstall: deferred actions that remove folders named in CustomActionData.
#include "cleanup/folder_cleanup.h"

#include "files/directory_removal.h"
#include "files/file_tree.h"
#include "frame/action_frame.h"

namespace {

const wchar_t* const ReadFailedLine = L"CALDER_CA Could not get INSTALLDIR  \n";

// Reads CustomActionData into `path`, logging the value or the failure with `readLine`. A failed
// read leaves the buffer empty.
void ReadFolderToRemove(const wchar_t* readLine, wchar_t (&path)[MaxPropertyChars]) {
    if (ReadProperty(SessionHandle, L"CustomActionData", path)) {
        LogMessage(SessionHandle, readLine, path);
    } else {
        path[0] = L'\0';
        LogMessage(SessionHandle, ReadFailedLine);
    }
}

} // namespace

// Removes the device detector's folder named in CustomActionData: 1 when it was deleted, 0 when
// there was nothing to delete or the delete failed.
extern "C" UINT __stdcall RemoveUSBMON(MSIHANDLE session) {
    SessionHandle = session;
    wchar_t folder[MaxPropertyChars];
    ReadFolderToRemove(L"CALDER_CA RemoveUSBMON Directory: %s \n", folder);

    if (folder[0] == L'\0' || !FileExists(folder) || !DeleteDirectory(folder, 0))
        return 0;
    LogMessage(SessionHandle, L"Calder_CA NorvikUSB3DeviceDetector folder deleted\n");
    return 1;
}
