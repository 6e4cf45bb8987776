// Builds a minimal package with the installer's own database calls, opens it as a session and
// captures the session's messages through the external UI record handler.
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <stdexcept>

namespace {

std::vector<CapturedMessage>& Captured() {
    static std::vector<CapturedMessage> messages;
    return messages;
}

std::wstring RecordText(MSIHANDLE record, UINT field) {
    DWORD length = 0;
    wchar_t empty[1] = L"";
    MsiRecordGetStringW(record, field, empty, &length);
    std::wstring text(length + 1, L'\0');
    length += 1;
    MsiRecordGetStringW(record, field, text.data(), &length);
    text.resize(length);
    return text;
}

INT CALLBACK CaptureMessage(LPVOID, UINT type, MSIHANDLE record) {
    if (record != 0)
        Captured().push_back({type & 0xFF000000u, type & 0x00FFFFFFu, RecordText(record, 0)});
    return IDOK;
}

void Execute(MSIHANDLE database, const std::wstring& sql) {
    MSIHANDLE view = 0;
    UINT status = MsiDatabaseOpenViewW(database, sql.c_str(), &view);
    if (status == ERROR_SUCCESS)
        status = MsiViewExecute(view, 0);
    if (view)
        MsiCloseHandle(view);
    if (status != ERROR_SUCCESS)
        throw std::runtime_error("query failed: " + Narrow(sql));
}

std::wstring TempFolder() {
    wchar_t buffer[MAX_PATH];
    GetTempPathW(MAX_PATH, buffer);
    return buffer;
}

void WritePackage(const std::wstring& path, const InstallProperties& rows) {
    MSIHANDLE database = 0;
    if (MsiOpenDatabaseW(path.c_str(), MSIDBOPEN_CREATE, &database) != ERROR_SUCCESS)
        throw std::runtime_error("cannot create test package");
    Execute(database, L"CREATE TABLE `Property` (`Property` CHAR(72) NOT NULL, `Value` "
                      L"LONGCHAR NOT NULL PRIMARY KEY `Property`)");
    const std::map<std::wstring, std::wstring> properties = {
        {L"ProductCode", NewGuid()},   {L"ProductName", L"Calder test package"},
        {L"ProductVersion", L"1.0.0"}, {L"ProductLanguage", L"1033"},
        {L"Manufacturer", L"Tessel"},
    };
    for (const auto& [name, value] : properties)
        Execute(database, L"INSERT INTO `Property` (`Property`, `Value`) VALUES ('" + name +
                              L"', '" + value + L"')");
    Execute(database, L"CREATE TABLE `TESSEL_InstallProperties` (`Property` CHAR(72) NOT NULL, "
                      L"`Value` LONGCHAR PRIMARY KEY `Property`)");
    for (const auto& [name, value] : rows)
        Execute(database, L"INSERT INTO `TESSEL_InstallProperties` (`Property`, `Value`) VALUES ('" +
                              name + L"', '" + value + L"')");

    MSIHANDLE summary = 0;
    MsiGetSummaryInformationW(database, nullptr, 20, &summary);
    MsiSummaryInfoSetPropertyW(summary, 7, VT_LPSTR, 0, nullptr, L"x64;1033");
    MsiSummaryInfoSetPropertyW(summary, 9, VT_LPSTR, 0, nullptr, NewGuid().c_str());
    MsiSummaryInfoSetPropertyW(summary, 14, VT_I4, 200, nullptr, nullptr);
    MsiSummaryInfoSetPropertyW(summary, 15, VT_I4, 2, nullptr, nullptr);
    MsiSummaryInfoPersist(summary);
    MsiCloseHandle(summary);
    MsiDatabaseCommit(database);
    MsiCloseHandle(database);
}

HMODULE Library() {
    static HMODULE library = LoadLibraryW(L"Calder_CA.dll");
    if (!library)
        throw std::runtime_error("Calder_CA.dll not found beside the test program");
    return library;
}

} // namespace

std::wstring NewGuid() {
    GUID guid;
    CoCreateGuid(&guid);
    wchar_t text[64];
    StringFromGUID2(guid, text, 64);
    return text;
}

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (wchar_t character : text)
        narrow += character < 128 ? static_cast<char>(character) : '?';
    return narrow;
}

TestSession::TestSession(const InstallProperties& installProperties) {
    packagePath_ = TempFolder() + L"calder-" + NewGuid() + L".msi";
    WritePackage(packagePath_, installProperties);
    MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
    MsiSetExternalUIRecord(&CaptureMessage, INSTALLLOGMODE_INFO | INSTALLLOGMODE_USER, nullptr,
                           nullptr);
    const UINT status = MsiOpenPackageW(packagePath_.c_str(), &session_);
    if (status != ERROR_SUCCESS)
        throw std::runtime_error("MsiOpenPackageW failed: " + std::to_string(status));
    ClearMessages();
}

TestSession::~TestSession() {
    MsiCloseHandle(session_);
    DeleteFileW(packagePath_.c_str());
}

void TestSession::SetProperty(const std::wstring& name, const std::wstring& value) {
    ASSERT_EQ(ERROR_SUCCESS, MsiSetPropertyW(session_, name.c_str(), value.c_str()));
}

std::wstring TestSession::Property(const std::wstring& name) const {
    DWORD length = 0;
    wchar_t empty[1] = L"";
    MsiGetPropertyW(session_, name.c_str(), empty, &length);
    std::wstring value(length + 1, L'\0');
    length += 1;
    MsiGetPropertyW(session_, name.c_str(), value.data(), &length);
    value.resize(length);
    return value;
}

std::vector<std::wstring> TestSession::LogLines() const {
    std::vector<std::wstring> lines;
    for (const CapturedMessage& message : Captured())
        if (message.type == INSTALLMESSAGE_INFO)
            lines.push_back(message.text);
    return lines;
}

std::vector<CapturedMessage> TestSession::UserMessages() const {
    std::vector<CapturedMessage> shown;
    for (const CapturedMessage& message : Captured())
        if (message.type == INSTALLMESSAGE_USER)
            shown.push_back(message);
    return shown;
}

void TestSession::ClearMessages() { Captured().clear(); }

UINT CallExport(const char* exportName, MSIHANDLE session) {
    using Action = UINT(__stdcall*)(MSIHANDLE);
    const auto action =
        reinterpret_cast<Action>(reinterpret_cast<void*>(GetProcAddress(Library(), exportName)));
    if (!action)
        throw std::runtime_error(std::string("no export named ") + exportName);
    return action(session);
}

bool HasExport(const char* exportName) { return GetProcAddress(Library(), exportName) != nullptr; }
