// The table of the suite's registry locations and the lookups of the install folders.
#include "frame/locations.h"

#include "frame/action_frame.h"
#include "frame/system_probes.h"
#include "registry/registry_key.h"
#include "registry/values.h"

#include <map>

namespace {

// Byte lengths of the direct reads: 260 for the install folders by their own routes, 520 for
// GetInstallDirOrEmpty.
constexpr DWORD ShortReadBytes = 260;
constexpr DWORD LongReadBytes = 520;

const std::wstring Software = L"SOFTWARE\\";
const std::wstring Wow6432Node = Software + L"Wow6432Node\\";

// Value names that several locations share.
const std::wstring Location = L"Location";
const std::wstring InstallDir = L"InstallDir";

// The suite's keys below SOFTWARE.
const std::wstring Vela = L"Tessel\\Vela";
const std::wstring Install = L"Tessel Technologies\\Install";
const std::wstring Rexion = Install + L"\\Rexion";
const std::wstring Manager = Install + L"\\Tessel Kestrix Install Manager";
const std::wstring TracelineKey = L"Norvik\\Traceline\\Key";
const std::wstring TracelineInstall = L"Norvik\\Traceline\\Install";

std::wstring Join(const std::wstring& key, const std::wstring& name) {
    return key + L"\\" + name;
}

struct LocationPaths {
    std::wstring path;   // on a 32-bit Windows, and on both where there is no twin
    std::wstring twin64; // on a 64-bit Windows; empty: the same path as on a 32-bit one
};

// A location whose 64-bit twin lies under Wow6432Node as `twin`, below SOFTWARE.
LocationPaths Twinned(const std::wstring& path, const std::wstring& twin) {
    return {Software + path, Wow6432Node + twin};
}
LocationPaths Twinned(const std::wstring& path) {
    return Twinned(path, path);
}
LocationPaths Single(const std::wstring& path) {
    return {Software + path, L""};
}

const std::map<SuiteLocation, LocationPaths>& Locations() {
    static const std::map<SuiteLocation, LocationPaths> locations = {
        {SuiteLocation::CoreStaticFolder,
         Twinned(Join(Vela + L"\\Packages\\Core-Static", Location))},
        {SuiteLocation::InstallProxySwitch, Twinned(Vela + L"\\Settings\\Mira\\Install\\Install")},
        {SuiteLocation::EmberFolder, Single(Join(Vela + L"\\Packages\\Ember", Location))},
        {SuiteLocation::RexionFolder, Single(Join(Rexion, Location))},
        {SuiteLocation::DvrFolder, Single(Join(Install + L"\\Norvik DVR", Location))},
        {SuiteLocation::PowerSavingFolder,
         Twinned(Join(Install + L"\\Q7", InstallDir), Join(Install + L"\\Q764", InstallDir))},
        {SuiteLocation::ProfilerFolder, Twinned(Join(TracelineKey, InstallDir))},
        {SuiteLocation::ProfilerFolderLowerD, Twinned(Join(TracelineKey, L"Installdir"))},
        {SuiteLocation::ProfilerProductCode, Twinned(Join(TracelineInstall, L"ProductCode"))},
    };
    return locations;
}

// The install key as the two direct reads of their own name it: with a final backslash.
std::wstring InstallKeyWithBackslash() {
    return Software + Install + L"\\";
}

// Opens the install key (final backslash) with `access` into `key`; false when that fails.
bool OpenInstallKey(REGSAM access, RegistryKey& key) {
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, InstallKeyWithBackslash().c_str(), 0, access,
                         key.Receive()) == ERROR_SUCCESS;
}

// Reads a value of an open key into a buffer of 260 wide characters, of which `bytes` are
// offered to the registry; one more, cleared, ends a text stored without its terminator.
bool QueryText(HKEY key, const wchar_t* name, DWORD bytes, std::wstring& text) {
    wchar_t buffer[MaxPropertyChars + 1] = {};
    if (RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(buffer), &bytes) !=
        ERROR_SUCCESS)
        return false;
    text = buffer;
    return true;
}

} // namespace

std::wstring SuiteLocationPath(SuiteLocation location, bool nativeX64) {
    const LocationPaths& paths = Locations().at(location);
    return nativeX64 && !paths.twin64.empty() ? paths.twin64 : paths.path;
}

std::wstring SuiteLocationPath(SuiteLocation location) {
    return SuiteLocationPath(location, IsNativeX64());
}

bool ReadSuiteLocation(SuiteLocation location, std::wstring& value) {
    registry_string<std::wstring> stored;
    stored.SetPath(SuiteLocationPath(location));
    if (!stored.ValueExists())
        return false;
    stored.ReadString(value);
    return true;
}

std::wstring SuiteInstallKey() {
    return Software + Install;
}

KeyAndValue DirectLocationOf(DirectLocation location) {
    switch (location) {
    case DirectLocation::InstallDir:
        return {InstallKeyWithBackslash(), InstallDir};
    case DirectLocation::TkmInstallDir:
        return {InstallKeyWithBackslash(), L"TKMInstallDir"};
    case DirectLocation::ManagerInstallDir:
        return {Software + Manager, InstallDir};
    case DirectLocation::RexionLocation:
        return {Software + Rexion, Location};
    }
    return {};
}

std::wstring GetInstallDirOrEmpty() {
    RegistryKey key;
    std::wstring folder;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, SuiteInstallKey().c_str(), 0, ReadAccess,
                      key.Receive()) == ERROR_SUCCESS)
        QueryText(key.Get(), DirectLocationOf(DirectLocation::InstallDir).value.c_str(),
                  LongReadBytes, folder);
    return folder;
}

bool GetINSTFolder(std::wstring& path) {
    const KeyAndValue location = DirectLocationOf(DirectLocation::InstallDir);
    RegistryKey key;
    if (!OpenInstallKey(AllAccessNative, key))
        return false;
    LogMessage(SessionHandle, L"CALDER_CA Inside GetINSTFolder is, %s \n", location.key.c_str());
    if (!QueryText(key.Get(), location.value.c_str(), ShortReadBytes, path))
        return false;
    LogMessage(SessionHandle, L"CALDER_CA Inside GetINSTFolder2 is, %s \n", path.c_str());
    return true;
}

bool GetTkmInstallDir(std::wstring& path) {
    RegistryKey key;
    return OpenInstallKey(ReadAccess, key) &&
           QueryText(key.Get(), DirectLocationOf(DirectLocation::TkmInstallDir).value.c_str(),
                     ShortReadBytes, path);
}
