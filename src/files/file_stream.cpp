// A COM stream over one file handle, for the XML reader and writer: sequential read and write,
// seek, size.
#include "files/file_stream.h"

#include <new>

HRESULT HResultFromLastError() {
    const DWORD error = GetLastError();
    if (error == 0)
        return 0;
    return static_cast<HRESULT>((error & 0xFFFF) | 0x80070000);
}

namespace {

HRESULT ResultOf(BOOL succeeded) {
    return succeeded ? S_OK : HResultFromLastError();
}

} // namespace

HRESULT FileStream::QueryInterface(REFIID interfaceId, void** object) {
    if (object == nullptr)
        return E_INVALIDARG;
    *object = nullptr;
    if (interfaceId != IID_IUnknown && interfaceId != IID_ISequentialStream &&
        interfaceId != IID_IStream)
        return E_NOINTERFACE;
    *object = static_cast<IStream*>(this);
    AddRef();
    return S_OK;
}

ULONG FileStream::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&referenceCount_));
}

ULONG FileStream::Release() {
    const LONG count = InterlockedDecrement(&referenceCount_);
    if (count == 0) {
        if (file_ != INVALID_HANDLE_VALUE)
            CloseHandle(file_);
        delete this;
    }
    return static_cast<ULONG>(count);
}

HRESULT FileStream::Read(void* buffer, ULONG count, ULONG* bytesRead) {
    return ResultOf(ReadFile(file_, buffer, count, bytesRead, nullptr));
}

HRESULT FileStream::Write(const void* buffer, ULONG count, ULONG* bytesWritten) {
    return ResultOf(WriteFile(file_, buffer, count, bytesWritten, nullptr));
}

HRESULT FileStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    DWORD method;
    switch (origin) {
    case STREAM_SEEK_SET:
        method = FILE_BEGIN;
        break;
    case STREAM_SEEK_CUR:
        method = FILE_CURRENT;
        break;
    case STREAM_SEEK_END:
        method = FILE_END;
        break;
    default:
        return STG_E_INVALIDFUNCTION;
    }
    return ResultOf(
        SetFilePointerEx(file_, move, reinterpret_cast<LARGE_INTEGER*>(newPosition), method));
}

HRESULT FileStream::Stat(STATSTG* status, DWORD) {
    return ResultOf(GetFileSizeEx(file_, reinterpret_cast<LARGE_INTEGER*>(&status->cbSize)));
}

HRESULT OpenFileStream(const std::wstring& fileName, IStream** stream, bool forWrite) {
    HANDLE file = CreateFileW(fileName.c_str(), forWrite ? GENERIC_WRITE : GENERIC_READ,
                              FILE_SHARE_READ, nullptr, forWrite ? CREATE_ALWAYS : OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return HResultFromLastError();
    FileStream* created = new (std::nothrow) FileStream(file);
    if (created == nullptr)
        CloseHandle(file);
    *stream = created;
    return S_OK;
}
