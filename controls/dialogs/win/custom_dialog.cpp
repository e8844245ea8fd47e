// CCustomDialog: opening (centring, touch panel, title, translation), background, painting, closing, drive lists.
#include "dialogs/win/custom_dialog.h"

#include <commctrl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <vector>

#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "platform/win/handles.h"
#include "ui/drives.h"
#include "ui/geometry.h"
#include "ui/win/cursor.h"
#include "ui/win/resources.h"

CModeVariableCollection* CCustomDialog::m_modevariables = nullptr;
CSystemVariableCollection* CCustomDialog::m_systemvariables = nullptr;
CZoneCollection* CCustomDialog::m_zones = nullptr;
CDisplayCollection* CCustomDialog::m_displays = nullptr;
CProbeCollection* CCustomDialog::m_probes = nullptr;
HWND CCustomDialog::m_touch = nullptr;

namespace uc::ui {

namespace {
BOOL CALLBACK TranslateOne(HWND child, LPARAM) {
    wchar_t text[1000] = {};  // at most 999 characters are read, as the console's dialogs always did
    ::GetWindowTextW(child, text, 1000);
    const std::wstring translated = TranslateStr(text);
    ::SetWindowTextW(child, translated.c_str());
    return TRUE;  // always on to the next window
}
}  // namespace

void TranslateChildTexts(HWND parent) { ::EnumChildWindows(parent, &TranslateOne, 0); }

void FillClient(HWND hwnd, HDC dc, COLORREF colour) {
    RECT client{};
    ::GetClientRect(hwnd, &client);
    uc::UniqueHBrush brush(::CreateSolidBrush(colour));
    ::FillRect(dc, &client, brush.get());
}

}  // namespace uc::ui

CCustomDialog::CCustomDialog() : CCustomDialog(0, nullptr) {}

CCustomDialog::CCustomDialog(UINT templateId, HWND parent)
    : uc::ui::Dialog(templateId, parent), m_bkColor(::GetSysColor(COLOR_BTNFACE)) {}

CCustomDialog::~CCustomDialog() = default;

void CCustomDialog::SetBkColor(COLORREF colour) {
    m_bkColor = colour;
    m_useBkColor = TRUE;
    if (m_hWnd) Invalidate();
}

bool CCustomDialog::TranslateControls() {
    if (m_hWnd) uc::ui::TranslateChildTexts(m_hWnd);
    return true;
}

