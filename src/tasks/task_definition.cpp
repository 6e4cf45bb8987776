// Copies a scheduled task's XML definition, giving each StartBoundary a fresh date and time.
#include "tasks/task_definition.h"

#include "files/file_stream.h"

#include <wrl/client.h>
#include <xmllite.h>

#include <chrono>
#include <cstdio>
#include <cwchar>
#include <iomanip>
#include <sstream>
#include <vector>

using Microsoft::WRL::ComPtr;

namespace {

std::time_t RuntimeClock() {
    return std::time(nullptr);
}

// The one element whose text is replaced; exact, case-sensitive, without prefix.
constexpr wchar_t StartBoundaryName[] = L"StartBoundary";

// Base URI handed to the reader input: "c:", a horizontal tab, "emp".
constexpr wchar_t ReaderBaseUri[] = L"c:\temp";

constexpr wchar_t SourceOpenFailed[] = L"Error creating file reader, error is %08.8lx";
constexpr wchar_t DestinationOpenFailed[] = L"Error creating file writer, error is %08.8lx";
constexpr wchar_t ReaderCreateFailed[] = L"Error creating xml reader, error is %08.8lx";
constexpr wchar_t EncodingFailed[] =
    L"Error creating xml reader with encoding code page, error is %08.8lx";
constexpr wchar_t WriterCreateFailed[] = L"Error creating xml writer, error is %08.8lx";
constexpr wchar_t SetInputFailed[] = L"Error setting input for reader, error is %08.8lx";
constexpr wchar_t SetOutputFailed[] = L"Error setting output for writer, error is %08.8lx";
constexpr wchar_t IndentFailed[] = L"Error setting indent property in writer, error is %08.8lx";
constexpr wchar_t ElementNameFailed[] = L"Error reading element name, error is %08.8lx";
constexpr wchar_t ValueFailed[] = L"Error reading value, error is %08.8lx";
constexpr wchar_t WriteStringFailed[] = L"Error writing WriteString, error is %08.8lx";
constexpr wchar_t FullEndElementFailed[] = L"Error writing WriteFullEndElement, error is %08.8lx";
constexpr wchar_t NodeShallowFailed[] = L"Error writing WriteNodeShallow, error is %08.8lx";

constexpr long long SecondsPerDay = 86400;

// A time span in the platform's 100-nanosecond units.
using Ticks = std::chrono::duration<long long, std::ratio<1, 10000000>>;

// Prints the failure line of a step to standard output and gives its HRESULT back.
HRESULT Report(const wchar_t* line, HRESULT result) {
    wprintf(line, static_cast<unsigned long>(result));
    return result;
}

// A number read from `text`, printed back at least two digits wide with leading zeros.
std::wstring TwoDigits(const std::wstring& text) {
    int value = 0;
    std::wistringstream(text) >> value;
    std::wostringstream printed;
    printed << std::setw(2) << std::setfill(L'0') << value;
    return printed.str();
}

std::wstring TwoDigits(int value) {
    return TwoDigits(std::to_wstring(value));
}

// Local midnight at the start of `today`'s date, the calendar record taken as standard time.
std::time_t MidnightOf(const std::tm& today) {
    std::tm midnight{};
    midnight.tm_year = today.tm_year;
    midnight.tm_mon = today.tm_mon;
    midnight.tm_mday = today.tm_mday;
    midnight.tm_isdst = 0;
    return std::mktime(&midnight);
}

// "YYYY-MM-DD" of the local date one day after `midnight`.
std::wstring DateOfNextDay(std::time_t midnight) {
    const Ticks sum =
        Ticks(std::chrono::seconds(midnight)) + Ticks(std::chrono::seconds(SecondsPerDay));
    const std::time_t tomorrow = std::chrono::duration_cast<std::chrono::seconds>(sum).count();
    std::wostringstream date;
    date << std::put_time(std::localtime(&tomorrow), L"%Y-%m-%d");
    return date.str();
}

// The first three parts of `date` split at "-", each printed with TwoDigits.
std::vector<std::wstring> DateParts(const std::wstring& date) {
    std::vector<std::wstring> parts;
    std::wistringstream stream(date);
    std::wstring part;
    while (std::getline(stream, part, L'-'))
        parts.push_back(TwoDigits(part));
    parts.resize(3);
    return parts;
}

// The six parts of the rewrite, released in this order on every path.
struct RewriteParts {
    ComPtr<IStream> source;
    ComPtr<IStream> destination;
    ComPtr<IXmlReader> reader;
    ComPtr<IXmlWriter> writer;
    ComPtr<IXmlReaderInput> readerInput;
    ComPtr<IXmlWriterOutput> writerOutput;

