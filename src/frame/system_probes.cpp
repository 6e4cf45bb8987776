// Probes of the running Windows, special folder lookup and file versions.
#include "frame/system_probes.h"

#include <shlobj.h>

#include <memory>
#include <new>

namespace {

// wProcessorArchitecture of a 64-bit system: x64 (9) and Itanium (6).
constexpr WORD ArchitectureAmd64 = PROCESSOR_ARCHITECTURE_AMD64;
constexpr WORD ArchitectureIa64 = PROCESSOR_ARCHITECTURE_IA64;

// Clears `info`, sets its size and asks for the version; a failed call leaves it cleared.
bool ReadOsVersion(OSVERSIONINFOW& info) {
    info = {};
    info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
    return GetOsVersionInfo(info);
}

using IsWow64ProcessFunction = BOOL(WINAPI*)(HANDLE, PBOOL);

} // namespace

bool GetOsVersionInfo(OSVERSIONINFOW& info) {
    return GetVersionExW(&info) != FALSE;
}

bool IsWindows7() {
    OSVERSIONINFOW info;
    return ReadOsVersion(info) && info.dwPlatformId == VER_PLATFORM_WIN32_NT &&
           info.dwMajorVersion == 6 && info.dwMinorVersion == 1;
}

bool IsNativeX64() {
    OSVERSIONINFOW version;
    ReadOsVersion(version);
    SYSTEM_INFO system = {};
    if (version.dwMajorVersion == 10)
        GetNativeSystemInfo(&system);
    else
        GetSystemInfo(&system);
    if (system.wProcessorArchitecture == ArchitectureAmd64 ||
        system.wProcessorArchitecture == ArchitectureIa64)
        return true;
    return IsWow64Process32();
}

bool IsWow64Process32() {
    const auto isWow64Process = reinterpret_cast<IsWow64ProcessFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), "IsWow64Process")));
    if (isWow64Process == nullptr)
        return false;
    BOOL emulated = FALSE;
    isWow64Process(GetCurrentProcess(), &emulated);
    return emulated != FALSE;
}

std::wstring GetBinFolderName() {
    return IsNativeX64() ? L"BIN64" : L"Bin";
}

bool GetSpecialFolderPath(int csidl, std::wstring& path) {
    PIDLIST_ABSOLUTE items = nullptr;
    const HRESULT located = SHGetFolderLocation(nullptr, csidl, nullptr, 0, &items);
    if (items != nullptr) {
        wchar_t buffer[MAX_PATH];
        if (SHGetPathFromIDListW(items, buffer))
            path = buffer;
        IMalloc* allocator = nullptr;
        if (SUCCEEDED(SHGetMalloc(&allocator))) {
            allocator->Free(items);
            allocator->Release();
        }
    }
    return located == S_OK;
}

std::wstring GetFileVersionString(const std::wstring& path) {
    DWORD handle = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &handle);
    if (size == 0)
        return L"";
    const std::unique_ptr<BYTE[]> block(new (std::nothrow) BYTE[size]);
    if (!block || !GetFileVersionInfoW(path.c_str(), 0, size, block.get()))
        return L"";
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.get(), L"\\", reinterpret_cast<void**>(&info), &length) ||
        info == nullptr)
        return L"";
    wchar_t text[64];
    wsprintfW(text, L"%d.%d.%d.%d", HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
              HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS));
    return text;
}
