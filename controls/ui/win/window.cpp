// uc::ui::Window: binding to HWNDs through window properties, subclassing, dispatch and owner-draw reflection.
#include "ui/win/window.h"

#include <windowsx.h>

#include <exception>
#include <vector>

#include "platform/logger.h"
#include "ui/win/resources.h"
#include "ui/win/timers.h"

namespace uc::ui {

// Reaches the private parts of Window from the window procedures and the reflection helpers.
struct WindowAccess {
    static LRESULT Dispatch(Window& w, UINT msg, WPARAM wp, LPARAM lp) { return w.Dispatch(msg, wp, lp); }
    static void Bind(Window& w, HWND hwnd, WNDPROC previous, bool ownClass) { w.Bind(hwnd, previous, ownClass); }
    static void Unbind(Window& w) { w.Unbind(); }
    static bool ChildNotify(Window& w, UINT msg, WPARAM wp, LPARAM lp, LRESULT& r) {
        return w.OnChildNotify(msg, wp, lp, r);
    }
};

namespace {

// Window properties: the bound object, and the procedure a subclass passes messages on to.
ATOM ObjectAtom() {
    static const ATOM atom = ::GlobalAddAtomW(L"uc.ui.Window.object");
    return atom;
}
ATOM PreviousAtom() {
    static const ATOM atom = ::GlobalAddAtomW(L"uc.ui.Window.previous");
    return atom;
}
// Sent to a window from a foreign thread to end its binding on its own thread (lParam: destroy it too).
UINT UnbindMessage() {
    static const UINT msg = ::RegisterWindowMessageW(L"uc.ui.Window.unbind");
    return msg;
}

bool OwnedByThisProcess(HWND hwnd) {
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    return pid == ::GetCurrentProcessId();
}

Window* BoundObject(HWND hwnd) { return static_cast<Window*>(::GetPropW(hwnd, MAKEINTATOM(ObjectAtom()))); }

// Handles the cross-thread unbind request; true when `msg` was one.
bool HandleUnbindRequest(Window* w, HWND hwnd, UINT msg, LPARAM lp) {
    if (msg != UnbindMessage() || !w) return false;
    if (lp) {
        ::DestroyWindow(hwnd);
    } else {
        WindowAccess::Unbind(*w);
    }
    return true;
}

// Procedure of subclassed windows: the bound object's dispatcher, or (object gone, but another subclass sits
// above this one so it could not be removed) a plain pass-through to the previous procedure.
LRESULT CALLBACK SubclassProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    Window* w = BoundObject(hwnd);
    if (HandleUnbindRequest(w, hwnd, msg, lp)) return 0;
    if (w) return WindowAccess::Dispatch(*w, msg, wp, lp);
    auto previous = reinterpret_cast<WNDPROC>(::GetPropW(hwnd, MAKEINTATOM(PreviousAtom())));
    return previous ? ::CallWindowProcW(previous, hwnd, msg, wp, lp) : ::DefWindowProcW(hwnd, msg, wp, lp);
}

// Procedure of the classes registered by RegisterWindowClass: binds the object passed to CreateWindowEx.
LRESULT CALLBACK ClassProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_NCCREATE) {
        auto* cs = reinterpret_cast<CREATESTRUCTW*>(lp);
        if (auto* w = static_cast<Window*>(cs->lpCreateParams)) WindowAccess::Bind(*w, hwnd, nullptr, true);
    }
    Window* w = BoundObject(hwnd);
    if (HandleUnbindRequest(w, hwnd, msg, lp)) return 0;
    if (w) return WindowAccess::Dispatch(*w, msg, wp, lp);
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

// Subclass of a foreign parent that only reflects owner-draw messages to bound children; it deletes itself
// with the parent.
class Reflector final : public Window {
protected:
    void OnFinalMessage(HWND) override { delete this; }
};

constexpr const wchar_t* kDefaultClass = L"uc.ui.Window";

}  // namespace

Window::Window() = default;

