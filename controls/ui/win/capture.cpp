// Window pictures: synchronous repaint, copy from the window DC, pixel access and PNG files.
#include "ui/win/capture.h"

#include "platform/win/gdiplus_encoders.h"
#include "skin/win/gdiplus.h"
#include "ui/win/gdi.h"

namespace uc::ui {

UniqueHBitmap CaptureWindow(HWND hwnd) {
    if (!hwnd || !::IsWindow(hwnd) || !::IsWindowVisible(hwnd)) return {};
    const bool ownThread = ::GetWindowThreadProcessId(hwnd, nullptr) == ::GetCurrentThreadId();
    if (ownThread) {
        ::RedrawWindow(hwnd, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    }
    RECT r{};
    ::GetWindowRect(hwnd, &r);
    const int w = r.right - r.left, h = r.bottom - r.top;
    if (w <= 0 || h <= 0) return {};
    WindowDC source(hwnd, true);
    UniqueHdc memory(::CreateCompatibleDC(source));
    UniqueHBitmap bitmap(::CreateCompatibleBitmap(source, w, h));
    {
        SelectObjectGuard selected(memory.get(), bitmap.get());
        // Another thread's window may be repainting its surface while it is read: it draws itself into the picture
        // instead (WM_PRINT, served by its own thread before PrintWindow returns).
        const BOOL drawn = ownThread ? ::BitBlt(memory.get(), 0, 0, w, h, source, 0, 0, SRCCOPY)
                                     : ::PrintWindow(hwnd, memory.get(), 0);
        if (!drawn) return {};
    }
    return bitmap;
}

Pixels ReadPixels(HBITMAP bitmap) {
    Pixels p;
    BITMAP info{};
    if (!bitmap || !::GetObjectW(bitmap, sizeof info, &info)) return p;
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = info.bmWidth;
    bi.bmiHeader.biHeight = -info.bmHeight;  // top row first
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    bi.bmiHeader.biCompression = BI_RGB;
    p.width = info.bmWidth;
    p.height = info.bmHeight;
    p.rgb.resize(static_cast<std::size_t>(p.width) * p.height);
    WindowDC screen(nullptr);
    if (!::GetDIBits(screen, bitmap, 0, static_cast<UINT>(p.height), p.rgb.data(), &bi, DIB_RGB_COLORS)) return {};
    for (std::uint32_t& c : p.rgb) c &= 0x00FFFFFF;
    return p;
}

bool SavePng(HBITMAP bitmap, const std::wstring& path) {
    Gdiplus::Bitmap picture(bitmap, nullptr);
    return picture.GetLastStatus() == Gdiplus::Ok && SaveImage(picture, path, L"image/png");
}

}  // namespace uc::ui
