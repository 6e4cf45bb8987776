// The task definition rewriter on real files through the platform's XML reader and writer. No
// whitespace between tags, under 8 KB of UTF-16: Wine 8's writer and reader fail on either.
#include "tasks/task_definition.h"

#include "harness/scratch_folder.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

namespace {

std::time_t LocalTime(const char* text) {
    std::tm calendar{};
    std::istringstream(text) >> std::get_time(&calendar, "%Y-%m-%d %H:%M:%S");
    calendar.tm_isdst = -1;
    return std::mktime(&calendar);
}

// Binds the rewriter's clock to 22 February 2019, 09:05:07, one second later at every reading.
class FixedClock {
public:
    FixedClock() {
        next_ = LocalTime("2019-02-22 09:05:07");
        ReadClock = [] { return next_++; };
    }
    ~FixedClock() { ReadClock = previous_; }

private:
    static inline std::time_t next_;
    ClockReader previous_ = ReadClock;
};

// A UTF-16 file with its byte order mark, as the writer makes it and schtasks wants it.
std::wstring WriteDefinition(const ScratchFolder& folder, const std::wstring& text) {
    const std::wstring marked = L"\xFEFF" + text;
    return folder.MakeFile(L"source.xml", std::string(reinterpret_cast<const char*>(marked.data()),
                                                      marked.size() * sizeof(wchar_t)));
}

std::wstring ReadDefinition(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / 2);
}

// The writer's indentation taken out: every line break with the blanks after it.
std::wstring WithoutIndentation(std::wstring text) {
    for (size_t at = text.find(L"\r\n"); at != std::wstring::npos; at = text.find(L"\r\n", at))
        text.erase(at, text.find_first_not_of(L' ', at + 2) - at);
    return text;
}

const std::wstring Declaration = L"<?xml version=\"1.0\" encoding=\"utf-16\"?>";
const std::wstring Head =
    L"<!-- made by hand --><?task-tool mode=\"logon\"?><Task version=\"1.2\" id=\"a\">"
    L"<LogonTrigger enabled=\"true\"><StartBoundary>";
const std::wstring Tail = L"</StartBoundary><Delay></Delay><UserId /></LogonTrigger>"
                          L"<Exec Context=\"Author\"><Command>rexcmd.exe</Command></Exec></Task>";

} // namespace

TEST(NextStartBoundary, IsTomorrowsDateWithTodaysTimeOfDay) {
    const std::pair<const char*, const wchar_t*> cases[] = {
        {"2019-02-22 09:05:07", L"2019-02-23T09:05:07"},
        {"2019-01-31 00:00:00", L"2019-02-01T00:00:00"},
        {"2019-02-28 13:30:00", L"2019-03-01T13:30:00"},
        {"2020-02-28 01:02:03", L"2020-02-29T01:02:03"},
        {"2020-04-30 12:00:59", L"2020-05-01T12:00:59"},
        {"2019-12-31 23:59:59", L"2020-01-01T23:59:59"},
    };
    for (const auto& [now, boundary] : cases)
        EXPECT_EQ(boundary, NextStartBoundary(LocalTime(now))) << now;
}

// Each definition is rewritten over an older copy; the source stays as it was and nothing is
// printed, also when the reader stops.
TEST(RewriteStartBoundary, CopiesNodeByNodeReplacingOnlyStartBoundaryTexts) {
    const struct {
        const char* what;
        std::wstring input;
        HRESULT result;
        std::wstring output; // without the writer's indentation
    } cases[] = {
        {"every other node passes through", Declaration + Head + L"2010-06-01T08:00:00" + Tail,
         S_FALSE, Declaration + Head + L"2019-02-23T09:05:07" + Tail},
        {"only direct texts, each afresh",
         L"<Task><StartBoundary>old</StartBoundary><StartBoundary/><StartBoundary></StartBoundary>"
         L"<StartBoundary><Inner>kept</Inner></StartBoundary><startboundary>kept</startboundary>"
         L"<StartBoundary>old</StartBoundary></Task>",
         S_FALSE,
         L"<Task><StartBoundary>2019-02-23T09:05:07</StartBoundary><StartBoundary />"
         L"<StartBoundary></StartBoundary><StartBoundary><Inner>kept</Inner></StartBoundary>"
         L"<startboundary>kept</startboundary><StartBoundary>2019-02-23T09:05:08</StartBoundary>"
         L"</Task>"},
        {"a document type stops the reader",
         Declaration + L"<!-- kept --><!DOCTYPE Task []><Task/>", static_cast<HRESULT>(0xC00CEE4F),
         Declaration + L"<!-- kept -->"},
        {"a mismatched end tag stops the reader",
         L"<Task><StartBoundary>old</StartBoundary><Exec>x</Command></Task>",
         static_cast<HRESULT>(0xC00CEE3B),
         L"<Task><StartBoundary>2019-02-23T09:05:07</StartBoundary><Exec>x"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        ScratchFolder folder;
        const std::wstring source = WriteDefinition(folder, each.input);
        const std::wstring destination = folder.MakeFile(L"copy.xml", "an older, longer copy");
        FixedClock clock;
        testing::internal::CaptureStdout();
        EXPECT_EQ(each.result, RewriteStartBoundary(source, destination));
        EXPECT_EQ("", testing::internal::GetCapturedStdout());
        const std::wstring output = ReadDefinition(destination);
        EXPECT_EQ(L"\xFEFF" + each.output, WithoutIndentation(output));
        EXPECT_EQ(L"\xFEFF" + each.input, ReadDefinition(source));
        if (each.result == S_FALSE) {
            EXPECT_NE(std::wstring::npos, output.find(L"  <StartBoundary>2019-02-23T09:05:07<"))
                << Narrow(output);
        }
    }
}

TEST(RewriteStartBoundary, AFileThatCannotBeOpenedPrintsItsLineAndMakesNoCopy) {
    ScratchFolder folder;
    const std::wstring source = WriteDefinition(folder, L"<Task/>");
    const struct {
        std::wstring source, destination;
        HRESULT result;
        const char* line;
    } cases[] = {
        {folder / L"missing.xml", folder / L"copy.xml", static_cast<HRESULT>(0x80070002),
         "Error creating file reader, error is 80070002"},
        {source, folder / L"no folder\\copy.xml", static_cast<HRESULT>(0x80070003),
         "Error creating file writer, error is 80070003"},
    };
    for (const auto& each : cases) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(each.result, RewriteStartBoundary(each.source, each.destination));
        EXPECT_EQ(each.line, testing::internal::GetCapturedStdout());
        EXPECT_FALSE(PathPresent(each.destination));
    }
}
