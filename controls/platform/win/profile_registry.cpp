// Application profile in the registry (one key per section) and the system profile through win.ini.
#include <windows.h>

#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "platform/profile.h"
#include "platform/text.h"
#include "platform/win/handles.h"

namespace {
constexpr const wchar_t* kDefaultLocation = L"Software\\utils_controls";

std::mutex g_mutex;
std::wstring g_location;  // as set, with its optional hive prefix; empty means the default

bool StartsWithNoCase(const std::wstring& s, const wchar_t* prefix) {
    const std::size_t n = std::char_traits<wchar_t>::length(prefix);
    return s.size() >= n && ::CompareStringOrdinal(s.c_str(), static_cast<int>(n), prefix, static_cast<int>(n), TRUE) == CSTR_EQUAL;
}

struct KeyPath {
    HKEY root;
    std::wstring path;
};

// Registry key of a section: <hive>\<location>\<section>. Empty path parts are dropped so a section
// given with a leading or trailing backslash still names a valid key.
KeyPath Resolve(const wchar_t* section) {
    std::wstring location;
    {
        std::lock_guard<std::mutex> g(g_mutex);
        location = g_location.empty() ? kDefaultLocation : g_location;
    }
    HKEY root = HKEY_CURRENT_USER;
    static const struct { const wchar_t* prefix; HKEY root; } kHives[] = {
        {L"HKLM\\", HKEY_LOCAL_MACHINE}, {L"HKEY_LOCAL_MACHINE\\", HKEY_LOCAL_MACHINE},
        {L"HKCU\\", HKEY_CURRENT_USER},  {L"HKEY_CURRENT_USER\\", HKEY_CURRENT_USER}};
    for (const auto& h : kHives) {
        if (StartsWithNoCase(location, h.prefix)) {
            root = h.root;
            location.erase(0, std::char_traits<wchar_t>::length(h.prefix));
            break;
        }
    }
    std::wstring path;
    auto append = [&path](const std::wstring& part) {
        std::size_t b = part.find_first_not_of(L'\\');
        if (b == std::wstring::npos) return;
        std::size_t e = part.find_last_not_of(L'\\');
        if (!path.empty()) path += L'\\';
        path.append(part, b, e - b + 1);
    };
    append(location);
    if (section) append(section);
    return {root, path};
}

// Raw value bytes and their registry type; false when the key or value does not exist.
bool ReadValue(const wchar_t* section, const wchar_t* key, DWORD& type, std::vector<BYTE>& data) {
    if (!key || !*key) return false;  // the unnamed default value is not a profile entry
    const KeyPath kp = Resolve(section);
    uc::UniqueHKey hkey;
    if (::RegOpenKeyExW(kp.root, kp.path.c_str(), 0, KEY_QUERY_VALUE, hkey.put()) != ERROR_SUCCESS) return false;
    DWORD size = 0;
    if (::RegQueryValueExW(hkey.get(), key, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return false;
    // The value may grow between the two calls; retry with the size the second call reports.
    for (int attempt = 0; attempt < 4; ++attempt) {
        data.resize(size + sizeof(wchar_t));
        DWORD got = size;
        const LONG r = ::RegQueryValueExW(hkey.get(), key, nullptr, &type, data.data(), &got);
        if (r == ERROR_SUCCESS) {
            data.resize(got);
            return true;
        }
        if (r != ERROR_MORE_DATA) return false;
        size = got;
    }
    return false;
}

std::wstring AsString(const std::vector<BYTE>& data) {
    std::wstring s(data.size() / sizeof(wchar_t), L'\0');
    if (!s.empty()) std::memcpy(s.data(), data.data(), s.size() * sizeof(wchar_t));
    const std::size_t nul = s.find(L'\0');
    if (nul != std::wstring::npos) s.resize(nul);
    return s;
}

bool AsDword(DWORD type, const std::vector<BYTE>& data, int& value) {
    if (type != REG_DWORD || data.size() != sizeof(DWORD)) return false;
    DWORD v;
    std::memcpy(&v, data.data(), sizeof v);
    value = static_cast<int>(v);
    return true;
}

bool WriteValue(const wchar_t* section, const wchar_t* key, DWORD type, const void* data, DWORD size) {
    if (!section || !key || !*key) return false;
    const KeyPath kp = Resolve(section);
    uc::UniqueHKey hkey;
    if (::RegCreateKeyExW(kp.root, kp.path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_SET_VALUE, nullptr,
                          hkey.put(), nullptr) != ERROR_SUCCESS)
        return false;
    return ::RegSetValueExW(hkey.get(), key, 0, type, static_cast<const BYTE*>(data), size) == ERROR_SUCCESS;
}
}  // namespace

namespace vex_utils {
int GetProfileIntW(const wchar_t* section, const wchar_t* key, int defaultValue) {
    DWORD type = 0;
    std::vector<BYTE> data;
    if (!ReadValue(section, key, type, data)) return defaultValue;
    int v = defaultValue;
    if (AsDword(type, data, v)) return v;
    // A number written by hand (or by an older tool) as text still reads as a number.
    if ((type == REG_SZ || type == REG_EXPAND_SZ) && uc::ParseInt(AsString(data), v)) return v;
    return defaultValue;
}

bool WriteProfileInt(const wchar_t* section, const wchar_t* key, int value) {
    const DWORD v = static_cast<DWORD>(value);
    return WriteValue(section, key, REG_DWORD, &v, sizeof v);
}

std::wstring GetProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* defaultValue) {
    DWORD type = 0;
    std::vector<BYTE> data;
    if (ReadValue(section, key, type, data)) {
        if (type == REG_SZ || type == REG_EXPAND_SZ) return AsString(data);
        // Integers are stored as REG_DWORD; as text they read as their decimal form.
        int v = 0;
        if (AsDword(type, data, v)) return std::to_wstring(v);
    }
    return defaultValue ? defaultValue : L"";
}

bool WriteProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    const std::wstring v = value ? value : L"";
    return WriteValue(section, key, REG_SZ, v.c_str(), static_cast<DWORD>((v.size() + 1) * sizeof(wchar_t)));
}
}  // namespace vex_utils

namespace uc {
void SetProfileLocation(const std::wstring& location) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_location = location;
}

std::wstring GetProfileLocation() {
    std::lock_guard<std::mutex> g(g_mutex);
    return g_location.empty() ? std::wstring(kDefaultLocation) : g_location;
}

int GetSystemProfileInt(const wchar_t* section, const wchar_t* key, int defaultValue) {
    // A null key would make the OS list the section's keys instead of reading one.
    if (!key || !*key) return defaultValue;
    // Read as text and parse strictly: ::GetProfileIntW would accept "12abc" as 12.
    std::wstring buf(256, L'\0');
    for (;;) {
        const DWORD n = ::GetProfileStringW(section ? section : L"", key, L"", buf.data(), static_cast<DWORD>(buf.size()));
        if (n + 1 < buf.size() || buf.size() >= 65536) {
            buf.resize(n);
            break;
        }
        buf.resize(buf.size() * 2);
    }
    int v = defaultValue;
    return ParseInt(buf, v) ? v : defaultValue;
}

bool WriteSystemProfileString(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    // A null value would delete the entry; the profile contract writes an empty one instead.
    if (!section || !key || !*key) return false;
    return ::WriteProfileStringW(section, key, value ? value : L"") != FALSE;
}

// The system profile is the OS's own win.ini on Windows; there is no file of ours to point elsewhere.
void SetSystemProfileLocation(const std::wstring&) {}
}  // namespace uc
