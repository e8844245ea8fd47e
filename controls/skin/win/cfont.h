// CFont: the font object the skin hands out (the subset of MFC's CFont the controls use): owns one GDI font.
#pragma once

#include <windows.h>

#include "platform/export.h"
#include "platform/win/handles.h"

class UC_API CFont {
public:
    CFont() = default;
    CFont(const CFont&) = delete;
    CFont& operator=(const CFont&) = delete;
    ~CFont() = default;  // releases the GDI font

    // Creates the GDI font; false (and no font) when GDI refuses.
    BOOL CreateFontIndirect(const LOGFONTW* logFont);
    // Takes ownership of `font`, releasing any font held before.
    BOOL Attach(HFONT font);
    HFONT Detach() { return m_font.release(); }
    BOOL DeleteObject();

    HFONT GetSafeHandle() const { return m_font.get(); }
    operator HFONT() const { return m_font.get(); }
    // Fills `logFont` from the GDI font; 0 when there is none.
    int GetLogFont(LOGFONTW* logFont) const;

private:
    uc::UniqueHFont m_font;
};
