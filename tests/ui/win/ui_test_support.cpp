// Shared helpers of the window tests.
#include "ui_test_support.h"

namespace uc::test {

namespace {
const wchar_t* ForeignClass() {
    static const bool registered = [] {
        WNDCLASSW wc{};
        wc.lpfnWndProc = ::DefWindowProcW;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
        wc.lpszClassName = L"uc.test.Foreign";
        return ::RegisterClassW(&wc) != 0;
    }();
    (void)registered;
    return L"uc.test.Foreign";
}
}  // namespace

ForeignWindow::ForeignWindow(int w, int h) {
    hwnd = ::CreateWindowExW(WS_EX_TOOLWINDOW, ForeignClass(), L"foreign", WS_POPUP | WS_CLIPCHILDREN, 20, 20, w, h, nullptr,
                             nullptr, ::GetModuleHandleW(nullptr), nullptr);
}

ForeignWindow::~ForeignWindow() {
    if (::IsWindow(hwnd)) ::DestroyWindow(hwnd);
}

HWND ForeignWindow::AddButton(const wchar_t* text, int id, RECT r) {
    return ::CreateWindowExW(0, L"BUTTON", text, WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, r.left, r.top, r.right - r.left,
                             r.bottom - r.top, hwnd, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                             ::GetModuleHandleW(nullptr), nullptr);
}

bool WaitFor(const std::function<bool()>& done, DWORD ms) {
    const ULONGLONG end = ::GetTickCount64() + ms;
    while (true) {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
        if (done()) return true;
        const ULONGLONG now = ::GetTickCount64();
        if (now >= end) return false;
        // Woken by any message for this thread; the bound only matters for conditions set by other threads.
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
}

std::wstring TextOf(HWND hwnd) {
    wchar_t buffer[1024] = {};
    ::GetWindowTextW(hwnd, buffer, 1024);
    return buffer;
}

}  // namespace uc::test
