// Path and name rules of the export: folder separators, extensions, the blacked-out image's name, safe folder names.
#pragma once

#include <set>
#include <string>

#include "platform/export.h"

namespace uc::exporting {

// The separator folder arguments end with: "\" on Windows, "/" elsewhere.
#ifdef _WIN32
inline constexpr wchar_t kSeparator = L'\\';
#else
inline constexpr wchar_t kSeparator = L'/';
#endif

UC_API bool IsSeparator(wchar_t c);
// `folder` with the separator appended when its last character is not one (an empty folder stays empty).
UC_API std::wstring WithTrailingSeparator(const std::wstring& folder);
// Text after the last separator.
UC_API std::wstring FileName(const std::wstring& path);
// Text up to and including the last separator (empty when there is none).
UC_API std::wstring FolderOf(const std::wstring& path);
// Extension of the file name without the dot, lower-cased ASCII ("JPG" -> "jpg"); empty when there is none.
UC_API std::wstring LowerExtension(const std::wstring& path);
// `path` with its extension (dot included) replaced by `extension` (given with its dot); appended when none.
UC_API std::wstring ReplaceExtension(const std::wstring& path, const std::wstring& extension);
// Name of the blacked-out copy: "c" inserted before the extension ("name.jpg" -> "namec.jpg").
UC_API std::wstring PrivatizedName(const std::wstring& path);
// Equality ignoring the case of letters.
UC_API bool EqualsNoCase(const std::wstring& a, const std::wstring& b);

// Files whose images the export converts or blacks out (by extension: jpg, jpeg, bmp, gif, png, tif, tiff).
UC_API bool IsImageFile(const std::wstring& path);
// The folder below which exported files keep their paths: the parent of the longest folder every file lies in,
// so that a patient's folder name stays on the disc. Ends with a separator; empty for relative paths without one.
UC_API std::wstring ExportBase(const std::set<std::wstring>& files);

// The configured export folder made safe for a disc: "{PATID}" and "{SYSID}" removed, ":" -> "_", "/" -> "\",
// doubled backslashes collapsed, leading and trailing backslashes trimmed. Components are separated by "\".
UC_API std::wstring SafeExportFolder(const std::wstring& configured);

}  // namespace uc::exporting
