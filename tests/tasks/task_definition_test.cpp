// The task definition rewriter on real files through the platform's XML reader and writer.
//
// The definitions here carry no whitespace between tags and stay under 8 KB: Wine 8's writer
// refuses a whitespace node anywhere but right after a start tag, and its reader repeats its first
// 8 KB of a UTF-16 input forever. Both are the platform's faults, not the rewriter's.
#include "tasks/task_definition.h"

#include "harness/test_session.h"

#include <fcntl.h>
#include <io.h>
#include <psapi.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

std::wstring TempFile(const std::wstring& name) {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    return std::wstring(folder) + L"task_definition_" + name;
}

void WriteBytes(const std::wstring& path, const void* bytes, size_t size, bool append = false) {
    HANDLE file = CreateFileW(path.c_str(), append ? FILE_APPEND_DATA : GENERIC_WRITE, 0, nullptr,
                              append ? OPEN_ALWAYS : CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr);
    CloseHandle(file);
}

// A definition file in UTF-16 with its byte order mark.
void WriteDefinition(const std::wstring& path, const std::wstring& text) {
    const std::wstring withMark = L"\xFEFF" + text;
    WriteBytes(path, withMark.data(), withMark.size() * sizeof(wchar_t));
}

// The UTF-16 text of a file, byte order mark included.
std::wstring ReadDefinition(const std::wstring& path) {
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr);
    std::wstring text(65536, L'\0');
    DWORD read = 0;
    ReadFile(file, text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)), &read, nullptr);
    CloseHandle(file);
    text.resize(read / sizeof(wchar_t));
    return text;
}

// The writer's indentation taken out: every line break with the blanks after it.
std::wstring WithoutIndentation(std::wstring text) {
    for (size_t at = text.find(L"\r\n"); at != std::wstring::npos; at = text.find(L"\r\n", at))
        text.erase(at, text.find_first_not_of(L' ', at + 2) - at);
    return text;
}

std::time_t LocalTime(int year, int month, int day, int hour, int minute, int second) {
    std::tm calendar{};
    calendar.tm_year = year - 1900;
    calendar.tm_mon = month - 1;
    calendar.tm_mday = day;
    calendar.tm_hour = hour;
    calendar.tm_min = minute;
    calendar.tm_sec = second;
    calendar.tm_isdst = -1;
    return std::mktime(&calendar);
}

// Binds the rewriter's clock to a fixed time that advances by one second at every reading.
class FixedClock {
public:
    explicit FixedClock(std::time_t start) {
        next_ = start;
        ReadClock = &Read;
    }
    ~FixedClock() { ReadClock = previous_; }

private:
    static std::time_t Read() { return next_++; }
    static inline std::time_t next_ = 0;
    ClockReader previous_ = ReadClock;
};

// What the process writes to its standard output while it lives.
class CapturedOutput {
public:
    CapturedOutput() : path_(TempFile(L"stdout.txt")) {
        fflush(stdout);
        saved_ = _dup(1);
        const int file = _wopen(path_.c_str(), _O_CREAT | _O_TRUNC | _O_WRONLY, _S_IWRITE);
        _dup2(file, 1);
        _close(file);
    }
    ~CapturedOutput() {
        Restore();
        DeleteFileW(path_.c_str());
    }

    std::string Text() {
        Restore();
        std::string text(4096, '\0');
        FILE* file = _wfopen(path_.c_str(), L"rb");
        text.resize(fread(text.data(), 1, text.size(), file));
        fclose(file);
        return text;
    }

private:
    void Restore() {
        if (saved_ < 0)
            return;
        fflush(stdout);
        _dup2(saved_, 1);
        _close(saved_);
        saved_ = -1;
    }
    std::wstring path_;
    int saved_ = -1;
};

SIZE_T PeakWorkingSet() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PeakWorkingSetSize;
}

const std::wstring Source = TempFile(L"source.xml");
const std::wstring Destination = TempFile(L"destination.xml");

constexpr wchar_t Declaration[] = L"<?xml version=\"1.0\" encoding=\"utf-16\"?>";

// Rewrites `definition` at the fixed time of 22 February 2019, 09:05:07.
HRESULT Rewrite(const std::wstring& definition) {
    WriteDefinition(Source, definition);
    FixedClock clock(LocalTime(2019, 2, 22, 9, 5, 7));
    return RewriteStartBoundary(Source, Destination);
}

} // namespace

TEST(NextStartBoundary, IsTomorrowsDateWithTodaysTimeOfDay) {
    EXPECT_EQ(L"2019-02-23T09:05:07", NextStartBoundary(LocalTime(2019, 2, 22, 9, 5, 7)));
    EXPECT_EQ(L"2019-02-01T00:00:00", NextStartBoundary(LocalTime(2019, 1, 31, 0, 0, 0)));
    EXPECT_EQ(L"2019-03-01T13:30:00", NextStartBoundary(LocalTime(2019, 2, 28, 13, 30, 0)));
    EXPECT_EQ(L"2020-02-29T01:02:03", NextStartBoundary(LocalTime(2020, 2, 28, 1, 2, 3)));
    EXPECT_EQ(L"2020-05-01T12:00:59", NextStartBoundary(LocalTime(2020, 4, 30, 12, 0, 59)));
    EXPECT_EQ(L"2020-01-01T23:59:59", NextStartBoundary(LocalTime(2019, 12, 31, 23, 59, 59)));
}

