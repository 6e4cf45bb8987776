// Prints what the system probes say in this process, for tests that set the reported Windows.
#include "frame/system_probes.h"

#include <cstdio>

int main() {
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    const bool known = GetOsVersionInfo(version);
    std::printf("version=%d:%lu.%lu IsWindows7=%d IsNativeX64=%d IsWow64Process32=%d Bin=%ls",
                known ? 1 : 0, version.dwMajorVersion, version.dwMinorVersion, IsWindows7() ? 1 : 0,
                IsNativeX64() ? 1 : 0, IsWow64Process32() ? 1 : 0, GetBinFolderName().c_str());
    return 0;
}
