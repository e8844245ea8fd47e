// The touch-screen calibration prompt (CCustomMessageBox) and the please-wait box (CMessageBox) that its own
// user-interface thread (CMessageBoxThread) keeps painting while the caller is busy.
#pragma once

#include <windows.h>

#include <atomic>
#include <memory>
#include <string>

#include "dialogs/win/custom_dialog.h"
#include "platform/export.h"
#include "platform/win/gdiplus_encoders.h"
#include "ui/wait_box_layout.h"
#include "ui/win/ui_thread.h"
#include "ui/win/window.h"

// A modal prompt with one OK button and a read-only text; its title is always "CALIBRATE TOUCH SCREEN", and OK
// can be held disabled for a while so the prompt cannot be dismissed at once.
class UC_API CCustomMessageBox : public CCustomDialog {
public:
    explicit CCustomMessageBox(HWND parent = nullptr);

    void SetMessage(const std::wstring& text) { m_message = text; }
    // Both set how long OK stays disabled after the prompt opens (0: enabled from the start).
    void SetOKTimeout(int ms) { m_okDelay = ms; }
    void DisableOKButton(int ms) { m_okDelay = ms; }

protected:
    BOOL OnInitDialog() override;
    void OnTimer(UINT_PTR id) override;
    bool OnCommand(UINT id, UINT code, HWND control) override;

    std::wstring m_message;
    int m_okDelay = 0;
};

// The borderless please-wait window: wrapped text and an animated bar, shown top-most after a delay.
class UC_API CMessageBox : public uc::ui::Window {
public:
    std::wstring m_text;              // the wrapped text painted in the box
    UINT m_showDelay = 1000;          // ms before the box becomes visible
    UINT_PTR m_timerId = 0;           // the running timer (show delay, then animation)
    int m_barOffset = 0;              // gradient offset of the bar, -400..400
    BOOL m_showStatusBar = TRUE;

    // The window class of the box, registered on first use.
    static const wchar_t* ClassName();
    // Paints the box into `dc` (double-buffered); also what WM_PRINTCLIENT draws.
    void Paint(HDC dc);
    // Paints done so far (WM_PAINT and WM_PRINTCLIENT), for watching a box from another thread.
    int PaintCount() const { return m_paints.load(); }
    // True once the show delay has passed and the box was shown.
    bool WasShown() const { return m_shown.load(); }

protected:
    int OnCreate(CREATESTRUCTW* cs) override;
    void OnTimer(UINT_PTR id) override;
    void OnPaint() override;
    void OnPrintClient(HDC dc, UINT flags) override;

private:
    uc::ui::wait_box::Animation m_animation;
    std::atomic<int> m_paints{0};
    std::atomic<bool> m_shown{false};
};

// The thread that owns one please-wait box. Create it with CreateObject, set it up, Start it; the box shows only
// if the thread is still running after the delay. End it from any thread with Stop (or by deleting the object):
// the box is hidden and destroyed on its own thread.
class UC_API CMessageBoxThread : public uc::ui::UiThread {
public:
    // A new thread object, not started yet; the caller owns it.
    static CMessageBoxThread* CreateObject();
    ~CMessageBoxThread() override;

    // The setters belong before Start.
    void SetMessage(UINT resourceId);  // from this thread's resource module
    void SetMessage(const wchar_t* text);
    void SetTimeout(UINT ms);
    void SetShowStatusBar(BOOL show);

    const std::wstring& Message() const { return m_message; }
    UINT Timeout() const { return m_timeout; }
    // The box; its window lives on the thread (null before InitInstance and after ExitInstance).
    CMessageBox& Box() { return m_box; }

protected:
    CMessageBoxThread();
    bool InitInstance() override;
    int ExitInstance() override;

    std::wstring m_message;
    UINT m_timeout = 1000;
    CMessageBox m_box;

private:
    std::unique_ptr<uc::GdiplusSession> m_gdiplus;  // GDI+ for the box's painting, held on its thread
};

namespace uc::ui {

// A please-wait box for a scope: shown if the scope lasts longer than `delayMs`, gone when it ends.
class UC_API PleaseWait {
public:
    explicit PleaseWait(const std::wstring& text, UINT delayMs = 1000, bool showBar = true);
    ~PleaseWait();
    PleaseWait(const PleaseWait&) = delete;
    PleaseWait& operator=(const PleaseWait&) = delete;
    CMessageBoxThread* Thread() const { return m_thread.get(); }

private:
    std::unique_ptr<CMessageBoxThread> m_thread;
};

}  // namespace uc::ui
