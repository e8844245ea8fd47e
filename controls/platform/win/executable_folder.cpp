// Folder of the running executable (GetModuleFileNameW) and the primary screen's work area.
#include <windows.h>

#include <string>

#include "platform/paths.h"

namespace uc {
std::wstring ExecutableFolder() {
    // Long paths can exceed MAX_PATH: grow until the name fits (a full buffer means truncation).
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (n == 0) return L".";
        if (n < path.size()) {
            path.resize(n);
            break;
        }
        if (path.size() >= 32768) return L".";
        path.resize(path.size() * 2);
    }
    const std::size_t slash = path.find_last_of(L"\\/");
    if (slash == std::wstring::npos) return L".";
    std::wstring folder = path.substr(0, slash);
    // "C:" alone would name the drive's current folder, not its root.
    if (folder.empty() || folder.back() == L':') folder += L'\\';
    return folder;
}

utilsExam::Area PrimaryWorkArea() {
    RECT r{};
    if (!::SystemParametersInfoW(SPI_GETWORKAREA, 0, &r, 0)) {
        r = {0, 0, ::GetSystemMetrics(SM_CXSCREEN), ::GetSystemMetrics(SM_CYSCREEN)};
    }
    return {r.left, r.top, r.right, r.bottom};
}
}  // namespace uc
