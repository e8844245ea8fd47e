// Application and system profiles of the non-Windows builds, each an INI file.
#include <cstdlib>
#include <mutex>

#include "platform/ini_file.h"
#include "platform/profile.h"
#include "platform/text.h"

namespace {
std::mutex g_mutex;
std::wstring g_appPath;
std::wstring g_sysPath;

std::wstring DefaultPath(const char* env, const wchar_t* file) {
    if (const char* p = std::getenv(env); p && *p) return uc::FromUtf8(p);
    const char* home = std::getenv("HOME");
    return uc::FromUtf8(home ? home : ".") + L"/.config/utils_controls/" + file;
}

const std::wstring& AppPath() {
    if (g_appPath.empty()) g_appPath = DefaultPath("UC_PROFILE", L"profile.ini");
    return g_appPath;
}

const std::wstring& SysPath() {
    if (g_sysPath.empty()) g_sysPath = DefaultPath("UC_SYSTEM_PROFILE", L"win.ini");
    return g_sysPath;
}

std::wstring Read(const std::wstring& path, const wchar_t* section, const wchar_t* key, const wchar_t* def) {
    uc::IniDocument ini;
    ini.Load(path);
    auto v = ini.Get(section ? section : L"", key ? key : L"");
    return v ? *v : std::wstring(def ? def : L"");
}

int ReadInt(const std::wstring& path, const wchar_t* section, const wchar_t* key, int def) {
    int v = def;
    return uc::ParseInt(Read(path, section, key, L""), v) ? v : def;
}

bool Write(const std::wstring& path, const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    if (!section || !key || !*key) return false;
    uc::IniDocument ini;
    ini.Load(path);
    ini.Set(section, key, value ? value : L"");
    return ini.Save(path);
}
}  // namespace

namespace vex_utils {
int GetProfileIntW(const wchar_t* section, const wchar_t* key, int defaultValue) {
    std::lock_guard<std::mutex> g(g_mutex);
    return ReadInt(AppPath(), section, key, defaultValue);
}
bool WriteProfileInt(const wchar_t* section, const wchar_t* key, int value) {
    std::lock_guard<std::mutex> g(g_mutex);
    return Write(AppPath(), section, key, std::to_wstring(value).c_str());
}
std::wstring GetProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* defaultValue) {
    std::lock_guard<std::mutex> g(g_mutex);
    return Read(AppPath(), section, key, defaultValue);
}
bool WriteProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    std::lock_guard<std::mutex> g(g_mutex);
    return Write(AppPath(), section, key, value);
}
}  // namespace vex_utils

namespace uc {
void SetProfileLocation(const std::wstring& location) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_appPath = location;
}
std::wstring GetProfileLocation() {
    std::lock_guard<std::mutex> g(g_mutex);
    return AppPath();
}
int GetSystemProfileInt(const wchar_t* section, const wchar_t* key, int defaultValue) {
    std::lock_guard<std::mutex> g(g_mutex);
    return ReadInt(SysPath(), section, key, defaultValue);
}
bool WriteSystemProfileString(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    std::lock_guard<std::mutex> g(g_mutex);
    return Write(SysPath(), section, key, value);
}
void SetSystemProfileLocation(const std::wstring& path) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_sysPath = path;
}
}  // namespace uc
