// Integer HLS conversions (scale 0-240) matching the Windows shell's results bit for bit, native builds included.
#include "skin/hls.h"

#include <algorithm>

#include "skin/shape_figure.h"

namespace uc::skin {

namespace {
constexpr int kHlsMax = 240;
constexpr int kRgbMax = 255;
constexpr int kUndefinedHue = 160;  // hue reported for greys

int HueToChannel(int hue, int mid1, int mid2) {
    if (hue > kHlsMax)
        hue -= kHlsMax;
    else if (hue < 0)
        hue += kHlsMax;
    // The boundaries 40 and 120 belong to the sloped parts: it matters once mid2 < mid1 (luminance past 240),
    // where the rounding of the slope no longer lands exactly on mid2.
    if (hue > 160) return mid1;
    if (hue > 120) hue = 160 - hue;
    else if (hue > 40) return mid2;
    return mid1 + (hue * (mid2 - mid1) + 20) / 40;
}

std::uint32_t Rgb(int r, int g, int b) {
    // Like the RGB macro: each channel is cut to its low byte.
    return static_cast<std::uint32_t>(r & 0xFF) | (static_cast<std::uint32_t>(g & 0xFF) << 8) |
           (static_cast<std::uint32_t>(b & 0xFF) << 16);
}
}  // namespace

void ColorRGBToHLS(std::uint32_t colorref, std::uint16_t* hue, std::uint16_t* luminance, std::uint16_t* saturation) {
    const int r = colorref & 0xFF;
    const int g = (colorref >> 8) & 0xFF;
    const int b = (colorref >> 16) & 0xFF;
    const int mx = std::max({r, g, b});
    const int mn = std::min({r, g, b});
    const int l = ((mx + mn) * kHlsMax + kRgbMax) / (2 * kRgbMax);
    int h = kUndefinedHue;
    int s = 0;
    if (mx != mn) {
        const int delta = mx - mn;
        if (l <= kHlsMax / 2)
            s = ((mx + mn) / 2 + delta * kHlsMax) / (mx + mn);
        else
            s = ((2 * kRgbMax - mx - mn) / 2 + delta * kHlsMax) / (2 * kRgbMax - mx - mn);
        const int rn = (delta / 2 + (mx - r) * (kHlsMax / 6)) / delta;
        const int gn = (delta / 2 + (mx - g) * (kHlsMax / 6)) / delta;
        const int bn = (delta / 2 + (mx - b) * (kHlsMax / 6)) / delta;
        if (r == mx)
            h = bn - gn;
        else if (g == mx)
            h = kHlsMax / 3 + rn - bn;
        else
            h = 2 * kHlsMax / 3 + gn - rn;
        if (h < 0)
            h += kHlsMax;
        else if (h > kHlsMax)
            h -= kHlsMax;
    }
    if (hue) *hue = static_cast<std::uint16_t>(h);
    if (luminance) *luminance = static_cast<std::uint16_t>(l);
    if (saturation) *saturation = static_cast<std::uint16_t>(s);
}

std::uint32_t ColorHLSToRGB(std::uint16_t hue, std::uint16_t luminance, std::uint16_t saturation) {
    if (saturation == 0) {
        const int grey = static_cast<std::uint16_t>(luminance * kRgbMax / kHlsMax);
        return Rgb(grey, grey, grey);
    }
    // The intermediate values are 16-bit unsigned in the shell function; out-of-range inputs wrap the same way.
    // Products in 64 bits: two 16-bit inputs may not fit an int.
    const std::int64_t s = saturation, l = luminance;
    std::uint16_t mid2;
    if (l > kHlsMax / 2)
        mid2 = static_cast<std::uint16_t>(s + l - (s * l + kHlsMax / 2) / kHlsMax);
    else
        mid2 = static_cast<std::uint16_t>(((s + kHlsMax) * l + kHlsMax / 2) / kHlsMax);
    const std::uint16_t mid1 = static_cast<std::uint16_t>(luminance * 2 - mid2);
    auto channel = [&](int h) {
        return static_cast<std::uint16_t>((HueToChannel(h, mid1, mid2) * kRgbMax + kHlsMax / 2) / kHlsMax);
    };
    return Rgb(channel(hue + kHlsMax / 3), channel(hue), channel(hue - kHlsMax / 3));
}

std::uint32_t BrightenArgb(std::uint32_t argb, float factor) {
    const std::uint32_t colorref = ((argb >> 16) & 0xFF) | (argb & 0xFF00) | ((argb & 0xFF) << 16);
    std::uint16_t h = 0, l = 0, s = 0;
    ColorRGBToHLS(colorref, &h, &l, &s);
    const int scaled = TruncateToInt(static_cast<float>(l) * factor);  // single precision, as the factor is
    const std::uint32_t back = ColorHLSToRGB(h, static_cast<std::uint16_t>(scaled), s);
    return (argb & 0xFF000000u) | ((back & 0xFF) << 16) | (back & 0xFF00) | ((back >> 16) & 0xFF);
}

}  // namespace uc::skin
