// Numbered console folders and the exam path helpers.
#include "platform/paths.h"

#include <atomic>
#include <cstdlib>
#include <map>
#include <mutex>

#include "platform/text.h"

namespace {
std::mutex g_mutex;
std::map<int, std::wstring> g_folders;
std::wstring g_root;
std::atomic<bool> g_layoutLeft{false};
std::atomic<bool> g_devMode{false};

#ifdef _WIN32
constexpr wchar_t kSep = L'\\';
#else
constexpr wchar_t kSep = L'/';
#endif

std::wstring DefaultName(int folder) {
    switch (folder) {
    case zelPath::Root: return L"";
    case zelPath::Protocol: return L"protocol";
    case zelPath::Images: return L"images";
    case zelPath::Logs: return L"logs";
    case zelPath::Language: return L"language";
    case zelPath::Presets: return L"presets";
    case zelPath::Export: return L"export";
    case zelPath::FactoryPresets: return uc::JoinPath(L"presets", L"factory");
    default: return L"folder" + std::to_wstring(folder);
    }
}

std::wstring RootLocked() {
    if (!g_root.empty()) return g_root;
    if (const char* env = std::getenv("UC_DATA_DIR"); env && *env) return uc::FromUtf8(env);
    return uc::ExecutableFolder();
}
}  // namespace

namespace uc {
std::wstring JoinPath(const std::wstring& base, const std::wstring& sub) {
    std::wstring s = sub;
    for (wchar_t& c : s)
        if (c == L'/' || c == L'\\') c = kSep;
    if (base.empty()) return s;
    if (s.empty()) return base;
    std::wstring b = base;
    while (!b.empty() && (b.back() == L'/' || b.back() == L'\\') && b.size() > 1) b.pop_back();
    std::size_t start = s.find_first_not_of(kSep);
    if (start == std::wstring::npos) return b;
    return b + kSep + s.substr(start);
}
}  // namespace uc

std::wstring zelPath::getPath(int folder, const std::wstring& subpath) {
    std::lock_guard<std::mutex> g(g_mutex);
    auto it = g_folders.find(folder);
    const std::wstring base = it != g_folders.end() ? it->second : uc::JoinPath(RootLocked(), DefaultName(folder));
    return uc::JoinPath(base, subpath);
}

void zelPath::setPath(int folder, const std::wstring& path) {
    std::lock_guard<std::mutex> g(g_mutex);
    if (path.empty())
        g_folders.erase(folder);
    else
        g_folders[folder] = path;
}

void zelPath::setRoot(const std::wstring& root) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_root = root;
}

std::wstring zelPath::getRoot() {
    std::lock_guard<std::mutex> g(g_mutex);
    return RootLocked();
}

void zelPath::reset() {
    std::lock_guard<std::mutex> g(g_mutex);
    g_folders.clear();
    g_root.clear();
}

int utilsExam::m_consoleType = 0;

std::wstring utilsExam::GetProtocolFile(const std::wstring& name) { return zelPath::getPath(zelPath::Protocol, name); }
std::wstring utilsExam::GetImage(const std::wstring& relative) { return zelPath::getPath(zelPath::Images, relative); }
bool utilsExam::IsLayoutLeft() { return g_layoutLeft; }
void utilsExam::SetLayoutLeft(bool left) { g_layoutLeft = left; }
bool utilsExam::DevMode() { return g_devMode; }
void utilsExam::SetDevMode(bool on) { g_devMode = on; }

namespace {
std::mutex g_areaMutex;
utilsExam::Area g_dialogArea;
}  // namespace

utilsExam::Area utilsExam::CalculateDialogRect() {
    {
        std::lock_guard lock(g_areaMutex);
        if (g_dialogArea.right > g_dialogArea.left && g_dialogArea.bottom > g_dialogArea.top) return g_dialogArea;
    }
    return uc::PrimaryWorkArea();
}

void utilsExam::SetDialogRect(const Area& area) {
    std::lock_guard lock(g_areaMutex);
    g_dialogArea = area;
}
