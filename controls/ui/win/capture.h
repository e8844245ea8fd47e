// Pictures of windows as their controls drew them: read from the window's own DC after a synchronous repaint, so
// other programs' windows on the same display never show in them; saved as PNG through GDI+.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/export.h"
#include "platform/win/handles.h"

namespace uc::ui {

// Pixels of a picture, top row first, each 0x00RRGGBB.
struct Pixels {
    int width = 0, height = 0;
    std::vector<std::uint32_t> rgb;
    std::uint32_t At(int x, int y) const { return rgb[static_cast<std::size_t>(y) * width + x]; }
};

// Repaints `hwnd` with all its children now and copies the whole window, frame included, into a new bitmap. A
// window of another thread draws itself into the bitmap (WM_PRINT: frame, background and WM_PRINTCLIENT, not its
// child controls). Null for a hidden or missing window.
UC_API UniqueHBitmap CaptureWindow(HWND hwnd);
UC_API Pixels ReadPixels(HBITMAP bitmap);
// Saves as PNG; GDI+ must be running. False when it cannot be written.
UC_API bool SavePng(HBITMAP bitmap, const std::wstring& path);

}  // namespace uc::ui
