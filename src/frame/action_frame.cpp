// The installer log, user messages and property access that all actions go through.
#include "frame/action_frame.h"

#include "frame/msi_handle.h"

#include <shlwapi.h>

#include <cstdarg>

MSIHANDLE SessionHandle = 0;

PropertySetter SetPropertyThroughEngine = &MsiSetPropertyW;

namespace {
const wchar_t* const OverflowLine = L"CA buffer overflow\n";
}

void LogMessage(MSIHANDLE session, const wchar_t* format, ...) {
    wchar_t line[LogLineChars];
    va_list arguments;
    va_start(arguments, format);
    // wvnsprintfW formats exactly as wvsprintfW does, but stops at the buffer's end and reports
    // a negative count instead of writing past it.
    const int written = wvnsprintfW(line, LogLineChars, format, arguments);
    va_end(arguments);

    MsiHandle record(MsiCreateRecord(0));
    MsiRecordSetStringW(record.Get(), 0, written < 0 ? OverflowLine : line);
    MsiProcessMessage(session, static_cast<INSTALLMESSAGE>(InfoMessage), record.Get());
}

int ShowUserMessage(MSIHANDLE session, const wchar_t* text, UINT flags) {
    MsiHandle record(MsiCreateRecord(2));
    MsiRecordSetStringW(record.Get(), 0, text);
    return MsiProcessMessage(session, static_cast<INSTALLMESSAGE>(UserMessage + flags),
                             record.Get());
}

bool ReadProperty(MSIHANDLE session, const wchar_t* name, wchar_t (&buffer)[MaxPropertyChars]) {
    DWORD length = MaxPropertyChars;
    return MsiGetPropertyW(session, name, buffer, &length) == ERROR_SUCCESS;
}

bool SetProperty(MSIHANDLE session, const wchar_t* name, const wchar_t* value) {
    return SetPropertyThroughEngine(session, name, value) == ERROR_SUCCESS;
}