TEST(RewriteStartBoundary, CopiesEveryOtherNodeAndChangesOnlyTheStartBoundaryText) {
    const std::wstring body =
        L"<!-- made by hand --><?task-tool mode=\"logon\"?>"
        L"<Task version=\"1.2\" id=\"main\"><Triggers><LogonTrigger enabled=\"true\">"
        L"<StartBoundary>%s</StartBoundary><Delay></Delay><UserId /></LogonTrigger></Triggers>"
        L"<Actions Context=\"Author\"><Exec><Command>rexcmd.exe</Command></Exec></Actions></Task>";
    std::wstring input = Declaration + body;
    std::wstring expected = input;
    input.replace(input.find(L"%s"), 2, L"2010-06-01T08:00:00");
    expected.replace(expected.find(L"%s"), 2, L"2019-02-23T09:05:07");

    EXPECT_EQ(S_FALSE, Rewrite(input));
    const std::wstring output = ReadDefinition(Destination);
    EXPECT_EQ(L"\xFEFF" + expected, WithoutIndentation(output));
    EXPECT_NE(std::wstring::npos, output.find(L"\r\n      <StartBoundary>2019-02-23T09:05:07<"))
        << Narrow(output);
    EXPECT_EQ(L"\xFEFF" + input, ReadDefinition(Source));
}

TEST(RewriteStartBoundary, OnlyTheDirectTextOfAStartBoundaryIsReplacedEachTimeAfresh) {
    const std::wstring input =
        L"<Task><StartBoundary>old</StartBoundary><StartBoundary/><StartBoundary></StartBoundary>"
        L"<StartBoundary><Inner>kept</Inner></StartBoundary><startboundary>kept too</startboundary>"
        L"<StartBoundary>old</StartBoundary></Task>";
    EXPECT_EQ(S_FALSE, Rewrite(input));
    EXPECT_EQ(L"\xFEFF<Task><StartBoundary>2019-02-23T09:05:07</StartBoundary><StartBoundary />"
              L"<StartBoundary></StartBoundary><StartBoundary><Inner>kept</Inner></StartBoundary>"
              L"<startboundary>kept too</startboundary>"
              L"<StartBoundary>2019-02-23T09:05:08</StartBoundary></Task>",
              WithoutIndentation(ReadDefinition(Destination)));
}

TEST(RewriteStartBoundary, StopsAtAReaderErrorKeepingWhatWasWrittenWithoutALine) {
    WriteDefinition(Destination, L"an older copy, truncated before the source is read");
    CapturedOutput printed;
    EXPECT_EQ(static_cast<HRESULT>(0xC00CEE4F),
              Rewrite(std::wstring(Declaration) + L"<!-- kept --><!DOCTYPE Task []><Task/>"));
    EXPECT_EQ(L"\xFEFF" + std::wstring(Declaration) + L"<!-- kept -->",
              WithoutIndentation(ReadDefinition(Destination)));

    EXPECT_EQ(static_cast<HRESULT>(0xC00CEE3B),
              Rewrite(L"<Task><StartBoundary>old</StartBoundary><Exec>x</Command></Task>"));
    EXPECT_EQ(L"\xFEFF<Task><StartBoundary>2019-02-23T09:05:07</StartBoundary><Exec>x",
              WithoutIndentation(ReadDefinition(Destination)));
    EXPECT_EQ("", printed.Text());
}

TEST(RewriteStartBoundary, AFileThatCannotBeOpenedPrintsItsLineAndMakesNoCopy) {
    WriteDefinition(Source, L"<Task/>");
    DeleteFileW(Destination.c_str());
    {
        CapturedOutput printed;
        EXPECT_EQ(static_cast<HRESULT>(0x80070002),
                  RewriteStartBoundary(TempFile(L"missing.xml"), Destination));
        EXPECT_EQ("Error creating file reader, error is 80070002", printed.Text());
        EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(Destination.c_str()));
    }
    CapturedOutput printed;
    EXPECT_EQ(static_cast<HRESULT>(0x80070003),
              RewriteStartBoundary(Source, TempFile(L"no folder\\copy.xml")));
    EXPECT_EQ("Error creating file writer, error is 80070003", printed.Text());
}

// A definition of 10 MB streams through the reader: it is declared UTF-8, which the reader's
// encoding hint gives way to, because Wine's reader cannot go past 8 KB of UTF-16. Wine's writer
// keeps its whole output until it is released, so the peak grows by about the output's size.
TEST(RewriteStartBoundary, ALargeDefinitionIsCopiedWholeWithoutHoldingTheInput) {
    const std::string head = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?><Task>"
                             "<StartBoundary>2010-06-01T08:00:00</StartBoundary>";
    std::string items;
    while (items.size() < 64 * 1024)
        items += "<Item>abcdefghijklmnopqrstuvwxyz</Item>";
    WriteBytes(Source, head.data(), head.size());
    for (size_t size = head.size(); size < 10 * 1024 * 1024; size += items.size())
        WriteBytes(Source, items.data(), items.size(), true);
    WriteBytes(Source, "</Task>", 7, true);

    const SIZE_T before = PeakWorkingSet();
    FixedClock clock(LocalTime(2019, 2, 22, 9, 5, 7));
    EXPECT_EQ(S_FALSE, RewriteStartBoundary(Source, Destination));
    const SIZE_T growth = PeakWorkingSet() - before;

    WIN32_FILE_ATTRIBUTE_DATA copy{};
    GetFileAttributesExW(Destination.c_str(), GetFileExInfoStandard, &copy);
    RecordProperty("PeakWorkingSetGrowthKB", std::to_string(growth / 1024));
    EXPECT_GT(copy.nFileSizeLow, 20u * 1024 * 1024);
    EXPECT_LT(growth, 2 * static_cast<SIZE_T>(copy.nFileSizeLow)) << growth;
    DeleteFileW(Source.c_str());
    DeleteFileW(Destination.c_str());
}
