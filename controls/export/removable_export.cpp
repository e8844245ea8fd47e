// CStarDiscBurn's copies to a removable drive: the queue (converted and blacked out as set) or a DICOMDIR tree.
#include <filesystem>
#include <system_error>

#include "export/disc_burner.h"
#include "export/export_files.h"
#include "export/export_paths.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "platform/text.h"

using namespace uc::exporting;
namespace fs = std::filesystem;

namespace {
std::int64_t AvailableBytes(const std::wstring& folder) {
    std::error_code ec;
    const fs::space_info info = fs::space(uc::ToFsPath(folder), ec);
    return ec ? -1 : static_cast<std::int64_t>(info.available);
}

std::wstring Replace(std::wstring text, const std::wstring& what, const std::wstring& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::wstring::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}
}  // namespace

int CStarDiscBurn::SendToRemovable(void*, const std::wstring& source, const std::wstring& target, int convert,
                                   int privacy, std::wstring& result, void*, const std::wstring& exportFolder,
                                   const std::wstring& patientId, int overwrite) {
    if (!m_queue || m_queue->GetSize() == 0) {
        result = L"nothing is queued";
        return 0;
    }
    std::wstring unit;
    double total = m_queue->GetTotalFileSize(unit);
    total *= unit == L"MB" ? 1048576.0 : unit == L"KB" ? 1024.0 : 1.0;
    const std::int64_t available = m_freeSpace ? m_freeSpace(target) : AvailableBytes(target);
    if (available < 0 || total > static_cast<double>(available)) {
        result = uc::Format(L"'%s' has %I64d bytes free, %.0f needed", target.c_str(),
                            static_cast<long long>(available < 0 ? 0 : available), total);
        UC_LOG(zelLogger::Failure)(L"SendToRemovable(): %s", result.c_str());
        if (m_presenter)
            m_presenter->Tell(LocalText("utilscontrols.burn.removablefreespaceerrormsg"),
                              LocalText("utilscontrols.burn.nomediamsgtitle"), BoxIcon::Stop);
        return 0;
    }
    const std::tm t = m_wallClock();
    const std::wstring stamp = uc::Format(L"%04d-%02d-%02d_%02d-%02d-%02d", t.tm_year + 1900, t.tm_mon + 1,
                                          t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
    std::wstring destination = WithTrailingSeparator(target);
    const std::wstring folderName = SafeExportFolder(Replace(exportFolder, L"{PATID}", patientId));
    if (!folderName.empty()) destination += Replace(folderName, L"\\", std::wstring(1, kSeparator)) + kSeparator;
    destination += stamp + kSeparator;
    if (!overwrite && fs::exists(uc::ToFsPath(destination))) {
        result = L"'" + destination + L"' exists already";
        return 0;
    }
    const std::wstring staging = WithTrailingSeparator(
        !m_tempFolderSetting.empty() ? m_tempFolderSetting : zelPath::getPath(zelPath::Export, L"removable_" + stamp));
    const std::set<std::wstring> files = m_queue->GetFilesName();
    // Relative paths start below `source` when every file lies there, else below the files' common folder's parent.
    std::wstring base = WithTrailingSeparator(source);
    for (const std::wstring& f : files)
        if (base.empty() || f.compare(0, base.size(), base) != 0) {
            base.clear();
            break;
        }
    if (base.empty()) base = ExportBase(files);
    const auto fail = [&](const std::wstring& why) {
        result = why;
        UC_LOG(zelLogger::Failure)(L"SendToRemovable(): %s; nothing is left on '%s'", why.c_str(), target.c_str());
        RemoveFolderTree(destination);
        RemoveFolderTree(staging);
        m_queue->RemoveConvertedFiles();
        return 0;
    };
    int done = 0, n = 0;
    for (const std::wstring& file : files) {
        std::wstring from = file;
        const bool image = IsImageFile(file);
        if (image && (privacy || (convert >= 1 && convert <= 4))) {
            from = m_queue->ConvertImage(file, staging + std::to_wstring(++n), convert >= 1 && convert <= 4 ? convert : 0,
                                         privacy);
            if (from.empty() || !FileIsPresent(from)) {
                if (privacy) return fail(L"'" + file + L"' could not be blacked out");
                from = file;
            }
        }
        const std::wstring to = destination + FolderOf(file.substr(base.size())) + FileName(from);
        std::wstring error;
        if (!FileIsPresent(file)) return fail(L"'" + file + L"' has vanished or cannot be read");
        if (!MakeFolders(FolderOf(to)) || !CopyWhole(from, to, error)) return fail(L"copying '" + file + L"' failed: " + error);
        ++done;
        if (m_presenter) {
            const int percent = static_cast<int>(done * 100LL / static_cast<long long>(files.size()));
            m_presenter->ShowPercent(percent);
            m_presenter->ShowStep(GetStr("utilscontrols.burn.progressTransfer", percent));
        }
    }
    RemoveFolderTree(staging);
    m_queue->RemoveConvertedFiles();
    result = destination;
    return 1;
}

int CStarDiscBurn::SendDicomDirToRemovable(const std::wstring& source, const std::wstring& target, void*,
                                           const std::wstring& title) {
    const std::int64_t needed = FolderSize(source);
    const std::int64_t available = m_freeSpace ? m_freeSpace(target) : AvailableBytes(target);
    if (available < 0 || needed > available) {
        UC_LOG(zelLogger::Failure)(L"SendDicomDirToRemovable(): '%s' needs %I64d bytes, '%s' has %I64d free",
                                   source.c_str(), static_cast<long long>(needed), target.c_str(),
                                   static_cast<long long>(available));
        if (m_presenter)
            m_presenter->Tell(LocalText("utilscontrols.burn.removablefreespaceerrormsg"),
                              LocalText("utilscontrols.burn.nomediamsgtitle"), BoxIcon::Stop);
        return 0;
    }
    if (m_presenter) m_presenter->CreateProgress(title);
    std::vector<std::wstring> written;
    std::int64_t copied = 0;
    bool ok = true;
    std::error_code ec;
    const fs::path from = uc::ToFsPath(source);
    for (fs::recursive_directory_iterator it(from, ec), end; ok && !ec && it != end; it.increment(ec)) {
        const fs::path to = uc::ToFsPath(target) / fs::relative(it->path(), from, ec);
        if (it->is_directory(ec)) {
            fs::create_directories(to, ec);
            continue;
        }
        std::wstring error;
        if (ec || !CopyWhole(uc::FromFsPath(it->path()), uc::FromFsPath(to), error)) {
            UC_LOG(zelLogger::Failure)(L"SendDicomDirToRemovable(): copying '%s' failed: %s",
                                       uc::FromFsPath(it->path()).c_str(), error.c_str());
            ok = false;
            break;
        }
        written.push_back(uc::FromFsPath(to));
        copied += FileLength(uc::FromFsPath(to));
        if (m_presenter && needed > 0) {
            const int percent = static_cast<int>(copied * 100 / needed);
            m_presenter->ShowPercent(percent);
            m_presenter->ShowStep(GetStr("utilscontrols.burn.progressTransfer", percent));
        }
    }
    if (ec) ok = false;
    if (!ok)
        for (const std::wstring& f : written) DeleteFileAt(f);  // no partial DICOMDIR is left to look complete
    if (m_presenter) m_presenter->DestroyProgress();
    return ok ? 1 : 0;
}
