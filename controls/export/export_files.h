// File-system services of the export: folder listing with the temporary mark, sizes, copies that leave nothing
// half-written, folder sizes and removal.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/export.h"

namespace uc::exporting {

struct FolderEntry {
    std::wstring name;       // file or folder name, without the folder
    bool directory = false;  // a folder to walk (links to folders are not followed natively)
    // Marked temporary by its writer: FILE_ATTRIBUTE_TEMPORARY on Windows; natively the extended attribute
    // "user.temporary" (any value), which writers set with setxattr or `setfattr -n user.temporary`.
    bool temporary = false;
};

// Calls `visit` for each entry of `folder` (which ends with a separator) in the order the file system returns
// them, "." and ".." left out. False when the folder cannot be listed.
UC_API bool ListFolder(const std::wstring& folder, const std::function<void(const FolderEntry&)>& visit);

// Marks or unmarks a file as temporary (the mark ListFolder reports). False when the file system refuses.
UC_API bool SetTemporaryMark(const std::wstring& path, bool temporary);

// Length of a regular file in bytes, or -1 when it cannot be found.
UC_API std::int64_t FileLength(const std::wstring& path);
UC_API bool FileIsPresent(const std::wstring& path);

// Copies `source` to `target` (replacing it). On failure the partial target is removed and `error` says why.
UC_API bool CopyWhole(const std::wstring& source, const std::wstring& target, std::wstring& error);
// True when both name the same folder (the same folder on disk when both exist, else equal text ignoring case).
UC_API bool SameFolder(const std::wstring& a, const std::wstring& b);
// Deletes a file; false when it is still there afterwards.
UC_API bool DeleteFileAt(const std::wstring& path);

// Total length of the files below `folder`, in bytes (0 when it is missing).
UC_API std::int64_t FolderSize(const std::wstring& folder);
// Creates `folder` and its missing parents.
UC_API bool MakeFolders(const std::wstring& folder);
// Removes `folder` and everything below it; true when it is gone afterwards.
UC_API bool RemoveFolderTree(const std::wstring& folder);

}  // namespace uc::exporting
