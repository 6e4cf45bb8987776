// The stream over a file on Wine's real file system: open modes, errors, seeking, size and
// references.
#include "files/file_stream.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::wstring TempFile(const wchar_t* name) {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    return std::wstring(folder) + L"file_stream_" + name;
}

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

std::string ReadBytes(const std::wstring& path) {
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    std::string bytes(4096, '\0');
    DWORD read = 0;
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    CloseHandle(file);
    bytes.resize(read);
    return bytes;
}

// The current position, found by a relative seek of 0.
ULONGLONG Position(IStream* stream) {
    ULARGE_INTEGER position{};
    stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position);
    return position.QuadPart;
}

LARGE_INTEGER Offset(LONGLONG value) {
    LARGE_INTEGER offset;
    offset.QuadPart = value;
    return offset;
}

} // namespace

TEST(FileStream, WritesCreateOrTruncateAndReadsEndWithAShortSuccessfulRead) {
    const std::wstring path = TempFile(L"roundtrip.bin");
    WriteBytes(path, "a much longer former content");
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, true));
    ULONG written = 0;
    EXPECT_EQ(S_OK, stream->Write("new", 3, &written));
    EXPECT_EQ(3u, written);
    EXPECT_EQ(0u, stream->Release());
    EXPECT_EQ("new", ReadBytes(path));

    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, false));
    char buffer[16] = {};
    ULONG read = 0;
    EXPECT_EQ(S_OK, stream->Read(buffer, sizeof buffer, &read));
    EXPECT_EQ(3u, read);
    EXPECT_EQ(S_OK, stream->Read(buffer, sizeof buffer, &read));
    EXPECT_EQ(0u, read);
    stream->Release();
    DeleteFileW(path.c_str());
}

TEST(FileStream, FailedOpensAndCallsGiveTheLastErrorAsAnHresult) {
    IStream* untouched = reinterpret_cast<IStream*>(0x1234);
    EXPECT_EQ(static_cast<HRESULT>(0x80070002),
              OpenFileStream(TempFile(L"missing.bin"), &untouched, false));
    EXPECT_EQ(static_cast<HRESULT>(0x80070003),
              OpenFileStream(TempFile(L"no folder\\x.bin"), &untouched, true));
    EXPECT_EQ(reinterpret_cast<IStream*>(0x1234), untouched);

    // A stream opened for writing cannot read: ERROR_ACCESS_DENIED through the same mapping.
    const std::wstring path = TempFile(L"writeonly.bin");
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, true));
    char buffer[4];
    ULONG read = 0;
    EXPECT_EQ(static_cast<HRESULT>(0x80070005), stream->Read(buffer, sizeof buffer, &read));
    stream->Release();
    DeleteFileW(path.c_str());
}

TEST(FileStream, SeeksFromEachOriginAndRefusesAnyOtherWithoutMoving) {
    const std::wstring path = TempFile(L"seek.bin");
    WriteBytes(path, "0123456789");
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, false));
    ULARGE_INTEGER position{};
    EXPECT_EQ(S_OK, stream->Seek(Offset(4), STREAM_SEEK_SET, &position));
    EXPECT_EQ(4u, position.QuadPart);
    EXPECT_EQ(S_OK, stream->Seek(Offset(2), STREAM_SEEK_CUR, &position));
    EXPECT_EQ(6u, position.QuadPart);
    EXPECT_EQ(S_OK, stream->Seek(Offset(-3), STREAM_SEEK_END, &position));
    EXPECT_EQ(7u, position.QuadPart);

    EXPECT_EQ(static_cast<HRESULT>(0x80030001), stream->Seek(Offset(1), 3, &position));
    EXPECT_EQ(7u, Position(stream));
    char digit = 0;
    ULONG read = 0;
    stream->Read(&digit, 1, &read);
    EXPECT_EQ('7', digit);

    // A position before the start is the platform's ERROR_NEGATIVE_SEEK (131).
    EXPECT_EQ(static_cast<HRESULT>(0x80070083), stream->Seek(Offset(-1), STREAM_SEEK_SET, nullptr));
    stream->Release();
    DeleteFileW(path.c_str());
}

TEST(FileStream, StatFillsOnlyTheSize) {
    const std::wstring path = TempFile(L"stat.bin");
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, true));
    STATSTG status;
    memset(&status, 0xAB, sizeof status);
    EXPECT_EQ(S_OK, stream->Stat(&status, STATFLAG_DEFAULT));
    EXPECT_EQ(0u, status.cbSize.QuadPart);
    EXPECT_EQ(0xABABABABu, status.type);
    EXPECT_EQ(0xABABABABu, status.grfMode);

    ULONG written = 0;
    stream->Write("12345", 5, &written);
    EXPECT_EQ(S_OK, stream->Stat(&status, STATFLAG_DEFAULT));
    EXPECT_EQ(5u, status.cbSize.QuadPart);
    stream->Release();
    DeleteFileW(path.c_str());
}

TEST(FileStream, InterfacesShareOneCountAndTheFileClosesAtTheLastRelease) {
    const std::wstring path = TempFile(L"references.bin");
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, true));

    for (const IID& id : {IID_IUnknown, IID_ISequentialStream, IID_IStream}) {
        void* object = nullptr;
        EXPECT_EQ(S_OK, stream->QueryInterface(id, &object));
        EXPECT_EQ(static_cast<void*>(stream), object);
        EXPECT_EQ(3u, stream->AddRef());
        EXPECT_EQ(2u, stream->Release());
        EXPECT_EQ(1u, static_cast<IUnknown*>(object)->Release());
    }
    void* other = reinterpret_cast<void*>(0x1234);
    EXPECT_EQ(E_NOINTERFACE, stream->QueryInterface(IID_IPersistFile, &other));
    EXPECT_EQ(nullptr, other);
    EXPECT_EQ(E_INVALIDARG, stream->QueryInterface(IID_IStream, nullptr));

    // Still open, shared for reading only: the file cannot be deleted until the last release.
    EXPECT_FALSE(DeleteFileW(path.c_str()));
    EXPECT_EQ(0u, stream->Release());
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}
