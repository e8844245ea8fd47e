// CLabel: font building and self-painting of the text.
#include "ui/win/label.h"

#include <cwchar>

#include "ui/win/gdi.h"

bool CLabel::CreateLabel(const wchar_t* text, DWORD style, const RECT& rect, HWND parent, UINT id) {
    return Create(0, L"STATIC", text, style, rect, parent, id);
}

void CLabel::PreSubclassWindow() {
    m_logFont = LOGFONTW{};
    if (HFONT current = reinterpret_cast<HFONT>(::SendMessageW(m_hWnd, WM_GETFONT, 0, 0))) {
        ::GetObjectW(current, sizeof m_logFont, &m_logFont);
    } else {
        std::wcscpy(m_logFont.lfFaceName, L"MS Shell Dlg");
    }
    RebuildFont();
}

void CLabel::RebuildFont() {
    uc::ui::WindowDC screen(nullptr);
    m_logFont.lfHeight = -::MulDiv(m_points, ::GetDeviceCaps(screen, LOGPIXELSY), 72);
    m_logFont.lfWidth = 0;
    m_font.reset(::CreateFontIndirectW(&m_logFont));
    if (m_hWnd) Invalidate();
}

CLabel& CLabel::SetTextColor(COLORREF colour) {
    m_text = colour;
    if (m_hWnd) Invalidate();
    return *this;
}

CLabel& CLabel::Set3DHiliteColor(COLORREF colour) {
    m_hilite = colour;
    if (m_hWnd) Invalidate();
    return *this;
}

CLabel& CLabel::SetBkColor(COLORREF colour) {
    m_back = colour;
    if (m_hWnd) Invalidate();
    return *this;
}

CLabel& CLabel::SetTransparent(bool transparent) {
    m_transparent = transparent;
    if (m_hWnd) Invalidate();
    return *this;
}

CLabel& CLabel::SetFontBold(bool bold) {
    m_logFont.lfWeight = bold ? FW_BOLD : FW_NORMAL;
    RebuildFont();
    return *this;
}

CLabel& CLabel::SetFontName(const std::wstring& face, BYTE charSet) {
    wcsncpy_s(m_logFont.lfFaceName, face.c_str(), _TRUNCATE);
    m_logFont.lfCharSet = charSet;
    RebuildFont();
    return *this;
}

CLabel& CLabel::SetFontSize(int points) {
    m_points = points > 0 ? points : 1;
    RebuildFont();
    return *this;
}

CLabel& CLabel::SetFont3D(bool on, Type3D type) {
    m_3d = on;
    m_type = type;
    if (m_hWnd) Invalidate();
    return *this;
}

CLabel& CLabel::SetText(const std::wstring& text) {
    Window::SetText(text);
    if (m_hWnd) Invalidate();
    return *this;
}

void CLabel::Draw(HDC dc, const RECT& rect) {
    uc::ui::SavedDC saved(dc);
    if (!m_transparent) {
        uc::UniqueHBrush back(::CreateSolidBrush(m_back));
        ::FillRect(dc, &rect, back.get());
    }
    ::SetBkMode(dc, TRANSPARENT);
    if (m_font) ::SelectObject(dc, m_font.get());
    const std::wstring text = Text();
    UINT format = DT_WORDBREAK | DT_NOPREFIX;
    const LONG_PTR style = ::GetWindowLongPtrW(m_hWnd, GWL_STYLE);
    if ((style & SS_TYPEMASK) == SS_CENTER) format |= DT_CENTER;
    if ((style & SS_TYPEMASK) == SS_RIGHT) format |= DT_RIGHT;
    if (m_3d) {
        RECT shifted = rect;
        ::OffsetRect(&shifted, m_type == Raised ? 1 : -1, m_type == Raised ? 1 : -1);
        ::SetTextColor(dc, m_hilite);
        ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &shifted, format);
    }
    RECT r = rect;
    ::SetTextColor(dc, m_text);
    ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &r, format);
}

void CLabel::OnPaint() {
    uc::ui::PaintDC dc(m_hWnd);
    Draw(dc, ClientRect());
}

void CLabel::OnPrintClient(HDC dc, UINT) { Draw(dc, ClientRect()); }

BOOL CLabel::OnEraseBkgnd(HDC) { return TRUE; }  // all painting is in Draw
