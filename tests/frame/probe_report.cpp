// Prints what the system probes say in this process, for tests that set the reported Windows.
#include "frame/system_probes.h"

#include <cstdio>

int main() {
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    const int known = GetOsVersionInfo(version);
    std::printf("version=%d:%lu.%lu IsWindows7=%d IsNativeX64=%d IsWow64Process32=%d Bin=%ls",
                known, version.dwMajorVersion, version.dwMinorVersion, IsWindows7(), IsNativeX64(),
                IsWow64Process32(), GetBinFolderName().c_str());
}
