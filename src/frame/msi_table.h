// One-value queries against the running package's own tables.
#pragma once

#include <string>

// Query text that reads a row of the package's TESSEL_InstallProperties table; one %s for the key.
extern const wchar_t* const InstallPropertiesQuery;

// Runs `queryFormat` with `key` put in as it stands against the active database of SessionHandle
// and gives field 1 of the first row. False when there is no database or no row; `value` is then
// left as it was.
bool GetFromMSITable(const wchar_t* queryFormat, const wchar_t* key, std::wstring& value);
