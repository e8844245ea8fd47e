// uc::ui::Window: a C++ object bound to one HWND (created by it or subclassed), with messages dispatched to
// virtual handlers, timers, mouse capture and owner-draw reflection.
#pragma once

#include <windows.h>

#include <string>

#include "platform/export.h"

namespace uc::ui {

// Binding: a window the object creates with a class registered by RegisterWindowClass is bound from
// WM_NCCREATE on; any other window (a system control, a dialog item) is subclassed and bound from then on.
// The binding ends at WM_NCDESTROY, after which OnFinalMessage runs (a window that owns itself deletes itself
// there). An object must be destroyed on its window's thread or after its window.
//
// Dispatch: every message goes through the virtual WindowProc, whose default switch calls the handlers below;
// each handler's default is Default(), the processing the window would have had without the object (the
// original window procedure, DefWindowProc, or the dialog manager). Exceptions never leave a handler: they are
// logged and the message gets its default processing.
class UC_API Window {
public:
    Window();
    virtual ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND GetHwnd() const { return m_hWnd; }
    // The object bound to `hwnd` in this process, or null.
    static Window* FromHandle(HWND hwnd);

    // Creates a window. With a class from RegisterWindowClass the object sees WM_NCCREATE and WM_CREATE; with any
    // other class (L"BUTTON", L"STATIC", ...) the window is subclassed right after creation. False on failure.
    bool Create(DWORD exStyle, const wchar_t* className, const wchar_t* text, DWORD style, const RECT& rect,
                HWND parent, UINT id);
    // Binds the object to an existing window of this process; PreSubclassWindow runs first. False when the object
    // already has a window, `hwnd` is not a window, or another object is bound to it.
    bool Subclass(HWND hwnd);
    // Subclass(GetDlgItem(parent, id)).
    bool SubclassDlgItem(UINT id, HWND parent);
    // Ends the binding and leaves the window alive; returns it. Must run on the window's thread.
    HWND Unsubclass();
    bool DestroyWindow();

    // Thin helpers over the window.
    LRESULT Send(UINT msg, WPARAM wp = 0, LPARAM lp = 0) const { return ::SendMessageW(m_hWnd, msg, wp, lp); }
    bool Post(UINT msg, WPARAM wp = 0, LPARAM lp = 0) const { return ::PostMessageW(m_hWnd, msg, wp, lp) != FALSE; }
    RECT ClientRect() const;
    RECT WindowRect() const;
    std::wstring Text() const;
    void SetText(const std::wstring& text) const { ::SetWindowTextW(m_hWnd, text.c_str()); }
    HWND Parent() const { return ::GetParent(m_hWnd); }
    HWND Item(UINT id) const { return ::GetDlgItem(m_hWnd, static_cast<int>(id)); }
    void Invalidate(bool erase = true) const { ::InvalidateRect(m_hWnd, nullptr, erase ? TRUE : FALSE); }

    // Window timers, through the process's timer service (real USER32 timers unless a test installed others).
    UINT_PTR SetTimer(UINT_PTR id, UINT periodMs);
    bool KillTimer(UINT_PTR id);

    // Mouse capture of this window.
    void SetCapture() const { ::SetCapture(m_hWnd); }
    bool HasCapture() const { return m_hWnd && ::GetCapture() == m_hWnd; }
    // Releases the capture only when this window holds it.
    void ReleaseCapture() const {
        if (HasCapture()) ::ReleaseCapture();
    }

    // Registers a window class whose windows Create binds from their first message. Registering a name twice
    // (same module) is harmless; returns false only when the class cannot be registered.
    static bool RegisterWindowClass(const wchar_t* name, UINT classStyle, HBRUSH background, HCURSOR cursor);
    // The framework's plain class: CS_DBLCLKS, arrow cursor, no background.
    static const wchar_t* DefaultClassName();

protected:
    // The dispatcher. Override to handle messages the handlers below do not cover; call the base for the rest.
    virtual LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp);
    // The processing the current message would get without this object.
    LRESULT Default();
    // The same for another message (or the current one with other parameters).
    LRESULT DefaultProc(UINT msg, WPARAM wp, LPARAM lp);

    // Called by Subclass with the window set, before the object starts to see its messages.
    virtual void PreSubclassWindow() {}
    // After WM_NCDESTROY; the object has no window any more and may delete itself here.
    virtual void OnFinalMessage(HWND /*hwnd*/) {}

    // Handlers; each default gives the message its default processing.
    virtual int OnCreate(CREATESTRUCTW* cs);                       // -1 refuses the creation
    virtual void OnDestroy();
    virtual void OnClose();
    virtual void OnPaint();
    virtual void OnPrintClient(HDC dc, UINT flags);
    virtual BOOL OnEraseBkgnd(HDC dc);
    virtual void OnSize(UINT type, int cx, int cy);
    virtual void OnTimer(UINT_PTR id);
    virtual void OnLButtonDown(UINT flags, POINT pt);
    virtual void OnLButtonUp(UINT flags, POINT pt);
    virtual void OnLButtonDblClk(UINT flags, POINT pt);
    virtual void OnMouseMove(UINT flags, POINT pt);
    virtual void OnCaptureChanged(HWND newOwner);
    virtual void OnSetFocus(HWND previous);
    // WM_CTLCOLORSTATIC, ...BTN, ...EDIT, ...DLG, ...LISTBOX, ...SCROLLBAR: `type` is the message.
    virtual HBRUSH OnCtlColor(HDC dc, HWND control, UINT type);
    // WM_COMMAND; return true when handled (then the message gets no default processing).
    virtual bool OnCommand(UINT id, UINT code, HWND control);
    // WM_NOTIFY; return true and set `result` when handled.
    virtual bool OnNotify(NMHDR* header, LRESULT& result);

    // Owner-draw reflection: a window that receives WM_DRAWITEM for a child bound to an object hands it to the
    // child's OnChildNotify first. Return true and set `result` when the child handled it.
    virtual bool OnChildNotify(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result);

    // Runs one message through WindowProc with Default() set up for it and exceptions caught.
    LRESULT Dispatch(UINT msg, WPARAM wp, LPARAM lp);

    HWND m_hWnd = nullptr;
    bool m_created = false;  // the object created the window, so its destructor destroys it

private:
    friend struct WindowAccess;
    void Bind(HWND hwnd, WNDPROC previous, bool ownClass);
    void Unbind();

    WNDPROC m_previous = nullptr;   // what Default() calls
    bool m_ownClass = false;        // bound from WM_NCCREATE through a registered class (nothing to restore)
    struct Current {
        UINT msg;
        WPARAM wp;
        LPARAM lp;
    } m_current{};
};

// Hands WM_DRAWITEM (and WM_MEASUREITEM, WM_DELETEITEM, WM_COMPAREITEM) for a child bound to an object to that
// child. For parents that are not framework windows: call it first from their window procedure. True when the
// child handled it.
UC_API bool ReflectToChild(HWND parent, UINT msg, WPARAM wp, LPARAM lp, LRESULT& result);

// Installs, once per parent, a subclass on a foreign parent window (one that is no framework window) that
// reflects owner-draw messages to its bound children. Owner-drawn controls call it for their parent.
UC_API void EnsureReflection(HWND parent);

}  // namespace uc::ui
