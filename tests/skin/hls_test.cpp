// HLS conversions with the Windows shell's integer arithmetic, and the brightening of face colours built on them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "skin/hls.h"

namespace {

using uc::skin::BrightenArgb;
using uc::skin::ColorHLSToRGB;
using uc::skin::ColorRGBToHLS;

struct Hls {
    std::uint16_t h, l, s;
};

Hls ToHls(std::uint32_t colorref) {
    Hls v{};
    ColorRGBToHLS(colorref, &v.h, &v.l, &v.s);
    return v;
}

constexpr std::uint32_t Ref(int r, int g, int b) { return static_cast<std::uint32_t>(r | (g << 8) | (b << 16)); }

TEST(Hls, PrimariesGreysAndRounding) {
    Hls red = ToHls(Ref(255, 0, 0)), green = ToHls(Ref(0, 255, 0)), blue = ToHls(Ref(0, 0, 255));
    EXPECT_EQ(red.h, 0);
    EXPECT_EQ(red.l, 120);
    EXPECT_EQ(red.s, 240);
    EXPECT_EQ(green.h, 80);
    EXPECT_EQ(blue.h, 160);
    // Greys report hue 160 and no saturation; white is 240, black 0; mid grey rounds down to 120.
    for (int v : {0, 1, 128, 254, 255}) {
        const Hls g = ToHls(Ref(v, v, v));
        EXPECT_EQ(g.h, 160) << v;
        EXPECT_EQ(g.s, 0) << v;
    }
    EXPECT_EQ(ToHls(Ref(255, 255, 255)).l, 240);
    EXPECT_EQ(ToHls(Ref(0, 0, 0)).l, 0);
    EXPECT_EQ(ToHls(Ref(128, 128, 128)).l, 120);
    // Above half luminance the saturation uses the distance from white.
    const Hls pale = ToHls(Ref(255, 200, 200));
    EXPECT_GT(pale.l, 120);
    EXPECT_EQ(pale.s, 240);
    // A hue just below red wraps to the top of the range rather than going negative.
    EXPECT_GT(ToHls(Ref(255, 0, 10)).h, 230);
    // Null outputs are allowed.
    ColorRGBToHLS(Ref(1, 2, 3), nullptr, nullptr, nullptr);
}

TEST(Hls, BackToRgbAndRoundTrips) {
    EXPECT_EQ(ColorHLSToRGB(0, 120, 240), Ref(255, 0, 0));
    EXPECT_EQ(ColorHLSToRGB(80, 120, 240), Ref(0, 255, 0));
    EXPECT_EQ(ColorHLSToRGB(160, 120, 240), Ref(0, 0, 255));
    EXPECT_EQ(ColorHLSToRGB(160, 120, 0), Ref(127, 127, 127));
    EXPECT_EQ(ColorHLSToRGB(0, 240, 0), Ref(255, 255, 255));
    EXPECT_EQ(ColorHLSToRGB(0, 240, 240), Ref(255, 255, 255));
    EXPECT_EQ(ColorHLSToRGB(0, 0, 240), Ref(0, 0, 0));

    // Every colour of a coarse cube comes back within the rounding of the 0-240 scale.
    int worst = 0;
    for (int r = 0; r < 256; r += 15)
        for (int g = 0; g < 256; g += 17)
            for (int b = 0; b < 256; b += 13) {
                const Hls v = ToHls(Ref(r, g, b));
                ASSERT_LE(v.h, 240);
                ASSERT_LE(v.l, 240);
                ASSERT_LE(v.s, 240);
                const std::uint32_t back = ColorHLSToRGB(v.h, v.l, v.s);
                worst = std::max({worst, std::abs(static_cast<int>(back & 0xFF) - r),
                                  std::abs(static_cast<int>((back >> 8) & 0xFF) - g),
                                  std::abs(static_cast<int>((back >> 16) & 0xFF) - b)});
            }
    EXPECT_LE(worst, 8);
}

TEST(Hls, OutOfRangeLuminanceWrapsLikeTheShell) {
    // Greys: 345 * 255 / 240 = 366, whose low byte is 110.
    EXPECT_EQ(ColorHLSToRGB(160, 345, 0), Ref(110, 110, 110));
    // Chromatic: the 16-bit intermediates wrap; the result is still a defined colour with a zero high byte.
    EXPECT_EQ(ColorHLSToRGB(10, 400, 200) >> 24, 0u);
    EXPECT_EQ(ColorHLSToRGB(239, 65535, 65535) >> 24, 0u);
}

TEST(Hls, BrightenKeepsAlphaAndScalesLuminance) {
    // Factor 1 is a round trip; alpha is never touched.
    const std::uint32_t c = 0xC80000A6;
    const std::uint32_t same = BrightenArgb(c, 1.0f);
    EXPECT_EQ(same >> 24, 0xC8u);
    EXPECT_NEAR(static_cast<int>(same & 0xFF), 0xA6, 2);
    EXPECT_EQ(same & 0xFFFF00u, 0u);
    EXPECT_EQ(BrightenArgb(0x7F123456, 0.0f), 0x7F000000u) << "no luminance is black";
    EXPECT_EQ(BrightenArgb(0xC8808080, 2.0f), 0xC8FFFFFFu) << "120 doubled is white";
    // Luminance 181 times 2 is 362: past white, it wraps as the shell function does.
    EXPECT_EQ(BrightenArgb(0xC8C0C0C0, 2.0f), 0xC8808080u);
    // The product is truncated: 0.1 of 181 is 18.1, i.e. 18.
    EXPECT_EQ(BrightenArgb(0xFFC0C0C0, 0.1f), 0xFF000000u | (ColorHLSToRGB(160, 18, 0) & 0xFFu) * 0x010101u);
    // A negative factor gives a 16-bit wrapped luminance, not a crash.
    (void)BrightenArgb(0xFFFF8000, -3.0f);
    (void)BrightenArgb(0xFFFF8000, 1e30f);
}

}  // namespace
