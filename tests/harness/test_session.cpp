// Builds a minimal package (its summary and the TESSEL_InstallProperties table) with the
// installer's own database calls, opens it as a session and captures the session's messages through
// the external UI record handler.
#include "harness/test_session.h"

#include "frame/action_frame.h"
#include "frame/msi_handle.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <functional>
#include <stdexcept>

namespace {

std::vector<CapturedMessage>& Captured() {
    static std::vector<CapturedMessage> messages;
    return messages;
}

// A text of any length from a call that takes a buffer and its size in characters.
std::wstring Fetched(const std::function<void(wchar_t*, DWORD*)>& fetch) {
    DWORD length = 0;
    wchar_t empty[1] = L"";
    fetch(empty, &length);
    std::wstring text(++length, L'\0');
    fetch(text.data(), &length);
    text.resize(length);
    return text;
}

INT CALLBACK CaptureMessage(LPVOID, UINT type, MSIHANDLE record) {
    if (record != 0)
        Captured().push_back({type & 0xFF000000u, type & 0x00FFFFFFu,
                              Fetched([record](wchar_t* text, DWORD* length) {
                                  MsiRecordGetStringW(record, 0, text, length);
                              })});
    return IDOK;
}

void Execute(MSIHANDLE database, const std::wstring& sql) {
    MsiHandle view;
    if (MsiDatabaseOpenViewW(database, sql.c_str(), view.Receive()) != ERROR_SUCCESS ||
        MsiViewExecute(view.Get(), 0) != ERROR_SUCCESS)
        throw std::runtime_error("query failed: " + Narrow(sql));
}

void WritePackage(const std::wstring& path, const InstallProperties& rows) {
    MsiHandle database;
    if (MsiOpenDatabaseW(path.c_str(), MSIDBOPEN_CREATE, database.Receive()) != ERROR_SUCCESS)
        throw std::runtime_error("cannot create test package");
    Execute(database.Get(), L"CREATE TABLE `TESSEL_InstallProperties` (`Property` CHAR(72) NOT "
                            L"NULL, `Value` LONGCHAR PRIMARY KEY `Property`)");
    for (const auto& [name, value] : rows)
        Execute(database.Get(), L"INSERT INTO `TESSEL_InstallProperties` (`Property`, `Value`) "
                                L"VALUES ('" +
                                    name + L"', '" + value + L"')");
    MsiHandle summary;
    MsiGetSummaryInformationW(database.Get(), nullptr, 20, summary.Receive());
    MsiSummaryInfoSetPropertyW(summary.Get(), 7, VT_LPSTR, 0, nullptr, L"x64;1033");
    MsiSummaryInfoSetPropertyW(summary.Get(), 9, VT_LPSTR, 0, nullptr, NewGuid().c_str());
    MsiSummaryInfoSetPropertyW(summary.Get(), 14, VT_I4, 200, nullptr, nullptr);
    MsiSummaryInfoPersist(summary.Get());
    MsiDatabaseCommit(database.Get());
}

HMODULE Library() {
    static HMODULE library = LoadLibraryW(L"Calder_CA.dll");
    if (!library)
        throw std::runtime_error("Calder_CA.dll not found beside the test program");
    return library;
}

} // namespace

std::wstring BesideTestProgram(const std::wstring& name) {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const std::wstring path = self;
    return path.substr(0, path.rfind(L'\\') + 1) + name;
}

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
    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    packagePath_ = temp + (L"calder-" + NewGuid() + L".msi");
    WritePackage(packagePath_, installProperties);
    MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
    MsiSetExternalUIRecord(&CaptureMessage, INSTALLLOGMODE_INFO | INSTALLLOGMODE_USER, nullptr,
                           nullptr);
    const UINT status = MsiOpenPackageW(packagePath_.c_str(), &session_);
    if (status != ERROR_SUCCESS)
        throw std::runtime_error("MsiOpenPackageW failed: " + std::to_string(status));
    SessionHandle = session_;
    ClearMessages();
}

TestSession::~TestSession() {
    if (SessionHandle == session_)
        SessionHandle = 0;
    MsiCloseHandle(session_);
    DeleteFileW(packagePath_.c_str());
}

void TestSession::SetProperty(const std::wstring& name, const std::wstring& value) {
    ASSERT_EQ(ERROR_SUCCESS, MsiSetPropertyW(session_, name.c_str(), value.c_str()));
}

std::wstring TestSession::Property(const std::wstring& name) const {
    return Fetched([&](wchar_t* value, DWORD* length) {
        MsiGetPropertyW(session_, name.c_str(), value, length);
    });
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

void TestSession::ClearMessages() {
    Captured().clear();
}

UINT CallExport(const char* exportName, MSIHANDLE session) {
    const auto action = reinterpret_cast<UINT(__stdcall*)(MSIHANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(Library(), exportName)));
    if (!action)
        throw std::runtime_error(std::string("no export named ") + exportName);
    return action(session);
}

bool HasExport(const char* exportName) {
    return GetProcAddress(Library(), exportName) != nullptr;
}
