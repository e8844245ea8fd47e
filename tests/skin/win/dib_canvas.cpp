// DibCanvas: a pixel-addressable painting target for GDI and GDI+ checks.
#include "dib_canvas.h"

#include <algorithm>
#include <cstdlib>

namespace uc::test {

DibCanvas::DibCanvas(int width, int height) : m_width(width), m_height(height), m_dc(::CreateCompatibleDC(nullptr)) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    m_bitmap.reset(::CreateDIBSection(m_dc.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (m_bitmap) {
        m_bits = static_cast<std::uint32_t*>(bits);
        m_original = ::SelectObject(m_dc.get(), m_bitmap.get());
    }
}

DibCanvas::~DibCanvas() {
    if (m_original) ::SelectObject(m_dc.get(), m_original);
}

void DibCanvas::Fill(std::uint32_t rgb) {
    ::GdiFlush();
    std::fill(m_bits, m_bits + static_cast<std::size_t>(m_width) * m_height, rgb & 0xFFFFFF);
}

std::uint32_t DibCanvas::Pixel(int x, int y) const {
    ::GdiFlush();
    return m_bits[static_cast<std::size_t>(y) * m_width + x] & 0xFFFFFF;
}

int DibCanvas::Count(std::uint32_t rgb, int tolerance, int x0, int y0, int x1, int y1) const {
    ::GdiFlush();
    int n = 0;
    for (int y = std::max(0, y0); y < std::min(m_height, y1); ++y)
        for (int x = std::max(0, x0); x < std::min(m_width, x1); ++x)
            if (ColourDistance(m_bits[static_cast<std::size_t>(y) * m_width + x] & 0xFFFFFF, rgb) <= tolerance) ++n;
    return n;
}

int ColourDistance(std::uint32_t a, std::uint32_t b) {
    int d = 0;
    for (int shift = 0; shift < 24; shift += 8)
        d = std::max(d, std::abs(static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF)));
    return d;
}

}  // namespace uc::test
