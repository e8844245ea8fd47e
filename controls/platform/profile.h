// Settings: the application profile (registry key on Windows, INI file elsewhere) and the system's own profile.
#pragma once

#include <string>

#include "platform/export.h"

namespace vex_utils {
// `section` may be a path such as L"Settings\\Status". Missing values yield the default; a stored value that
// is not a whole number yields the default too.
UC_API int GetProfileIntW(const wchar_t* section, const wchar_t* key, int defaultValue);
UC_API bool WriteProfileInt(const wchar_t* section, const wchar_t* key, int value);
UC_API std::wstring GetProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* defaultValue);
UC_API bool WriteProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* value);
}  // namespace vex_utils

namespace uc {
// Where the application profile lives. Windows: a key path under HKEY_CURRENT_USER, default
// "Software\\utils_controls". Elsewhere: an INI file, default $UC_PROFILE or ~/.config/utils_controls/profile.ini.
UC_API void SetProfileLocation(const std::wstring& location);
UC_API std::wstring GetProfileLocation();

// The operating system's own profile (win.ini through GetProfileIntW on Windows; elsewhere an INI file,
// default $UC_SYSTEM_PROFILE or ~/.config/utils_controls/win.ini). Holds flags such as "System"/"_IsUpdating".
UC_API int GetSystemProfileInt(const wchar_t* section, const wchar_t* key, int defaultValue);
UC_API bool WriteSystemProfileString(const wchar_t* section, const wchar_t* key, const wchar_t* value);
// Only meaningful off Windows, where the system profile is a file of ours.
UC_API void SetSystemProfileLocation(const std::wstring& path);
}  // namespace uc