    ~RewriteParts() {
        source.Reset();
        destination.Reset();
        reader.Reset();
        writer.Reset();
        readerInput.Reset();
        writerOutput.Reset();
    }
};

// Opens both files, makes the reader and writer, and joins them to the files.
HRESULT SetUp(RewriteParts& parts, const std::wstring& sourcePath,
              const std::wstring& destinationPath) {
    HRESULT result = OpenFileStream(sourcePath, &parts.source, false);
    if (FAILED(result))
        return Report(SourceOpenFailed, result);
    result = OpenFileStream(destinationPath, &parts.destination, true);
    if (FAILED(result))
        return Report(DestinationOpenFailed, result);
    result = CreateXmlReader(__uuidof(IXmlReader), &parts.reader, nullptr);
    if (FAILED(result))
        return Report(ReaderCreateFailed, result);
    parts.reader->SetProperty(XmlReaderProperty_DtdProcessing, DtdProcessing_Prohibit);
    result = CreateXmlReaderInputWithEncodingName(parts.source.Get(), nullptr, L"utf-16", FALSE,
                                                  ReaderBaseUri, &parts.readerInput);
    if (FAILED(result))
        return Report(EncodingFailed, result);
    result = CreateXmlWriter(__uuidof(IXmlWriter), &parts.writer, nullptr);
    if (FAILED(result))
        return Report(WriterCreateFailed, result);
    result = CreateXmlWriterOutputWithEncodingName(parts.destination.Get(), nullptr, L"utf-16",
                                                   &parts.writerOutput);
    if (FAILED(result))
        return Report(EncodingFailed, result);
    result = parts.reader->SetInput(parts.readerInput.Get());
    if (FAILED(result))
        return Report(SetInputFailed, result);
    result = parts.writer->SetOutput(parts.writerOutput.Get());
    if (FAILED(result))
        return Report(SetOutputFailed, result);
    result = parts.writer->SetProperty(XmlWriterProperty_Indent, TRUE);
    if (FAILED(result))
        return Report(IndentFailed, result);
    return S_OK;
}

bool IsStartBoundary(const wchar_t* name) {
    return name != nullptr && wcscmp(name, StartBoundaryName) == 0;
}

// Writes a fresh start boundary in place of the reader's current text node.
HRESULT ReplaceText(IXmlReader* reader, IXmlWriter* writer) {
    const wchar_t* oldText = nullptr;
    HRESULT result = reader->GetValue(&oldText, nullptr);
    if (FAILED(result))
        return Report(ValueFailed, result);
    if (oldText == nullptr || oldText[0] == L'\0')
        return E_UNEXPECTED;
    result = writer->WriteString(NextStartBoundary(ReadClock()).c_str());
    if (FAILED(result))
        return Report(WriteStringFailed, result);
    return S_OK;
}

// The node loop: every node is copied shallowly, end elements are written in full, and the
// text inside a StartBoundary is replaced. Ends with the first non-zero result of Read.
HRESULT CopyNodes(IXmlReader* reader, IXmlWriter* writer) {
    bool insideStartBoundary = false;
    XmlNodeType nodeType;
    HRESULT result = reader->Read(&nodeType);
    while (result == S_OK) {
        const wchar_t* name = nullptr;
        bool copy = true;
        if (nodeType == XmlNodeType_Element && !reader->IsEmptyElement()) {
            result = reader->GetQualifiedName(&name, nullptr);
            if (FAILED(result))
                return Report(ElementNameFailed, result);
            insideStartBoundary = IsStartBoundary(name);
        } else if (nodeType == XmlNodeType_Text && insideStartBoundary) {
            result = ReplaceText(reader, writer);
            if (result != S_OK)
                return result;
            insideStartBoundary = false;
            copy = false;
        } else if (nodeType == XmlNodeType_EndElement) {
            result = reader->GetQualifiedName(&name, nullptr);
            if (FAILED(result))
                return Report(ElementNameFailed, result);
            if (IsStartBoundary(name))
                insideStartBoundary = false;
            result = writer->WriteFullEndElement();
            if (FAILED(result))
                return Report(FullEndElementFailed, result);
            copy = false;
        }
        if (copy) {
            result = writer->WriteNodeShallow(reader, FALSE);
            if (FAILED(result))
                return Report(NodeShallowFailed, result);
        }
        result = reader->Read(&nodeType);
    }
    return result;
}

} // namespace

ClockReader ReadClock = &RuntimeClock;

std::wstring NextStartBoundary(std::time_t now) {
    const std::tm today = *std::localtime(&now);
    const std::vector<std::wstring> date = DateParts(DateOfNextDay(MidnightOf(today)));
    return date[0] + L"-" + date[1] + L"-" + date[2] + L"T" + TwoDigits(today.tm_hour) + L":" +
           TwoDigits(today.tm_min) + L":" + TwoDigits(today.tm_sec);
}

HRESULT RewriteStartBoundary(std::wstring sourcePath, std::wstring destinationPath) {
    RewriteParts parts;
    const HRESULT result = SetUp(parts, sourcePath, destinationPath);
    if (FAILED(result))
        return result;
    return CopyNodes(parts.reader.Get(), parts.writer.Get());
}
