// Path and name rules of the export.
#include "export/export_paths.h"

#include <cwctype>

namespace uc::exporting {

bool IsSeparator(wchar_t c) {
#ifdef _WIN32
    return c == L'\\' || c == L'/';
#else
    return c == L'/';
#endif
}

std::wstring WithTrailingSeparator(const std::wstring& folder) {
    if (folder.empty() || IsSeparator(folder.back())) return folder;
    return folder + kSeparator;
}

namespace {
std::size_t LastSeparator(const std::wstring& path) {
    for (std::size_t i = path.size(); i > 0; --i)
        if (IsSeparator(path[i - 1])) return i - 1;
    return std::wstring::npos;
}

// Position of the extension's dot within the file name, or npos.
std::size_t ExtensionDot(const std::wstring& path) {
    const std::size_t sep = LastSeparator(path);
    const std::size_t dot = path.rfind(L'.');
    if (dot == std::wstring::npos || (sep != std::wstring::npos && dot < sep)) return std::wstring::npos;
    return dot;
}
}  // namespace

std::wstring FileName(const std::wstring& path) {
    const std::size_t sep = LastSeparator(path);
    return sep == std::wstring::npos ? path : path.substr(sep + 1);
}

std::wstring FolderOf(const std::wstring& path) {
    const std::size_t sep = LastSeparator(path);
    return sep == std::wstring::npos ? std::wstring() : path.substr(0, sep + 1);
}

std::wstring LowerExtension(const std::wstring& path) {
    const std::size_t dot = ExtensionDot(path);
    if (dot == std::wstring::npos) return {};
    std::wstring ext = path.substr(dot + 1);
    for (wchar_t& c : ext)
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    return ext;
}

std::wstring ReplaceExtension(const std::wstring& path, const std::wstring& extension) {
    const std::size_t dot = ExtensionDot(path);
    return (dot == std::wstring::npos ? path : path.substr(0, dot)) + extension;
}

std::wstring PrivatizedName(const std::wstring& path) {
    const std::size_t dot = ExtensionDot(path);
    if (dot == std::wstring::npos) return path + L"c";
    return path.substr(0, dot) + L"c" + path.substr(dot);
}

bool EqualsNoCase(const std::wstring& a, const std::wstring& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i] && std::towlower(static_cast<wint_t>(a[i])) != std::towlower(static_cast<wint_t>(b[i])))
            return false;
    return true;
}

bool IsImageFile(const std::wstring& path) {
    static const std::set<std::wstring> images = {L"jpg", L"jpeg", L"bmp", L"gif", L"png", L"tif", L"tiff"};
    return images.count(LowerExtension(path)) != 0;
}

std::wstring ExportBase(const std::set<std::wstring>& files) {
    if (files.empty()) return {};
    std::wstring common = FolderOf(*files.begin());
    for (const std::wstring& f : files)
        while (!common.empty() && f.compare(0, common.size(), common) != 0)
            common = FolderOf(common.substr(0, common.size() - 1));
    return common.size() > 1 ? FolderOf(common.substr(0, common.size() - 1)) : common;
}

std::wstring SafeExportFolder(const std::wstring& configured) {
    std::wstring s = configured;
    for (const wchar_t* placeholder : {L"{PATID}", L"{SYSID}"})
        for (std::size_t at; (at = s.find(placeholder)) != std::wstring::npos;) s.erase(at, 7);
    std::wstring out;
    out.reserve(s.size());
    for (wchar_t c : s) {
        if (c == L':') c = L'_';
        if (c == L'/') c = L'\\';
        if (c == L'\\' && !out.empty() && out.back() == L'\\') continue;
        out += c;
    }
    const std::size_t first = out.find_first_not_of(L'\\');
    if (first == std::wstring::npos) return {};
    const std::size_t last = out.find_last_not_of(L'\\');
    return out.substr(first, last - first + 1);
}

}  // namespace uc::exporting
