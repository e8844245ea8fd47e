// CLabel: a static text control that paints its own text (colour, font, transparency, 3-D effect), the part of
// the console's label control that dialog titles use.
#pragma once

#include <windows.h>

#include <string>

#include "platform/export.h"
#include "platform/win/handles.h"
#include "ui/win/window.h"

class UC_API CLabel : public uc::ui::Window {
public:
    // 3-D text: the highlight colour drawn one pixel off the text, below-right (raised) or above-left (sunken).
    enum Type3D { Raised = 0, Sunken = 1 };

    // Creates the label as a child STATIC control; false on failure.
    bool CreateLabel(const wchar_t* text, DWORD style, const RECT& rect, HWND parent, UINT id);

    CLabel& SetTextColor(COLORREF colour);
    CLabel& Set3DHiliteColor(COLORREF colour);
    CLabel& SetBkColor(COLORREF colour);
    CLabel& SetTransparent(bool transparent);
    CLabel& SetFontBold(bool bold);
    CLabel& SetFontName(const std::wstring& face, BYTE charSet = DEFAULT_CHARSET);
    // Size in points.
    CLabel& SetFontSize(int points);
    CLabel& SetFont3D(bool on, Type3D type = Raised);
    CLabel& SetText(const std::wstring& text);

    COLORREF TextColor() const { return m_text; }
    COLORREF HiliteColor() const { return m_hilite; }
    bool Transparent() const { return m_transparent; }
    bool Font3D() const { return m_3d; }
    HFONT Font() const { return m_font.get(); }
    // The face, size (points) and weight the label asked GDI for.
    const LOGFONTW& LogFont() const { return m_logFont; }

    // Paints the label into `dc` over `rect` (also used for WM_PRINTCLIENT).
    void Draw(HDC dc, const RECT& rect);

protected:
    void PreSubclassWindow() override;
    void OnPaint() override;
    void OnPrintClient(HDC dc, UINT flags) override;
    BOOL OnEraseBkgnd(HDC dc) override;

private:
    void RebuildFont();

    COLORREF m_text = ::GetSysColor(COLOR_WINDOWTEXT);
    COLORREF m_hilite = ::GetSysColor(COLOR_3DHILIGHT);
    COLORREF m_back = ::GetSysColor(COLOR_BTNFACE);
    bool m_transparent = false;
    bool m_3d = false;
    Type3D m_type = Raised;
    int m_points = 8;
    LOGFONTW m_logFont{};
    uc::UniqueHFont m_font;
};
