// CCustomPropertySheet and CCustomPropertyPage: console styling, resized pages, touch-panel messages.
#include "dialogs/win/custom_property_sheet.h"

#include <commctrl.h>

#include "dialogs/win/custom_dialog.h"
#include "platform/localisation.h"
#include "platform/paths.h"
#include "ui/geometry.h"
#include "ui/win/cursor.h"
#include "ui/win/gdi.h"
#include "ui/win/resources.h"

namespace {
constexpr UINT kApplyId = 12321;
constexpr UINT kBackId = 12323;
constexpr UINT kNextId = 12324;

BOOL CALLBACK SetFontOf(HWND child, LPARAM font) {
    ::SendMessageW(child, WM_SETFONT, static_cast<WPARAM>(font), TRUE);
    return TRUE;
}
}  // namespace

HWND CCustomPropertySheet::m_touch = nullptr;

void CCustomPropertyPage::SetBkColor(COLORREF colour) {
    m_bkColor = colour;
    m_useBkColor = TRUE;
    if (m_hWnd) Invalidate();
}

BOOL CCustomPropertyPage::OnInitDialog() {
    uc::ui::Dialog::OnInitDialog();
    uc::ui::TranslateChildTexts(m_hWnd);
    return TRUE;
}

BOOL CCustomPropertyPage::OnEraseBkgnd(HDC dc) {
    if (!m_useBkColor) return uc::ui::PropertyPage::OnEraseBkgnd(dc);
    uc::ui::FillClient(m_hWnd, dc, m_bkColor);
    return TRUE;
}

void CCustomPropertyPage::OnSize(UINT type, int cx, int cy) {
    uc::ui::PropertyPage::OnSize(type, cx, cy);
    m_resizer.Move();
}

// Begin and end painting and draw nothing: that validates the page and erases it before its controls paint (a bare
// ValidateRect left the erase pending, to land over the controls later).
void CCustomPropertyPage::OnPaint() { uc::ui::PaintDC validate(m_hWnd); }

void CCustomPropertyPage::OnDestroy() {
    DestroyToolTips();
    uc::ui::PropertyPage::OnDestroy();
}

CCustomPropertySheet::CCustomPropertySheet(UINT captionId, HWND parent, UINT firstPage)
    : uc::ui::PropertySheet(uc::ui::LoadStringResource(captionId, uc::ui::ResourceModule()), parent, firstPage) {}

CCustomPropertySheet::CCustomPropertySheet(const wchar_t* caption, HWND parent, UINT firstPage)
    : uc::ui::PropertySheet(caption ? caption : L"", parent, firstPage) {}

void CCustomPropertySheet::SetCascadeBkColor(COLORREF colour) {
    m_cascadeBkColor = colour;
    m_useCascadeBkColor = TRUE;
}

void CCustomPropertySheet::AddPage(uc::ui::PropertyPage* page) {
    if (auto* custom = dynamic_cast<CCustomPropertyPage*>(page); custom && m_useCascadeBkColor) {
        custom->SetBkColor(m_cascadeBkColor);
    }
    uc::ui::PropertySheet::AddPage(page);
}

void CCustomPropertySheet::OnSheetCreating(DLGTEMPLATE* tmpl) {
    // No close box: console sheets end through their own buttons.
    auto* words = reinterpret_cast<WORD*>(tmpl);
    DWORD* style = (words[0] == 1 && words[1] == 0xFFFF) ? reinterpret_cast<DWORD*>(words + 6) : &tmpl->style;
    *style &= ~static_cast<DWORD>(WS_SYSMENU);
}

void CCustomPropertySheet::BuildPropPageArray() {
    if (!m_resizePages || m_pages.empty()) return;
    WORD points = 0;
    std::wstring face;
    if (!uc::ui::TemplateFont(m_pages.front()->Template(), points, face)) return;
    LOGFONTW lf{};
    uc::ui::WindowDC screen(nullptr);
    lf.lfHeight = -::MulDiv(points, ::GetDeviceCaps(screen, LOGPIXELSY), 72);  // a point font of that size
    wcsncpy_s(lf.lfFaceName, face.c_str(), _TRUNCATE);
    m_sheetFont.reset(::CreateFontIndirectW(&lf));
}

RECT CCustomPropertySheet::ComputePageRect(RECT base) {
    HWND tab = TabControl();
    if (Flags() & PSH_WIZARD) {
        if (tab) ::ShowWindow(tab, SW_HIDE);
        if (HWND back = Item(kBackId)) {
            RECT r{};
            ::GetWindowRect(back, &r);
            ::MapWindowPoints(HWND_DESKTOP, m_hWnd, reinterpret_cast<POINT*>(&r), 2);
            base.bottom = r.top - 2;
        }
        return base;
    }
    if (tab) ::SendMessageW(tab, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&base));
    return base;
}

