// Folder cleanup at uninstall: removing the folders the package's own tables cannot remove.
#pragma once

#include <windows.h>

#include <msi.h>

extern "C" {
UINT __stdcall RemoveUSBMON(MSIHANDLE session);
}
