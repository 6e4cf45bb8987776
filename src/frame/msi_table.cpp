// Reads one value from a table of the running package through the session's active database.
#include "frame/msi_table.h"

#include "frame/action_frame.h"
#include "frame/msi_handle.h"

#include <shlwapi.h>

const wchar_t* const InstallPropertiesQuery =
    L"SELECT `Value` FROM `TESSEL_InstallProperties` WHERE `Property` = '%s'";

namespace {
constexpr int QueryChars = 520;
// Length handed to MsiRecordGetStringW; the buffer is sized to match it.
constexpr DWORD ValueChars = 1042;
} // namespace

bool GetFromMSITable(const wchar_t* queryFormat, const wchar_t* key, std::wstring& value) {
    wchar_t query[QueryChars];
    // Formatted as wsprintfW does, but held to the buffer: a key too long for it cannot run
    // past the end.
    wnsprintfW(query, QueryChars, queryFormat, key);

    LogMessage(SessionHandle, L"Calder_CA GetFromMSITable(), Reading Property table\n ");

    MsiHandle database(MsiGetActiveDatabase(SessionHandle));
    if (!database) {
        LogMessage(SessionHandle,
                   L"Calder_CA GetFromMSITable() failed at MsiGetActiveDatabase %s \n", L"");
        return false;
    }

    MsiHandle view;
    if (MsiDatabaseOpenViewW(database.Get(), query, view.Receive()) != ERROR_SUCCESS)
        return false;
    if (MsiViewExecute(view.Get(), 0) != ERROR_SUCCESS)
        return false;
    MsiHandle record;
    if (MsiViewFetch(view.Get(), record.Receive()) != ERROR_SUCCESS)
        return false;

    wchar_t buffer[ValueChars];
    DWORD length = ValueChars;
    if (MsiRecordGetStringW(record.Get(), 1, buffer, &length) != ERROR_SUCCESS)
        return false;

    LogMessage(SessionHandle, L"Calder_CA GetFromMSITable() PackageRead Property Value is %s \n",
               buffer);
    value = buffer;
    return true;
}
