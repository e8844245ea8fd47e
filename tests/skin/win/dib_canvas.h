// A 32-bit top-down DIB in its own memory DC, for painting into and reading pixels back (as 0xRRGGBB).
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "platform/win/handles.h"

namespace uc::test {

// Largest difference between the channels of two 0xRRGGBB colours.
inline int ColourDistance(std::uint32_t a, std::uint32_t b) {
    int d = 0;
    for (int shift = 0; shift < 24; shift += 8) d = std::max(d, std::abs(int((a >> shift) & 0xFF) - int((b >> shift) & 0xFF)));
    return d;
}

class DibCanvas {
public:
    DibCanvas(int width, int height)
        : m_width(width), m_height(height), m_dc(::CreateCompatibleDC(nullptr)), m_bitmap(Dib(width, height, m_bits)) {}
    HDC dc() const { return m_dc.get(); }
    void Fill(std::uint32_t rgb) {
        ::GdiFlush();
        std::fill(m_bits, m_bits + m_width * m_height, rgb);
    }
    std::uint32_t Pixel(int x, int y) const {
        ::GdiFlush();
        return m_bits[y * m_width + x] & 0xFFFFFF;
    }
    // Pixels within `tolerance` of `rgb` in x0 <= x < x1, y0 <= y < y1 (the whole canvas by default).
    int Count(std::uint32_t rgb, int tolerance, int x0 = 0, int y0 = 0, int x1 = 1 << 30, int y1 = 1 << 30) const {
        int n = 0;
        for (int y = y0; y < std::min(m_height, y1); ++y)
            for (int x = x0; x < std::min(m_width, x1); ++x) n += ColourDistance(Pixel(x, y), rgb) <= tolerance;
        return n;
    }

private:
    static HBITMAP Dib(int width, int height, std::uint32_t*& bits) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        return ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits), nullptr, 0);
    }
    int m_width, m_height;
    std::uint32_t* m_bits = nullptr;
    UniqueHdc m_dc;
    UniqueHBitmap m_bitmap;
    SelectObjectGuard m_selected{m_dc.get(), m_bitmap.get()};  // last: deselected before the bitmap goes
};

}  // namespace uc::test