BOOL CCustomDialog::CheckAutoCenter() {
    if (!m_hWnd || !::IsWindow(m_hWnd)) return FALSE;
    const utilsExam::Area a = utilsExam::CalculateDialogRect();
    const RECT w = WindowRect();
    const uc::ui::Point p =
        uc::ui::CenterOnMidpoint({a.left, a.top, a.right, a.bottom}, w.right - w.left, w.bottom - w.top);
    ::SetWindowPos(m_hWnd, nullptr, p.x, p.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    return FALSE;
}

INT_PTR CCustomDialog::DoModal() {
    ShowCursorHelper cursor(true);
    return uc::ui::Dialog::DoModal();
}

BOOL CCustomDialog::OnInitDialog() {
    uc::ui::Dialog::OnInitDialog();
    CheckAutoCenter();
    if (m_touchNotify && m_touch && ::IsWindow(m_touch)) {
        m_touchReply = ::SendMessageW(m_touch, UWM_TOUCH_DIALOG_OPEN,
                                      m_touchPassSelf ? reinterpret_cast<WPARAM>(this) : 0, 0);
    }
    if (m_showTitle) {
        const RECT client = ClientRect();
        const RECT r{10, 14, client.right - 10, 80};
        if (!m_titleLabel.CreateLabel(L"", WS_CHILD | WS_VISIBLE, r, m_hWnd, uc::ui::kTitleLabelId)) return TRUE;
        m_titleLabel.Set3DHiliteColor(RGB(0, 0, 0))
            .SetTextColor(0xC0C0C0)
            .SetFontBold(true)
            .SetTransparent(true)
            .SetFont3D(true, CLabel::Raised)
            .SetFontName(L"Arial", 0)
            .SetFontSize(19);
        SetTitle(m_title.c_str());
    }
    TranslateControls();
    return TRUE;
}

void CCustomDialog::OnOK() { uc::ui::Dialog::OnOK(); }

void CCustomDialog::OnDraw(uc::ui::PaintDC&) {}

void CCustomDialog::SetTitle(const wchar_t* text) {
    if (!m_titleLabel.GetHwnd() || !m_titleLabel.Text().empty()) return;
    m_titleLabel.SetText(text ? text : L"");
}

void CCustomDialog::OnPaint() {
    uc::ui::PaintDC dc(m_hWnd);
    OnDraw(dc);
}

void CCustomDialog::OnClose() {}  // the system close is swallowed: console dialogs end through their buttons

HBRUSH CCustomDialog::OnCtlColor(HDC dc, HWND control, UINT type) {
    HBRUSH brush = uc::ui::Dialog::OnCtlColor(dc, control, type);
    if (m_useBkColor) ::SetBkMode(dc, TRANSPARENT);
    return brush;
}

void CCustomDialog::OnSize(UINT type, int cx, int cy) {
    uc::ui::Dialog::OnSize(type, cx, cy);
    m_resizer.Move();
}

void CCustomDialog::OnDestroy() {
    if (m_touchNotify && m_touch && ::IsWindow(m_touch)) ::SendMessageW(m_touch, UWM_TOUCH_DIALOG_CLOSE, 0, 0);
    DestroyToolTips();
    uc::ui::Dialog::OnDestroy();
}

BOOL CCustomDialog::OnEraseBkgnd(HDC dc) {
    if (!m_useBkColor) return uc::ui::Dialog::OnEraseBkgnd(dc);
    uc::ui::FillClient(m_hWnd, dc, m_bkColor);
    return TRUE;
}

std::wstring CCustomDialog::GetStringResource(UINT id, HINSTANCE module) { return uc::ui::LoadStringResource(id, module); }

void CCustomDialog::CenterCursor() {
    if (!m_hWnd) return;
    const RECT c = ClientRect();
    POINT p{(c.left + c.right) / 2, (c.top + c.bottom) / 2};
    ::ClientToScreen(m_hWnd, &p);
    ::SetCursorPos(p.x, p.y);
}

namespace {

// An item-id list freed with the shell's allocator.
struct PidlTraits {
    using Type = LPITEMIDLIST;
    static LPITEMIDLIST Invalid() { return nullptr; }
    static void Close(LPITEMIDLIST p) { ::CoTaskMemFree(p); }
};
using UniquePidl = uc::UniqueHandle<PidlTraits>;

int SmallIconOf(LPCITEMIDLIST pidl) {
    SHFILEINFOW info{};
    ::SHGetFileInfoW(reinterpret_cast<LPCWSTR>(pidl), 0, &info, sizeof info,
                     SHGFI_PIDL | SHGFI_SYSICONINDEX | SHGFI_SMALLICON);
    return info.iIcon;
}

int InsertItem(HWND combo, int index, const std::wstring& text, int image, LPARAM data) {
    COMBOBOXEXITEMW item{};
    item.mask = CBEIF_TEXT | CBEIF_IMAGE | CBEIF_SELECTEDIMAGE | CBEIF_LPARAM;
    item.iItem = index;
    item.pszText = const_cast<wchar_t*>(text.c_str());
    item.iImage = image;
    item.iSelectedImage = image;
    item.lParam = data;
    return static_cast<int>(::SendMessageW(combo, CBEM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
}

}  // namespace

void CCustomDialog::AddRemovableDrives(HWND combo, const char* networkKey) {
    uc::ScopedCoInitialize com;
    UniquePidl desktopPidl;
    ::SHGetSpecialFolderLocation(nullptr, CSIDL_DESKTOP, desktopPidl.put());
    SHFILEINFOW info{};
    auto images = reinterpret_cast<HIMAGELIST>(
        ::SHGetFileInfoW(reinterpret_cast<LPCWSTR>(desktopPidl.get()), 0, &info, sizeof info,
                         SHGFI_SYSICONINDEX | SHGFI_SMALLICON | SHGFI_PIDL));
    ::SendMessageW(combo, CBEM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images));

    int index = 0;
    if (networkKey) {
        UniquePidl network;
        ::SHGetSpecialFolderLocation(nullptr, CSIDL_NETWORK, network.put());
        const int at = InsertItem(combo, 0, GetStr(networkKey), network ? SmallIconOf(network.get()) : 0, 0);
        index = at + 1;
    }

    const DWORD needed = ::GetLogicalDriveStringsW(0, nullptr);
    std::vector<wchar_t> roots(needed + 1);
    if (!needed || !::GetLogicalDriveStringsW(needed, roots.data())) return;

    uc::ComPtr<IShellFolder> desktop;
    if (FAILED(::SHGetDesktopFolder(desktop.put()))) {
        UC_LOG(zelLogger::Failure)(L"AddRemovableDrives: the shell's desktop folder is not available");
        return;
    }
    for (const wchar_t* root = roots.data(); *root; root += wcslen(root) + 1) {
        if (!uc::ui::IsOfferedDrive(root, ::GetDriveTypeW(root))) continue;
        std::wstring name = root;
        int image = 0;
        UniquePidl pidl;
        if (SUCCEEDED(desktop->ParseDisplayName(nullptr, nullptr, const_cast<wchar_t*>(root), nullptr, pidl.put(),
                                                nullptr))) {
            STRRET ret{};
            wchar_t display[MAX_PATH] = {};
            if (SUCCEEDED(desktop->GetDisplayNameOf(pidl.get(), SHGDN_NORMAL, &ret)) &&
                SUCCEEDED(::StrRetToBufW(&ret, pidl.get(), display, MAX_PATH))) {
                name = display;
            }
            image = SmallIconOf(pidl.get());
        }
        auto* path = new std::wstring(root);
        const int at = InsertItem(combo, index, name, image, reinterpret_cast<LPARAM>(path));
        if (at < 0) {
            delete path;
            continue;
        }
        index = at + 1;
    }
}

void CCustomDialog::ReleaseDriveItems(HWND combo) {
    const int count = static_cast<int>(::SendMessageW(combo, CB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        COMBOBOXEXITEMW item{};
        item.mask = CBEIF_LPARAM;
        item.iItem = i;
        if (::SendMessageW(combo, CBEM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)))
            delete reinterpret_cast<std::wstring*>(item.lParam);
    }
    ::SendMessageW(combo, CB_RESETCONTENT, 0, 0);
}
