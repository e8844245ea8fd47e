// Folder listing natively: readdir, with the "user.temporary" extended attribute standing for the temporary mark.
#include <dirent.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>

#include "export/export_files.h"
#include "platform/text.h"

namespace uc::exporting {
namespace {
constexpr const char* kTemporaryAttribute = "user.temporary";

bool HasTemporaryMark(const std::string& path) {
    // Present with any value; file systems without extended attributes report ENOTSUP and mark nothing.
    return ::getxattr(path.c_str(), kTemporaryAttribute, nullptr, 0) >= 0;
}
}  // namespace

bool ListFolder(const std::wstring& folder, const std::function<void(const FolderEntry&)>& visit) {
    const std::string base = ToUtf8(folder);
    DIR* dir = ::opendir(base.c_str());
    if (!dir) return false;
    while (const dirent* e = ::readdir(dir)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        const std::string full = base + name;
        struct stat st {};
        if (::lstat(full.c_str(), &st) != 0) continue;  // vanished between readdir and lstat
        FolderEntry entry;
        entry.name = FromUtf8(name);
        if (S_ISLNK(st.st_mode)) {
            // A link to a file is queued like the file; links to folders are not walked (they could loop).
            struct stat target {};
            if (::stat(full.c_str(), &target) != 0 || S_ISDIR(target.st_mode)) continue;
        }
        entry.directory = S_ISDIR(st.st_mode);
        entry.temporary = !entry.directory && HasTemporaryMark(full);
        visit(entry);
    }
    ::closedir(dir);
    return true;
}

bool SetTemporaryMark(const std::wstring& path, bool temporary) {
    const std::string p = ToUtf8(path);
    if (temporary) return ::setxattr(p.c_str(), kTemporaryAttribute, "1", 1, 0) == 0;
    return ::removexattr(p.c_str(), kTemporaryAttribute) == 0 || errno == ENODATA;
}

}  // namespace uc::exporting
