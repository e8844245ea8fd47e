// Scope guards for the mouse: cursor visibility, cursor clipping and mouse capture.
#pragma once

#include <windows.h>

#include "platform/export.h"

// Forces the cursor's visibility for its lifetime and puts the display count back at the end (also when the
// scope is left by an exception). ShowCursorHelper(true) makes a hidden cursor visible while a modal loop runs.
class UC_API ShowCursorHelper {
public:
    explicit ShowCursorHelper(bool show);
    ~ShowCursorHelper();
    ShowCursorHelper(const ShowCursorHelper&) = delete;
    ShowCursorHelper& operator=(const ShowCursorHelper&) = delete;

private:
    bool m_show;
    int m_steps = 0;  // ShowCursor calls made, undone in the destructor
};

namespace uc::ui {

// Saves the cursor's clipping rectangle and restores it at scope exit.
class ClipCursorGuard {
public:
    ClipCursorGuard() { m_saved = ::GetClipCursor(&m_clip) != FALSE; }
    ~ClipCursorGuard() {
        if (m_saved) ::ClipCursor(&m_clip);
    }
    ClipCursorGuard(const ClipCursorGuard&) = delete;
    ClipCursorGuard& operator=(const ClipCursorGuard&) = delete;

private:
    RECT m_clip{};
    bool m_saved = false;
};

// Captures the mouse for `hwnd` and releases it at scope exit if the window still holds it.
class MouseCapture {
public:
    explicit MouseCapture(HWND hwnd) : m_hwnd(hwnd) { ::SetCapture(hwnd); }
    ~MouseCapture() {
        if (::GetCapture() == m_hwnd) ::ReleaseCapture();
    }
    MouseCapture(const MouseCapture&) = delete;
    MouseCapture& operator=(const MouseCapture&) = delete;

private:
    HWND m_hwnd;
};

}  // namespace uc::ui