Window::~Window() {
    if (!m_hWnd) return;
    HWND hwnd = m_hWnd;
    if (!::IsWindow(hwnd)) {
        Unbind();
        return;
    }
    // A window this object created dies with it; a subclassed one lives on without it.
    const bool destroy = m_created;
    if (::GetWindowThreadProcessId(hwnd, nullptr) == ::GetCurrentThreadId()) {
        if (destroy) ::DestroyWindow(hwnd);
        Unbind();
    } else {
        ::SendMessageW(hwnd, UnbindMessage(), 0, destroy ? 1 : 0);
    }
}

Window* Window::FromHandle(HWND hwnd) {
    if (!hwnd || !::IsWindow(hwnd) || !OwnedByThisProcess(hwnd)) return nullptr;
    return BoundObject(hwnd);
}

const wchar_t* Window::DefaultClassName() {
    static const bool registered = RegisterWindowClass(kDefaultClass, CS_DBLCLKS, nullptr, ::LoadCursorW(nullptr, IDC_ARROW));
    (void)registered;
    return kDefaultClass;
}

bool Window::RegisterWindowClass(const wchar_t* name, UINT classStyle, HBRUSH background, HCURSOR cursor) {
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    if (::GetClassInfoExW(LibraryModule(), name, &wc)) return wc.lpfnWndProc == ClassProc;
    wc = WNDCLASSEXW{};
    wc.cbSize = sizeof wc;
    wc.style = classStyle;
    wc.lpfnWndProc = ClassProc;
    wc.hInstance = LibraryModule();
    wc.hCursor = cursor;
    wc.hbrBackground = background;
    wc.lpszClassName = name;
    if (::RegisterClassExW(&wc)) return true;
    // Another thread may have registered it in between.
    return ::GetClassInfoExW(LibraryModule(), name, &wc) && wc.lpfnWndProc == ClassProc;
}

bool Window::Create(DWORD exStyle, const wchar_t* className, const wchar_t* text, DWORD style, const RECT& rect,
                    HWND parent, UINT id) {
    if (m_hWnd) return false;
    if (!className) className = DefaultClassName();
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    const bool ownClass = ::GetClassInfoExW(LibraryModule(), className, &wc) && wc.lpfnWndProc == ClassProc;
    HMENU menu = (style & WS_CHILD) ? reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)) : nullptr;
    HWND hwnd = ::CreateWindowExW(exStyle, className, text ? text : L"", style, rect.left, rect.top,
                                  rect.right - rect.left, rect.bottom - rect.top, parent, menu, LibraryModule(),
                                  ownClass ? this : nullptr);
    if (!hwnd) {
        UC_LOG(zelLogger::Failure)(L"creating a window of class %s failed (error %lu)", className, ::GetLastError());
        return false;
    }
    if (!ownClass && !Subclass(hwnd)) {
        ::DestroyWindow(hwnd);
        return false;
    }
    m_created = true;
    return true;
}

bool Window::Subclass(HWND hwnd) {
    if (m_hWnd || !hwnd || !::IsWindow(hwnd) || !OwnedByThisProcess(hwnd)) return false;
    if (Window* bound = BoundObject(hwnd)) {
        // A reflector only stands in for a parent that had no object; a real object takes its place (and
        // reflects as well).
        auto* reflector = dynamic_cast<Reflector*>(bound);
        if (!reflector) return false;
        WindowAccess::Unbind(*reflector);
        delete reflector;
    }
    m_hWnd = hwnd;
    PreSubclassWindow();
    auto previous = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrW(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&SubclassProc)));
    m_hWnd = nullptr;
    if (!previous) return false;
    Bind(hwnd, previous, false);
    return true;
}

bool Window::SubclassDlgItem(UINT id, HWND parent) { return Subclass(::GetDlgItem(parent, static_cast<int>(id))); }

HWND Window::Unsubclass() {
    HWND hwnd = m_hWnd;
    Unbind();
    return hwnd;
}

bool Window::DestroyWindow() { return m_hWnd && ::DestroyWindow(m_hWnd); }

void Window::Bind(HWND hwnd, WNDPROC previous, bool ownClass) {
    m_hWnd = hwnd;
    m_previous = previous;
    m_ownClass = ownClass;
    ::SetPropW(hwnd, MAKEINTATOM(ObjectAtom()), this);
    if (previous) ::SetPropW(hwnd, MAKEINTATOM(PreviousAtom()), reinterpret_cast<HANDLE>(previous));
}

