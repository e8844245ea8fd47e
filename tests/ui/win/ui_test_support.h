// Shared helpers of the window tests: a plain (non-framework) parent window, and waiting for a condition while
// the calling thread's messages are dispatched.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace uc::test {

// A top-level window of a class with DefWindowProc, as an application's own window would be. Hidden until shown.
struct ForeignWindow {
    ForeignWindow(int w = 300, int h = 200);
    ~ForeignWindow();
    ForeignWindow(const ForeignWindow&) = delete;
    ForeignWindow& operator=(const ForeignWindow&) = delete;
    HWND AddButton(const wchar_t* text, int id, RECT r = {0, 0, 60, 24});
    HWND hwnd = nullptr;
};

// Dispatches this thread's messages until `done` holds or `ms` pass; returns `done()`.
bool WaitFor(const std::function<bool()>& done, DWORD ms = 5000);

// Text of a window.
std::wstring TextOf(HWND hwnd);

}  // namespace uc::test
