// Owner of one installer handle (record, view, database): closes it on every path if it is not 0.
#pragma once

#include <windows.h>

#include <msi.h>
#include <msiquery.h>

class MsiHandle {
  public:
    MsiHandle() = default;
    explicit MsiHandle(MSIHANDLE handle) : handle_(handle) {}
    ~MsiHandle() { Close(); }
    MsiHandle(const MsiHandle&) = delete;
    MsiHandle& operator=(const MsiHandle&) = delete;

    MSIHANDLE Get() const { return handle_; }
    MSIHANDLE* Receive() {
        Close();
        return &handle_;
    }
    explicit operator bool() const { return handle_ != 0; }

  private:
    void Close() {
        if (handle_ != 0)
            MsiCloseHandle(handle_);
        handle_ = 0;
    }
    MSIHANDLE handle_ = 0;
};
