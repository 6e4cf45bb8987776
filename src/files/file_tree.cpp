// Plain path tests, tree walks, tree copy and the recursive delete that defers locked files to
// reboot.
#include "files/file_tree.h"

#include "frame/strings.h"

#include <windows.h>

#include <io.h>
#include <shlwapi.h>
#include <sys/stat.h>

namespace {

// Owner of one directory search: closed with FindClose on every path.
class FindSearch {
public:
    FindSearch(const std::wstring& searchText, WIN32_FIND_DATAW& entry)
        : handle_(FindFirstFileW(searchText.c_str(), &entry)) {}
    ~FindSearch() {
        if (handle_ != INVALID_HANDLE_VALUE)
            FindClose(handle_);
    }
    FindSearch(const FindSearch&) = delete;
    FindSearch& operator=(const FindSearch&) = delete;

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    bool Next(WIN32_FIND_DATAW& entry) { return FindNextFileW(handle_, &entry) != FALSE; }

private:
    HANDLE handle_;
};

// Which separator the entries of a listing carry.
enum class EntrySeparator { Backslash, Slash };

constexpr int AccessExists = 0;
constexpr int AccessWrite = 2;
constexpr int AccessReadWrite = 6;
constexpr int ReadWriteMode = _S_IREAD | _S_IWRITE; // 0x180
constexpr int ReadOnlyMode = _S_IREAD;              // 0x100

// How long a folder is given to disappear once its contents are dealt with.
constexpr DWORD FolderRemovalMilliseconds = 500;

bool IsDotEntry(const wchar_t* name) {
    return (name[0] == L'.' && name[1] == L'\0') ||
           (name[0] == L'.' && name[1] == L'.' && name[2] == L'\0');
}

bool IsFolderEntry(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::wstring JoinPath(const std::wstring& folder, const wchar_t* name) {
    return folder + PathSeparatorFor(folder) + name;
}

std::wstring WithSeparator(std::wstring path, EntrySeparator separator) {
    if (separator == EntrySeparator::Backslash)
        ReplaceAll(path, L"/", L"\\");
    else
        ReplaceAll(path, L"\\", L"/");
    return path;
}

// Calls visit(full path, entry) for every entry of `folder` matching `pattern` but "." and "..",
// until visit answers false. False when the folder cannot be searched.
template <typename Visit>
bool ForEachEntry(const std::wstring& folder, const std::wstring& pattern, Visit visit) {
    WIN32_FIND_DATAW entry;
    FindSearch search(JoinPath(folder, pattern.c_str()), entry);
    if (!search)
        return false;
    do {
        if (!IsDotEntry(entry.cFileName) && !visit(JoinPath(folder, entry.cFileName), entry))
            break;
    } while (search.Next(entry));
    return true;
}

bool ListFilesWith(const std::wstring& path, PathList& list, const std::wstring& pattern,
                   bool recursive, EntrySeparator separator) {
    if (!IsDirectory(path))
        return false;
    return ForEachEntry(path, pattern,
                        [&](const std::wstring& full, const WIN32_FIND_DATAW& entry) {
                            if (recursive && IsFolderEntry(entry))
                                ListFilesWith(full, list, pattern, recursive, separator);
                            else
                                list.push_back(WithSeparator(full, separator));
                            return true;
                        });
}

bool ListTreeWith(const std::wstring& path, PathList& list, const std::wstring& pattern,
                  bool recursive, EntrySeparator separator) {
    if (!recursive || pattern == L"*")
        return ListFilesWith(path, list, pattern, recursive, separator);

    PathList folders;
    if (!ListDirectories(path, folders))
        return false;
    folders.push_back(path);
    folders.unique();
    for (const std::wstring& folder : folders)
        ListFilesWith(folder, list, pattern, false, separator);
    list.unique();
    return true;
}

// Whether the walk of ListFiles(folder, "*", recursive) would list anything, stopping at the
// first file instead of listing the whole tree.
bool WalkFindsAFile(const std::wstring& folder, bool& searched) {
    bool found = false;
    searched =
        IsDirectory(folder) &&
        ForEachEntry(folder, L"*", [&](const std::wstring& full, const WIN32_FIND_DATAW& entry) {
            bool ignored = false;
            found = IsFolderEntry(entry) ? WalkFindsAFile(full, ignored) : true;
            return !found;
        });
    return found;
}

// Deletes one file, or leaves it to be deleted at the next reboot when it cannot go now.
void DeleteOrDeferFile(const std::wstring& path) {
    if (!DeleteFileW(path.c_str()))
        MoveFileExW(path.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
}

// Retries RemoveDirectoryW without pause until the folder is gone or the time is up. The
// unsigned difference of GetTickCount makes a wrap of the counter harmless.
bool RemoveFolderWithinTimeLimit(const std::wstring& path) {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < FolderRemovalMilliseconds) {
        RemoveDirectoryW(path.c_str());
        if (!FileExists(path))
            return true;
    }
    return false;
}

} // namespace

bool FileExists(const std::wstring& path) {
    return _waccess(path.c_str(), AccessExists) == 0;
}

bool IsDirectory(const std::wstring& path) {
    return PathIsDirectoryW(path.c_str()) != FALSE;
}

bool IsWritable(const std::wstring& path) {
    return _waccess(path.c_str(), AccessWrite) == 0 || _waccess(path.c_str(), AccessReadWrite) == 0;
}

bool IsReadWrite(const std::wstring& path) {
    return _waccess(path.c_str(), AccessReadWrite) == 0;
}

bool SetWritable(const std::wstring& path, bool writable) {
    return _wchmod(path.c_str(), writable ? ReadWriteMode : ReadOnlyMode) == 0;
}

bool ListDirectories(const std::wstring& path, PathList& list) {
    if (!IsDirectory(path))
        return false;
    return ForEachEntry(path, L"*", [&](const std::wstring& full, const WIN32_FIND_DATAW&) {
        if (IsDirectory(full)) {
            ListDirectories(full, list);
            list.push_back(WithSeparator(full, EntrySeparator::Backslash));
        }
        return true;
    });
}

bool ListFiles(const std::wstring& path, PathList& list, const std::wstring& pattern,
               bool recursive) {
    return ListFilesWith(path, list, pattern, recursive, EntrySeparator::Backslash);
}

bool ListTree(const std::wstring& path, PathList& list, const std::wstring& pattern,
              bool recursive) {
    return ListTreeWith(path, list, pattern, recursive, EntrySeparator::Backslash);
}

bool ListTreeSlashed(const std::wstring& path, PathList& list, const std::wstring& pattern,
                     bool recursive) {
    return ListTreeWith(path, list, pattern, recursive, EntrySeparator::Slash);
}

bool IsFolderEmpty(const std::wstring& path) {
    bool searched = false;
    const bool found = WalkFindsAFile(path, searched);
    return searched && !found;
}

bool CopyTree(const std::wstring& source, const std::wstring& destination) {
    if (!IsDirectory(source))
        return false;
    bool result = true;
    if (!FileExists(destination)) {
        if (!CreateDirectoryW(destination.c_str(), nullptr))
            result = false;
        SetWritable(destination, true);
    }

    WIN32_FIND_DATAW entry;
    FindSearch search(JoinPath(source, L"*.*"), entry);
    if (!search)
        return false;
    // The first entry of the search is never looked at: in a folder it is ".".
    while (search.Next(entry)) {
        const std::wstring from = JoinPath(source, entry.cFileName);
        const std::wstring to = JoinPath(destination, entry.cFileName);
        SetWritable(to, true);
        if (!IsFolderEntry(entry)) {
            if (!CopyFileW(from.c_str(), to.c_str(), FALSE))
                result = false;
        } else if (!IsDotEntry(entry.cFileName) && !CopyTree(from, to)) {
            result = false;
        }
    }
    return result;
}

bool removeDirRecursive(const std::wstring& path) {
    if (!IsDirectory(path))
        return false;
    if (!FileExists(path))
        return true;
    {
        WIN32_FIND_DATAW entry;
        FindSearch search(JoinPath(path, L"*.*"), entry);
        if (!search)
            return false;
        do {
            const std::wstring full = JoinPath(path, entry.cFileName);
            SetWritable(full, true); // "." and ".." too: the folder and its parent
            if (!IsFolderEntry(entry))
                DeleteOrDeferFile(full);
            else if (!IsDotEntry(entry.cFileName))
                removeDirRecursive(full);
        } while (search.Next(entry));
    }
    SetWritable(path, true);
    return RemoveFolderWithinTimeLimit(path);
}
