// Port numbers to device paths on POSIX systems: explicit map, "comN" folder, ttyS fall-back.
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>

#include "platform/serial/port_map.h"
#include "platform/text.h"

namespace uc::serial {
namespace {
namespace fs = std::filesystem;

std::mutex g_mutex;
std::map<int, std::wstring> g_map;
std::wstring g_folder;
bool g_folderSet = false;
std::wstring g_pattern = L"/dev/ttyS%d";

std::wstring Folder() {
    if (g_folderSet) return g_folder;
    if (const char* env = std::getenv("UC_SERIAL_DIR"); env && *env) return FromUtf8(env);
    const char* home = std::getenv("HOME");
    return FromUtf8(home ? home : ".") + L"/.config/utils_controls/serial";
}

std::wstring PathLocked(int port) {
    if (port < 0) return {};
    if (auto it = g_map.find(port); it != g_map.end()) return it->second;
    std::error_code ec;
    const fs::path entry = ToFsPath(Folder()) / ("com" + std::to_string(port));
    if (fs::exists(entry, ec)) return FromFsPath(entry);
    if (!g_pattern.empty() && port >= 1) {
        std::wstring p = g_pattern;
        if (auto at = p.find(L"%d"); at != std::wstring::npos) p.replace(at, 2, std::to_wstring(port - 1));
        return p;
    }
    return {};
}

fs::path Resolved(const std::wstring& path) {
    std::error_code ec;
    fs::path p = fs::weakly_canonical(ToFsPath(path), ec);
    return ec ? ToFsPath(path) : p;
}
}  // namespace

std::wstring PortDevicePath(int port) {
    std::lock_guard<std::mutex> g(g_mutex);
    return PathLocked(port);
}

void MapPort(int port, const std::wstring& devicePath) {
    std::lock_guard<std::mutex> g(g_mutex);
    if (devicePath.empty())
        g_map.erase(port);
    else
        g_map[port] = devicePath;
}

void ClearPortMap() {
    std::lock_guard<std::mutex> g(g_mutex);
    g_map.clear();
}

void SetPortDirectory(const std::wstring& folder) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_folder = folder;
    g_folderSet = true;
}

std::wstring GetPortDirectory() {
    std::lock_guard<std::mutex> g(g_mutex);
    return Folder();
}

void SetPortFallbackPattern(const std::wstring& pattern) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_pattern = pattern;
}

int PortNumberForDevice(const std::wstring& devicePath) {
    if (devicePath.empty()) return -1;
    const fs::path target = Resolved(devicePath);
    std::lock_guard<std::mutex> g(g_mutex);
    for (const auto& [port, path] : g_map)
        if (Resolved(path) == target) return port;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(ToFsPath(Folder()), ec)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("com", 0) != 0 || name.size() < 4) continue;
        int port = 0;
        if (!ParseInt(FromUtf8(name.substr(3)), port) || port < 0) continue;
        if (Resolved(FromFsPath(entry.path())) == target) return port;
    }
    int port = FirstDynamicPort;
    while (g_map.count(port) || fs::exists(ToFsPath(Folder()) / ("com" + std::to_string(port)), ec)) ++port;
    g_map[port] = devicePath;
    return port;
}

}  // namespace uc::serial