void Window::Unbind() {
    HWND hwnd = m_hWnd;
    if (!hwnd) return;
    if (!m_ownClass && ::IsWindow(hwnd) &&
        ::GetWindowLongPtrW(hwnd, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&SubclassProc)) {
        ::SetWindowLongPtrW(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_previous));
        ::RemovePropW(hwnd, MAKEINTATOM(PreviousAtom()));
    }
    // Otherwise another subclass sits above ours: SubclassProc stays in the chain and passes messages through.
    ::RemovePropW(hwnd, MAKEINTATOM(ObjectAtom()));
    m_hWnd = nullptr;
    m_created = false;
}

LRESULT Window::Dispatch(UINT msg, WPARAM wp, LPARAM lp) {
    const Current saved = m_current;
    m_current = {msg, wp, lp};
    LRESULT result = 0;
    try {
        result = WindowProc(msg, wp, lp);
    } catch (const std::exception& e) {
        UC_LOG(zelLogger::Failure)(L"window message 0x%04X: exception '%S'; default processing instead", msg, e.what());
        result = DefaultProc(msg, wp, lp);
    } catch (...) {
        UC_LOG(zelLogger::Failure)(L"window message 0x%04X: exception; default processing instead", msg);
        result = DefaultProc(msg, wp, lp);
    }
    m_current = saved;
    if (msg == WM_NCDESTROY && m_hWnd) {
        HWND hwnd = m_hWnd;
        Unbind();
        OnFinalMessage(hwnd);  // may delete this
    }
    return result;
}

LRESULT Window::Default() { return DefaultProc(m_current.msg, m_current.wp, m_current.lp); }

LRESULT Window::DefaultProc(UINT msg, WPARAM wp, LPARAM lp) {
    if (!m_hWnd) return 0;
    return m_previous ? ::CallWindowProcW(m_previous, m_hWnd, msg, wp, lp) : ::DefWindowProcW(m_hWnd, msg, wp, lp);
}

LRESULT Window::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    const POINT pt{GET_X_LPARAM(lp), GET_Y_LPARAM(lp)};
    switch (msg) {
    case WM_CREATE:
        return OnCreate(reinterpret_cast<CREATESTRUCTW*>(lp));
    case WM_DESTROY:
        OnDestroy();
        return 0;
    case WM_CLOSE:
        OnClose();
        return 0;
    case WM_PAINT:
        OnPaint();
        return 0;
    case WM_PRINTCLIENT:
        OnPrintClient(reinterpret_cast<HDC>(wp), static_cast<UINT>(lp));
        return 0;
    case WM_ERASEBKGND:
        return OnEraseBkgnd(reinterpret_cast<HDC>(wp));
    case WM_SIZE:
        OnSize(static_cast<UINT>(wp), LOWORD(lp), HIWORD(lp));
        return 0;
    case WM_TIMER:
        OnTimer(wp);
        return 0;
    case WM_LBUTTONDOWN:
        OnLButtonDown(static_cast<UINT>(wp), pt);
        return 0;
    case WM_LBUTTONUP:
        OnLButtonUp(static_cast<UINT>(wp), pt);
        return 0;
    case WM_LBUTTONDBLCLK:
        OnLButtonDblClk(static_cast<UINT>(wp), pt);
        return 0;
    case WM_MOUSEMOVE:
        OnMouseMove(static_cast<UINT>(wp), pt);
        return 0;
    case WM_CAPTURECHANGED:
        OnCaptureChanged(reinterpret_cast<HWND>(lp));
        return 0;
    case WM_SETFOCUS:
        OnSetFocus(reinterpret_cast<HWND>(wp));
        return 0;
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORSCROLLBAR:
        return reinterpret_cast<LRESULT>(OnCtlColor(reinterpret_cast<HDC>(wp), reinterpret_cast<HWND>(lp), msg));
    case WM_COMMAND:
        if (OnCommand(LOWORD(wp), HIWORD(wp), reinterpret_cast<HWND>(lp))) return 0;
        return Default();
    case WM_NOTIFY: {
        LRESULT result = 0;
        if (OnNotify(reinterpret_cast<NMHDR*>(lp), result)) return result;
        return Default();
    }
    case WM_DRAWITEM:
    case WM_MEASUREITEM:
    case WM_DELETEITEM:
    case WM_COMPAREITEM: {
        LRESULT result = 0;
        if (ReflectToChild(m_hWnd, msg, wp, lp, result)) return result;
        return Default();
    }
    default:
        return Default();
    }
}

