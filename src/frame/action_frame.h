// What every custom action shares: the session handle, the fixed property buffer, the installer log
// and user messages.
#pragma once

#include <windows.h>

#include <msi.h>
#include <msiquery.h>

#include <string>
#include <vector>

// Handle of the session that set it last; written at the start of an action, never cleared.
extern MSIHANDLE SessionHandle;

// Capacity in wide characters, terminator included, of every fixed property or path buffer.
constexpr DWORD MaxPropertyChars = 260;

// Capacity in wide characters of the buffer a log line is formatted into.
constexpr int LogLineChars = 520;

// Message type of a line that goes to the installer log only (INSTALLMESSAGE_INFO).
constexpr UINT InfoMessage = 0x04000000;
// Message type of a message shown to the user (INSTALLMESSAGE_USER), plus message-box flags.
constexpr UINT UserMessage = 0x03000000;

// Formats a line as wvsprintfW does into 520 wide characters and sends it to the installer log.
// A line that cannot be formatted is sent as "CA buffer overflow\n". Never fails.
void LogMessage(MSIHANDLE session, const wchar_t* format, ...);

// Shows `text` to the user with message-box `flags`; returns what the engine answered.
int ShowUserMessage(MSIHANDLE session, const wchar_t* text, UINT flags);

// Reads a property into the caller's buffer of MaxPropertyChars. Any non-zero result of
// MsiGetPropertyW is a failed read, ERROR_MORE_DATA included: a value of 260 characters or
// more is not read again. The buffer is not cleared before the read.
bool ReadProperty(MSIHANDLE session, const wchar_t* name, wchar_t (&buffer)[MaxPropertyChars]);

// Sets a property; false on any non-zero result of the engine.
bool SetProperty(MSIHANDLE session, const wchar_t* name, const wchar_t* value);

// The engine's property set. Tests bind a failing setter here; the shipped library never changes
// it.
using PropertySetter = UINT(WINAPI*)(MSIHANDLE, LPCWSTR, LPCWSTR);
extern PropertySetter SetPropertyThroughEngine;

// Names that the registry cleanup keeps while it removes values; empty at load, freed at unload.
extern std::vector<std::wstring> RetainedNames;
