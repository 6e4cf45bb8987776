// The staging family and the install manager gate: actions that hand values to deferred actions.
#pragma once

#include <windows.h>

#include <msi.h>

extern "C" {
UINT __stdcall SetInstallDir(MSIHANDLE session);
UINT __stdcall SetTkmTesselPid(MSIHANDLE session);
UINT __stdcall GetInstallQ7Dir(MSIHANDLE session);
UINT __stdcall GetInstallTLDir(MSIHANDLE session);
UINT __stdcall GetInstallEmberDir(MSIHANDLE session);
UINT __stdcall GetInstallUSBMonDir(MSIHANDLE session);
UINT __stdcall GetInstallProxyDir(MSIHANDLE session);
UINT __stdcall LaunchedFromTKM(MSIHANDLE session);
}

// Address of the vendor's web site in the gate's message; fixed when the library is built.
extern const wchar_t* const VendorWebAddress;
