// Where the suite's parts are recorded in the registry, with the 64-bit system's twins.
#pragma once

#include <string>

// Locations read as one path (key and value name) through a registry_string under
// HKEY_LOCAL_MACHINE. Some have a twin that a 64-bit Windows reads instead.
enum class SuiteLocation {
    CoreStaticFolder,     // folder of the older framework
    InstallProxySwitch,   // the install proxy's switch
    EmberFolder,          // folder of the Ember application
    RexionFolder,         // folder of the settings application
    DvrFolder,            // folder of the recorder
    PowerSavingFolder,    // folder of the power-saving product
    ProfilerFolder,       // the profiler's folder, value "InstallDir"
    ProfilerFolderLowerD, // the same value spelled "Installdir"
    ProfilerProductCode,  // the profiler's product code
};

// The location's path on a 64-bit Windows (`nativeX64`) or on a 32-bit one.
std::wstring SuiteLocationPath(SuiteLocation location, bool nativeX64);

// The location's path on this Windows, as IsNativeX64 tells it.
std::wstring SuiteLocationPath(SuiteLocation location);

// The usual lookup of a location on this Windows: ValueExists, then ReadString (both views).
// False when the value is in neither view; `value` is then left as it was.
bool ReadSuiteLocation(SuiteLocation location, std::wstring& value);

// Locations read directly as a key and a value under HKEY_LOCAL_MACHINE.
enum class DirectLocation {
    InstallDir,        // the suite's install folder
    TkmInstallDir,     // the install manager's folder
    ManagerInstallDir, // the install manager's own key
    RexionLocation,    // folder of the settings application
};

struct KeyAndValue {
    std::wstring key;
    std::wstring value;
};

KeyAndValue DirectLocationOf(DirectLocation location);

// The suite's install key under HKEY_LOCAL_MACHINE, without a final backslash.
std::wstring SuiteInstallKey();

// The text of InstallDir under the suite's install key, read with KEY_READ into 520 bytes
// (259 characters fit), or an empty string.
std::wstring GetInstallDirOrEmpty();

// The same value through the key path with a final backslash, opened with KEY_ALL_ACCESS and
// read into 260 bytes, so a folder of more than 129 characters is a failed read. Logs the key
// path and the folder read. False, with `path` left as it was, when the key or value fails.
bool GetINSTFolder(std::wstring& path);

// TKMInstallDir under the suite's install key (final backslash, KEY_READ, 260 bytes), no log.
bool GetTkmInstallDir(std::wstring& path);
