// A real installer session for behaviour tests: a small generated package, every INFO and USER
// message captured, and the library's exports called through its real export table.
#pragma once

#include <windows.h>

#include <msi.h>
#include <msiquery.h>

#include <map>
#include <string>
#include <vector>

struct CapturedMessage {
    UINT type; // INSTALLMESSAGE_INFO, INSTALLMESSAGE_USER, ... with the flags masked off
    UINT flags;
    std::wstring text;
};

// Rows of the package's TESSEL_InstallProperties table (Property -> Value).
using InstallProperties = std::map<std::wstring, std::wstring>;

// While it lives, the core's SessionHandle is this session, so that helpers called directly log
// into it.
class TestSession {
public:
    explicit TestSession(const InstallProperties& installProperties = {});
    ~TestSession();
    TestSession(const TestSession&) = delete;
    TestSession& operator=(const TestSession&) = delete;

    MSIHANDLE Handle() const { return session_; }
    void SetProperty(const std::wstring& name, const std::wstring& value);
    std::wstring Property(const std::wstring& name) const;

    // Texts of the INFO messages (log lines) since the session opened or was cleared.
    std::vector<std::wstring> LogLines() const;
    // The USER messages (shown to the user).
    std::vector<CapturedMessage> UserMessages() const;
    void ClearMessages();

private:
    std::wstring packagePath_;
    MSIHANDLE session_ = 0;
};

// Calls an export of the built library by its name, through LoadLibraryW and GetProcAddress.
UINT CallExport(const char* exportName, MSIHANDLE session);
// True when the built library exports `exportName` under exactly that name.
bool HasExport(const char* exportName);

// The path of a program the build puts beside the test program.
std::wstring BesideTestProgram(const std::wstring& name);
// A new GUID in braces, for names that no other run uses.
std::wstring NewGuid();
// Narrow text for readable assertion output.
std::string Narrow(const std::wstring& text);
