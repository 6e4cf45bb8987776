// A COM stream over one file handle, for the XML reader and writer: sequential read and write,
// seek, size.
#pragma once

#include <windows.h>

#include <objidl.h>

#include <string>

// The calling thread's last error as an HRESULT: a positive code e gives (e & 0xFFFF) | 0x80070000,
// and 0 stays 0 (a failure that then counts as success).
HRESULT HResultFromLastError();

// IStream over a file handle it owns; the handle closes at the last Release. Everything beyond
// read, write, seek and the size answers E_NOTIMPL.
class FileStream final : public IStream {
  public:
    explicit FileStream(HANDLE file) : file_(file) {}

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* bytesRead) override;
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* bytesWritten) override;

    // IStream
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                   ULARGE_INTEGER* newPosition) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return E_NOTIMPL;
    }
    // Fills only cbSize; the stream has no name, so the flag argument is not looked at.
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD) override;
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

  private:
    HANDLE file_;
    LONG referenceCount_ = 1;
};

// Opens `fileName` for reading (an existing file) or for writing (created or truncated), shared
// for reading only. A failed open gives the last error as an HRESULT and leaves `stream` as it
// was; a stream that cannot be allocated gives 0 and a null `stream`.
HRESULT OpenFileStream(const std::wstring& fileName, IStream** stream, bool forWrite);
