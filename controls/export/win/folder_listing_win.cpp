// Folder listing on Windows: FindFirstFileW over "*.*", with FILE_ATTRIBUTE_TEMPORARY as the temporary mark.
#include <windows.h>

#include "export/export_files.h"
#include "platform/unique_handle.h"

namespace uc::exporting {
namespace {
struct FindHandleTraits {
    using Type = HANDLE;
    static HANDLE Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(HANDLE h) { ::FindClose(h); }
};
}  // namespace

bool ListFolder(const std::wstring& folder, const std::function<void(const FolderEntry&)>& visit) {
    WIN32_FIND_DATAW data{};
    UniqueHandle<FindHandleTraits> find(::FindFirstFileW((folder + L"*.*").c_str(), &data));
    if (!find) return false;
    do {
        const std::wstring name = data.cFileName;
        if (name == L"." || name == L"..") continue;
        FolderEntry entry;
        entry.name = name;
        entry.directory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        entry.temporary = !entry.directory && (data.dwFileAttributes & FILE_ATTRIBUTE_TEMPORARY) != 0;
        visit(entry);
    } while (::FindNextFileW(find.get(), &data));
    return true;
}

bool SetTemporaryMark(const std::wstring& path, bool temporary) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    DWORD wanted = temporary ? (attributes | FILE_ATTRIBUTE_TEMPORARY) : (attributes & ~DWORD(FILE_ATTRIBUTE_TEMPORARY));
    if (wanted == 0) wanted = FILE_ATTRIBUTE_NORMAL;
    return ::SetFileAttributesW(path.c_str(), wanted) != 0;
}

}  // namespace uc::exporting
