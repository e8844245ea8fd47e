// File-system services of the export that std::filesystem covers on both platforms.
#include "export/export_files.h"

#include <filesystem>
#include <system_error>

#include "export/export_paths.h"
#include "platform/text.h"

namespace uc::exporting {
namespace fs = std::filesystem;

std::int64_t FileLength(const std::wstring& path) {
    std::error_code ec;
    const auto size = fs::file_size(ToFsPath(path), ec);
    return ec ? -1 : static_cast<std::int64_t>(size);
}

bool FileIsPresent(const std::wstring& path) {
    std::error_code ec;
    return fs::is_regular_file(ToFsPath(path), ec);
}

bool CopyWhole(const std::wstring& source, const std::wstring& target, std::wstring& error) {
    std::error_code ec;
    fs::copy_file(ToFsPath(source), ToFsPath(target), fs::copy_options::overwrite_existing, ec);
    if (!ec) return true;
    error = FromUtf8(ec.message());
    std::error_code ignored;
    fs::remove(ToFsPath(target), ignored);
    return false;
}

bool SameFolder(const std::wstring& a, const std::wstring& b) {
    std::error_code ec;
    const bool same = fs::equivalent(ToFsPath(a), ToFsPath(b), ec);
    if (!ec) return same;
    return EqualsNoCase(WithTrailingSeparator(a), WithTrailingSeparator(b));
}

bool DeleteFileAt(const std::wstring& path) {
    std::error_code ec;
    fs::remove(ToFsPath(path), ec);
    return !FileIsPresent(path);
}

std::int64_t FolderSize(const std::wstring& folder) {
    std::error_code ec;
    std::int64_t total = 0;
    for (fs::recursive_directory_iterator it(ToFsPath(folder), fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        std::error_code sizeError;
        if (it->is_regular_file(sizeError)) {
            const auto size = it->file_size(sizeError);
            if (!sizeError) total += static_cast<std::int64_t>(size);
        }
    }
    return total;
}

bool MakeFolders(const std::wstring& folder) {
    std::error_code ec;
    fs::create_directories(ToFsPath(folder), ec);
    return fs::is_directory(ToFsPath(folder), ec);
}

bool RemoveFolderTree(const std::wstring& folder) {
    std::error_code ec;
    fs::remove_all(ToFsPath(folder), ec);
    return !fs::exists(ToFsPath(folder), ec);
}

}  // namespace uc::exporting
