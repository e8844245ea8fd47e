// Scope guards for painting: the paint DC, borrowed window DCs, an off-screen canvas and saved DC state.
#pragma once

#include <windows.h>

#include "platform/export.h"
#include "platform/win/handles.h"

namespace uc::ui {

// BeginPaint/EndPaint.
class PaintDC {
public:
    explicit PaintDC(HWND hwnd) : m_hwnd(hwnd), m_dc(::BeginPaint(hwnd, &m_ps)) {}
    ~PaintDC() {
        if (m_dc) ::EndPaint(m_hwnd, &m_ps);
    }
    PaintDC(const PaintDC&) = delete;
    PaintDC& operator=(const PaintDC&) = delete;
    HDC dc() const { return m_dc; }
    operator HDC() const { return m_dc; }
    const PAINTSTRUCT& ps() const { return m_ps; }

private:
    HWND m_hwnd;
    PAINTSTRUCT m_ps{};
    HDC m_dc;
};

// GetDC/ReleaseDC (a null window gives the screen's DC); GetWindowDC with `whole`.
class WindowDC {
public:
    explicit WindowDC(HWND hwnd, bool whole = false)
        : m_hwnd(hwnd), m_dc(whole ? ::GetWindowDC(hwnd) : ::GetDC(hwnd)) {}
    ~WindowDC() {
        if (m_dc) ::ReleaseDC(m_hwnd, m_dc);
    }
    WindowDC(const WindowDC&) = delete;
    WindowDC& operator=(const WindowDC&) = delete;
    HDC dc() const { return m_dc; }
    operator HDC() const { return m_dc; }

private:
    HWND m_hwnd;
    HDC m_dc;
};

// SaveDC/RestoreDC: modes, colours, origins and selected objects come back at scope exit.
class SavedDC {
public:
    explicit SavedDC(HDC dc) : m_dc(dc), m_saved(::SaveDC(dc)) {}
    ~SavedDC() {
        if (m_saved) ::RestoreDC(m_dc, m_saved);
    }
    SavedDC(const SavedDC&) = delete;
    SavedDC& operator=(const SavedDC&) = delete;

private:
    HDC m_dc;
    int m_saved;
};

// An off-screen w x h bitmap compatible with `reference`, selected into its own memory DC, for flicker-free
// painting: draw into dc(), then CopyTo the real DC.
class UC_API Canvas {
public:
    Canvas(HDC reference, int w, int h);
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    bool ok() const { return m_selected.previous() != nullptr; }
    HDC dc() const { return m_dc.get(); }
    HBITMAP bitmap() const { return m_bitmap.get(); }
    int width() const { return m_w; }
    int height() const { return m_h; }
    bool CopyTo(HDC target, int x = 0, int y = 0) const;

private:
    int m_w, m_h;
    UniqueHdc m_dc;
    UniqueHBitmap m_bitmap;
    SelectObjectGuard m_selected;  // declared last: deselects before the bitmap and the DC are deleted
};

}  // namespace uc::ui
