// The portable HLS conversions give exactly what the shell's ColorRGBToHLS/ColorHLSToRGB give.
#include <gtest/gtest.h>

#include <windows.h>
#include <shlwapi.h>

#include "skin/hls.h"

namespace {

TEST(HlsShellParity, RgbToHlsOverACube) {
    for (int r = 0; r < 256; r += 5)
        for (int g = 0; g < 256; g += 7)
            for (int b = 0; b < 256; b += 3) {
                const COLORREF c = RGB(r, g, b);
                WORD h = 0, l = 0, s = 0;
                ::ColorRGBToHLS(c, &h, &l, &s);
                std::uint16_t h2 = 0, l2 = 0, s2 = 0;
                uc::skin::ColorRGBToHLS(c, &h2, &l2, &s2);
                ASSERT_EQ(h, h2) << r << "," << g << "," << b;
                ASSERT_EQ(l, l2) << r << "," << g << "," << b;
                ASSERT_EQ(s, s2) << r << "," << g << "," << b;
            }
}

TEST(HlsShellParity, HlsToRgbInAndOutOfRange) {
    // Luminance past 240 happens when the clicked and pressed states brighten a face colour; hue and
    // saturation always come from ColorRGBToHLS, so 0-240.
    for (int h = 0; h <= 240; h += 5)
        for (int l = 0; l <= 600; l += 3)
            for (int s = 0; s <= 240; s += 8)
                ASSERT_EQ(::ColorHLSToRGB(h, l, s), uc::skin::ColorHLSToRGB(h, l, s)) << h << "," << l << "," << s;
}

}  // namespace