BOOL CCustomPropertySheet::OnInitDialog() {
    const utilsExam::Area area = utilsExam::CalculateDialogRect();
    const RECT w = WindowRect();
    const uc::ui::Point at =
        uc::ui::CenterFromCorner({area.left, area.top, area.right, area.bottom}, w.right - w.left, w.bottom - w.top);
    ::SetWindowPos(m_hWnd, nullptr, at.x, at.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);

    m_cancelButton.SubclassDlgItem(IDCANCEL, m_hWnd);
    m_okButton.SubclassDlgItem(IDOK, m_hWnd);
    m_applyButton.SubclassDlgItem(kApplyId, m_hWnd);

    if (m_resizePages) {
        const int active = ActiveIndex();
        for (std::size_t i = 0; i < m_pages.size(); ++i) SetActive(static_cast<int>(i));  // every page exists now
        if (m_sheetFont) ::EnumChildWindows(m_hWnd, &SetFontOf, reinterpret_cast<LPARAM>(m_sheetFont.get()));
        SetActive(active < 0 ? 0 : active);
        if (HWND tab = TabControl()) {
            RECT r{};
            ::GetWindowRect(tab, &r);
            ::MapWindowPoints(HWND_DESKTOP, m_hWnd, reinterpret_cast<POINT*>(&r), 2);
            m_pageRect = ComputePageRect((Flags() & PSH_WIZARD) ? ClientRect() : r);
        } else {
            m_pageRect = ComputePageRect(ClientRect());
        }
        if (HWND page = ActivePage()) {
            ::MoveWindow(page, m_pageRect.left, m_pageRect.top, m_pageRect.right - m_pageRect.left,
                         m_pageRect.bottom - m_pageRect.top, TRUE);
        }
    }
    if (m_touchNotify && m_touch && ::IsWindow(m_touch)) {
        m_touchReply = ::SendMessageW(m_touch, UWM_TOUCH_DIALOG_OPEN,
                                      m_touchPassSelf > 0 ? reinterpret_cast<WPARAM>(this) : 0, 0);
    }
    TranslateControls();
    return TRUE;
}

void CCustomPropertySheet::TranslateControls() {
    if (!m_hWnd) return;
    uc::ui::TranslateChildTexts(m_hWnd);
    HWND tab = TabControl();
    if (!tab) return;
    const int count = static_cast<int>(::SendMessageW(tab, TCM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        wchar_t text[256] = {};
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = 255;
        if (!::SendMessageW(tab, TCM_GETITEMW, i, reinterpret_cast<LPARAM>(&item))) continue;
        std::wstring translated = TranslateStr(text);
        item.pszText = translated.data();
        ::SendMessageW(tab, TCM_SETITEMW, i, reinterpret_cast<LPARAM>(&item));
    }
}

bool CCustomPropertySheet::OnNotify(NMHDR* header, LRESULT&) {
    if (header && header->code == static_cast<UINT>(TCN_SELCHANGE)) Post(UWM_RESIZE_PAGE);
    return false;  // the sheet's own handling follows
}

bool CCustomPropertySheet::OnCommand(UINT id, UINT, HWND) {
    if (id == kApplyId || id == kBackId || id == kNextId) Post(UWM_RESIZE_PAGE);
    return false;
}

LRESULT CCustomPropertySheet::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == UWM_RESIZE_PAGE) return OnResizePage(wp, lp);
    return uc::ui::PropertySheet::WindowProc(msg, wp, lp);
}

LRESULT CCustomPropertySheet::OnResizePage(WPARAM, LPARAM) {
    if (!m_resizePages) return 0;
    if (HWND page = ActivePage()) {
        ::MoveWindow(page, m_pageRect.left, m_pageRect.top, m_pageRect.right - m_pageRect.left,
                     m_pageRect.bottom - m_pageRect.top, TRUE);
    }
    return 0;
}

void CCustomPropertySheet::OnSize(UINT type, int cx, int cy) {
    uc::ui::PropertySheet::OnSize(type, cx, cy);
    m_resizer.Move();
    m_pageRect = ClientRect();
    if (m_resizePages && TabControl()) m_pageRect = ComputePageRect(m_pageRect);
}

void CCustomPropertySheet::OnDestroy() {
    if (m_touchNotify && m_touch && ::IsWindow(m_touch)) ::SendMessageW(m_touch, UWM_TOUCH_DIALOG_CLOSE, 0, 0);
    DestroyToolTips();
    uc::ui::PropertySheet::OnDestroy();
}

BOOL CCustomPropertySheet::OnEraseBkgnd(HDC dc) {
    if (!m_useCascadeBkColor) return uc::ui::PropertySheet::OnEraseBkgnd(dc);
    uc::ui::FillClient(m_hWnd, dc, m_cascadeBkColor);
    return TRUE;
}

HBRUSH CCustomPropertySheet::OnCtlColor(HDC dc, HWND control, UINT type) {
    HBRUSH brush = uc::ui::PropertySheet::OnCtlColor(dc, control, type);
    if (m_useCascadeBkColor) ::SetBkMode(dc, TRANSPARENT);
    return brush;
}

INT_PTR CCustomPropertySheet::DoModal() {
    ShowCursorHelper cursor(true);
    uc::ui::ClipCursorGuard clip;
    return uc::ui::PropertySheet::DoModal();
}
