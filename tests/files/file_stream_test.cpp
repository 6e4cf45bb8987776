// The stream over a file on Wine's real file system: open modes, errors, seeking, size and
// references.
#include "files/file_stream.h"

#include "harness/scratch_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

std::string ReadBytes(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

ULONGLONG Size(IStream* stream) {
    STATSTG status;
    memset(&status, 0xAB, sizeof status);
    EXPECT_EQ(S_OK, stream->Stat(&status, STATFLAG_DEFAULT));
    EXPECT_EQ(0xABABABABu, status.type) << "only the size is filled";
    EXPECT_EQ(0xABABABABu, status.grfMode);
    return status.cbSize.QuadPart;
}

} // namespace

TEST(FileStream, WritesTruncateFirstReadsEndWithAShortSuccessAndEachModeRefusesTheOther) {
    ScratchFolder folder;
    const std::wstring path = folder.MakeFile(L"file.bin", "a much longer former content");
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, true));
    EXPECT_EQ(0u, Size(stream));
    ULONG written = 0;
    EXPECT_EQ(S_OK, stream->Write("new", 3, &written));
    EXPECT_EQ(3u, written);
    EXPECT_EQ(3u, Size(stream));
    char buffer[16] = {};
    ULONG read = 0;
    EXPECT_EQ(static_cast<HRESULT>(0x80070005), stream->Read(buffer, sizeof buffer, &read));
    EXPECT_EQ(0u, stream->Release());
    EXPECT_EQ("new", ReadBytes(path));

    ASSERT_EQ(S_OK, OpenFileStream(path, &stream, false));
    for (ULONG expected : {3u, 0u}) {
        EXPECT_EQ(S_OK, stream->Read(buffer, sizeof buffer, &read));
        EXPECT_EQ(expected, read);
    }
    stream->Release();
}

TEST(FileStream, FailedOpensGiveTheLastErrorAsAnHresultAndLeaveTheStream) {
    ScratchFolder folder;
    IStream* untouched = reinterpret_cast<IStream*>(0x1234);
    EXPECT_EQ(static_cast<HRESULT>(0x80070002),
              OpenFileStream(folder / L"missing.bin", &untouched, false));
    EXPECT_EQ(static_cast<HRESULT>(0x80070003),
              OpenFileStream(folder / L"no folder\\x.bin", &untouched, true));
    EXPECT_EQ(reinterpret_cast<IStream*>(0x1234), untouched);
}

TEST(FileStream, SeeksFromEachOriginAndRefusesAnyOtherWithoutMoving) {
    ScratchFolder folder;
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(folder.MakeFile(L"seek.bin", "0123456789"), &stream, false));
    const struct {
        LONGLONG offset;
        DWORD origin;
        HRESULT result;
        ULONGLONG position;
    } cases[] = {
        {4, STREAM_SEEK_SET, S_OK, 4},
        {2, STREAM_SEEK_CUR, S_OK, 6},
        {-3, STREAM_SEEK_END, S_OK, 7},
        {1, 3, static_cast<HRESULT>(0x80030001), 7},
        {-1, STREAM_SEEK_SET, static_cast<HRESULT>(0x80070083), 7}, // ERROR_NEGATIVE_SEEK
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.offset);
        LARGE_INTEGER move;
        move.QuadPart = each.offset;
        ULARGE_INTEGER moved{};
        EXPECT_EQ(each.result, stream->Seek(move, each.origin, &moved));
        if (each.result == S_OK) {
            EXPECT_EQ(each.position, moved.QuadPart);
        }
        ULARGE_INTEGER now{};
        stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &now);
        EXPECT_EQ(each.position, now.QuadPart);
    }
    stream->Release();
}

TEST(FileStream, InterfacesShareOneCountAndTheFileClosesAtTheLastRelease) {
    ScratchFolder folder;
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, OpenFileStream(folder / L"references.bin", &stream, true));
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

    // Shared for reading only: the file cannot be deleted until the last release closes it.
    EXPECT_FALSE(DeleteFileW((folder / L"references.bin").c_str()));
    EXPECT_EQ(0u, stream->Release());
    EXPECT_TRUE(DeleteFileW((folder / L"references.bin").c_str()));
}
