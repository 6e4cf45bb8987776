// Plain tests on one path, walks over a folder tree, copying a tree and the stubborn recursive
// delete.
#pragma once

#include <list>
#include <string>

// A listing: full paths, owned by the caller.
using PathList = std::list<std::wstring>;

// The runtime's _waccess(path, 0) gives 0.
bool FileExists(const std::wstring& path);
// PathIsDirectoryW.
bool IsDirectory(const std::wstring& path);
// _waccess with mode 2 gives 0, or failing that with mode 6.
bool IsWritable(const std::wstring& path);
// _waccess with mode 6 gives 0.
bool IsReadWrite(const std::wstring& path);
// _wchmod with read and write (0x180) or read only (0x100) gives 0: clears or sets read-only.
bool SetWritable(const std::wstring& path, bool writable);

// Every folder below `path`, children before their parent, with backslashes. False only when
// `path` is not a folder or cannot be searched.
bool ListDirectories(const std::wstring& path, PathList& list);

// The entries below `path` matching `pattern`. With `recursive` set, folders are walked into and
// not listed; with it clear, every matching entry is listed, folders included.
bool ListFiles(const std::wstring& path, PathList& list, const std::wstring& pattern,
               bool recursive);

// The general walk: ListFiles for "*" or a flat walk; otherwise every folder of the tree searched
// flat for `pattern`, so that a match inside a folder whose name does not match is found.
bool ListTree(const std::wstring& path, PathList& list, const std::wstring& pattern,
              bool recursive);

// ListTree whose file entries carry slashes instead of backslashes, to compare with the retained
// names of the registry cleanup.
bool ListTreeSlashed(const std::wstring& path, PathList& list, const std::wstring& pattern,
                     bool recursive);

// True when `path` is a folder that can be searched and its whole tree holds no file; folders
// do not count. The answer of ListTree(path, list, "*", true) with an empty list.
bool IsFolderEmpty(const std::wstring& path);

// Copies the tree of `source` into `destination`, overwriting (read-only files included). The
// first entry of each search is passed over. False when anything failed; the walk goes on.
bool CopyTree(const std::wstring& source, const std::wstring& destination);

// Deletes the tree file by file; a file that cannot go is left to the next reboot. The folder
// then has 500 ms to disappear: true only when it is gone.
bool removeDirRecursive(const std::wstring& path);
