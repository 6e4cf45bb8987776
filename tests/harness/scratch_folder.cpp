// Scratch folders for tests that act on the real file system, made and removed with the runtime's
// own filesystem calls.
#include "harness/scratch_folder.h"

#include "harness/test_session.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

std::wstring UniqueName() {
    return L"calder-" + NewGuid().substr(1, 36);
}

bool PathPresent(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

ScratchFolder::ScratchFolder() {
    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    path_ = temp + UniqueName();
    if (!CreateDirectoryW(path_.c_str(), nullptr))
        throw std::runtime_error("cannot make a scratch folder");
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_, ignored))
        SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
    std::filesystem::remove_all(path_, ignored);
}

std::wstring ScratchFolder::MakeFolder(const std::wstring& relative) const {
    std::filesystem::create_directories(*this / relative);
    return *this / relative;
}

std::wstring ScratchFolder::MakeFile(const std::wstring& relative, const std::string& text) const {
    const std::filesystem::path path = *this / relative;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    return path.wstring();
}