int Window::OnCreate(CREATESTRUCTW*) { return static_cast<int>(Default()); }
void Window::OnDestroy() { Default(); }
void Window::OnClose() { Default(); }
void Window::OnPaint() { Default(); }
void Window::OnPrintClient(HDC, UINT) { Default(); }
BOOL Window::OnEraseBkgnd(HDC) { return static_cast<BOOL>(Default()); }
void Window::OnSize(UINT, int, int) { Default(); }
void Window::OnTimer(UINT_PTR) { Default(); }
void Window::OnLButtonDown(UINT, POINT) { Default(); }
void Window::OnLButtonUp(UINT, POINT) { Default(); }
void Window::OnLButtonDblClk(UINT, POINT) { Default(); }
void Window::OnMouseMove(UINT, POINT) { Default(); }
void Window::OnCaptureChanged(HWND) { Default(); }
void Window::OnSetFocus(HWND) { Default(); }
HBRUSH Window::OnCtlColor(HDC, HWND, UINT) { return reinterpret_cast<HBRUSH>(Default()); }
bool Window::OnCommand(UINT, UINT, HWND) { return false; }
bool Window::OnNotify(NMHDR*, LRESULT&) { return false; }
bool Window::OnChildNotify(UINT, WPARAM, LPARAM, LRESULT&) { return false; }

RECT Window::ClientRect() const {
    RECT r{};
    ::GetClientRect(m_hWnd, &r);
    return r;
}

RECT Window::WindowRect() const {
    RECT r{};
    ::GetWindowRect(m_hWnd, &r);
    return r;
}

std::wstring Window::Text() const {
    const int n = ::GetWindowTextLengthW(m_hWnd);
    if (n <= 0) return {};
    std::vector<wchar_t> buffer(static_cast<std::size_t>(n) + 1);
    const int got = ::GetWindowTextW(m_hWnd, buffer.data(), n + 1);
    return std::wstring(buffer.data(), static_cast<std::size_t>(got > 0 ? got : 0));
}

UINT_PTR Window::SetTimer(UINT_PTR id, UINT periodMs) { return m_hWnd ? Timers().Set(m_hWnd, id, periodMs) : 0; }
bool Window::KillTimer(UINT_PTR id) { return m_hWnd && Timers().Kill(m_hWnd, id); }

bool ReflectToChild(HWND parent, UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    HWND child = nullptr;
    switch (msg) {
    case WM_DRAWITEM: {
        auto* item = reinterpret_cast<DRAWITEMSTRUCT*>(lp);
        if (item && item->CtlType != ODT_MENU) child = item->hwndItem;
        break;
    }
    case WM_MEASUREITEM: {
        auto* item = reinterpret_cast<MEASUREITEMSTRUCT*>(lp);
        if (item && item->CtlType != ODT_MENU) child = ::GetDlgItem(parent, static_cast<int>(item->CtlID));
        break;
    }
    case WM_DELETEITEM:
        if (auto* item = reinterpret_cast<DELETEITEMSTRUCT*>(lp)) child = item->hwndItem;
        break;
    case WM_COMPAREITEM:
        if (auto* item = reinterpret_cast<COMPAREITEMSTRUCT*>(lp)) child = item->hwndItem;
        break;
    default:
        return false;
    }
    Window* w = child && ::GetParent(child) == parent ? Window::FromHandle(child) : nullptr;
    if (!w) return false;
    try {
        return WindowAccess::ChildNotify(*w, msg, wp, lp, result);
    } catch (...) {
        UC_LOG(zelLogger::Failure)(L"owner-draw message 0x%04X: exception in the control", msg);
        return false;
    }
}

void EnsureReflection(HWND parent) {
    if (!parent || !::IsWindow(parent) || !OwnedByThisProcess(parent)) return;
    if (Window::FromHandle(parent)) return;  // framework windows reflect already
    auto* reflector = new Reflector;
    if (!reflector->Subclass(parent)) delete reflector;
}

}  // namespace uc::ui
