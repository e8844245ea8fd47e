// A 32-bit top-down DIB with its own memory DC, for painting into and reading pixels back (RGB as 0xRRGGBB).
#pragma once

#include <windows.h>

#include <cstdint>

#include "platform/win/handles.h"

namespace uc::test {

class DibCanvas {
public:
    DibCanvas(int width, int height);
    DibCanvas(const DibCanvas&) = delete;
    DibCanvas& operator=(const DibCanvas&) = delete;
    ~DibCanvas();

    HDC dc() const { return m_dc.get(); }
    int width() const { return m_width; }
    int height() const { return m_height; }
    bool valid() const { return m_bits != nullptr; }

    void Fill(std::uint32_t rgb);
    // 0xRRGGBB of a pixel (GDI work pending on the DC is flushed first).
    std::uint32_t Pixel(int x, int y) const;
    // Pixels whose channels are all within `tolerance` of `rgb`, in x0 <= x < x1, y0 <= y < y1.
    int Count(std::uint32_t rgb, int tolerance, int x0, int y0, int x1, int y1) const;
    int Count(std::uint32_t rgb, int tolerance) const { return Count(rgb, tolerance, 0, 0, m_width, m_height); }

private:
    int m_width;
    int m_height;
    std::uint32_t* m_bits = nullptr;
    UniqueHdc m_dc;
    UniqueHBitmap m_bitmap;
    HGDIOBJ m_original = nullptr;
};

// Largest difference between the channels of two 0xRRGGBB colours.
int ColourDistance(std::uint32_t a, std::uint32_t b);
// 0xRRGGBB of an ARGB or GDI colour.
inline std::uint32_t RgbOfArgb(std::uint32_t argb) { return argb & 0xFFFFFF; }
inline std::uint32_t RgbOfColorRef(COLORREF c) { return (c & 0xFF) << 16 | (c & 0xFF00) | ((c >> 16) & 0xFF); }

}  // namespace uc::test
