// Round button geometry and colours: icon and caption rectangles, step arrows, caption colour, icon matrices, scaling.
#include "skin/round_button_layout.h"

#include <algorithm>
#include <cmath>

#include "platform/numeric.h"
#include "skin/shape_figure.h"

namespace uc::skin {

namespace {

// dimension x ratio x 0.5, truncated, kept within 0..dimension/2 (ratios from files may be anything).
int Margin(int dimension, double borderRatio) {
    const int m = TruncateToInt(dimension * borderRatio * 0.5);
    return std::clamp(m, 0, dimension / 2);
}

}  // namespace

LayoutRect PlaceIcon(int location, int width, int height, int imageWidth, int imageHeight, double borderRatio,
                     int shape, bool layoutLeft) {
    LayoutRect r;
    if (location < IconCentre || location > IconOnBackground) return r;
    if (width <= 0 || height <= 0 || imageWidth <= 0 || imageHeight <= 0) return r;
    const int mx = Margin(width, borderRatio), my = Margin(height, borderRatio);
    const int roomW = width - 2 * mx, roomH = height - 2 * my;
    if (roomW <= 0 || roomH <= 0) return r;

    r.width = imageWidth;
    r.height = imageHeight;
    if (imageWidth > roomW || imageHeight > roomH) {
        // Shrink to fit, keeping the aspect ratio: an icon never spills over the button.
        const double f = std::min(static_cast<double>(roomW) / imageWidth, static_cast<double>(roomH) / imageHeight);
        r.width = std::clamp(static_cast<int>(imageWidth * f), 1, roomW);
        r.height = std::clamp(static_cast<int>(imageHeight * f), 1, roomH);
    }
    r.x = (width - r.width) / 2;
    r.y = (height - r.height) / 2;
    switch (location) {
    case IconLeft: r.x = mx; break;
    case IconRight: r.x = width - mx - r.width; break;
    case IconTop: r.y = my; break;
    case IconBottom: r.y = height - my - r.height; break;
    default: break;
    }
    if (shape == ShapeArrowTab) {
        // Away from the pointed end, but never off the button.
        r.x += layoutLeft ? height / 2 : -(height / 2);
        r.x = std::clamp(r.x, 0, width - r.width);
    }
    return r;
}

LayoutRect PlaceCaption(int location, int width, int height, const LayoutRect& icon) {
    LayoutRect r{0, 0, std::max(0, width), std::max(0, height)};
    if (icon.empty()) return r;
    switch (location) {
    case IconLeft:
        r.x = icon.x + icon.width;
        r.width = width - r.x;
        break;
    case IconRight: r.width = icon.x; break;
    case IconTop:
        r.y = icon.y + icon.height;
        r.height = height - r.y;
        break;
    case IconBottom: r.height = icon.y; break;
    default: break;  // centred icons lie under the caption
    }
    r.width = std::max(0, r.width);
    r.height = std::max(0, r.height);
    return r;
}

unsigned long TextColor(unsigned long colour) {
    const double red = colour & 0xFF, green = (colour >> 8) & 0xFF, blue = (colour >> 16) & 0xFF;
    const double luminance = 0.299 * red + 0.587 * green + 0.114 * blue;
    return 255.0 - luminance < 105.0 ? 0x020202ul : 0xFDFDFDul;
}

unsigned long ArgbToColorRef(std::uint32_t argb) {
    return ((argb >> 16) & 0xFFul) | (argb & 0xFF00ul) | ((argb & 0xFFul) << 16);
}

std::vector<StepArrow> PlanArrows(ButtonType type, int width, int height, int incrementRate) {
    std::vector<StepArrow> arrows;
    if (type == RockerButton) {
        const int third = height / 3;
        const int half = std::min(third * 3 / 10, width / 4);  // half the arrow's base
        if (half < 2) return arrows;
        const int cx = width / 2;
        const int up = third / 2, down = height - third / 2;
        StepArrow a;
        a.points = {{{cx, up - half / 2}, {cx + half, up + half / 2}, {cx - half, up + half / 2}}};
        a.direction = StepUp;
        a.active = incrementRate > 0;
        arrows.push_back(a);
        a.points = {{{cx, down + half / 2}, {cx - half, down - half / 2}, {cx + half, down - half / 2}}};
        a.direction = StepDown;
        a.active = incrementRate < 0;
        arrows.push_back(a);
    } else if (type == PushDragButton) {
        const int half = height / 5;
        const int margin = std::max(2, height / 8);
        if (half < 2 || width < 2 * (margin + half) + half) return arrows;
        const int cy = height / 2;
        StepArrow a;
        a.points = {{{margin, cy}, {margin + half, cy - half}, {margin + half, cy + half}}};
        a.direction = StepDown;
        a.active = incrementRate < 0;
        arrows.push_back(a);
        const int right = width - 1 - margin;
        a.points = {{{right, cy}, {right - half, cy + half}, {right - half, cy - half}}};
        a.direction = StepUp;
        a.active = incrementRate > 0;
        arrows.push_back(a);
    }
    return arrows;
}

bool ScaleStyle(tButtonStyle& style, double scale) {
    if (!std::isfinite(scale) || scale <= 0.0) return false;
    if (scale == 1.0 || !style.scaleText) return true;
    style.font.size = vex_utils::round((1.0 + (scale - 1.0) * 0.4) * style.font.size);
    style.radius = (1.0 + (scale - 1.0) * 0.75) * style.radius;
    return true;
}

const IconMatrix& GrayIconMatrix() {
    // Each colour channel becomes the pixel's luminance; alpha is kept.
    static const IconMatrix m = {{{0.299f, 0.299f, 0.299f, 0, 0},
                                  {0.587f, 0.587f, 0.587f, 0, 0},
                                  {0.114f, 0.114f, 0.114f, 0, 0},
                                  {0, 0, 0, 1, 0},
                                  {0, 0, 0, 0, 1}}};
    return m;
}

const IconMatrix& DisabledIconMatrix() {
    // Luminance washed half-way to white, at half the opacity: visibly unavailable on any face.
    static const IconMatrix m = {{{0.1495f, 0.1495f, 0.1495f, 0, 0},
                                  {0.2935f, 0.2935f, 0.2935f, 0, 0},
                                  {0.057f, 0.057f, 0.057f, 0, 0},
                                  {0, 0, 0, 0.5f, 0},
                                  {0.5f, 0.5f, 0.5f, 0, 1}}};
    return m;
}

std::uint32_t ApplyIconMatrix(const IconMatrix& matrix, std::uint32_t argb) {
    const float in[4] = {((argb >> 16) & 0xFF) / 255.0f, ((argb >> 8) & 0xFF) / 255.0f, (argb & 0xFF) / 255.0f,
                         (argb >> 24) / 255.0f};
    std::uint32_t channel[4];
    for (int j = 0; j < 4; ++j) {
        float v = matrix.m[4][j];
        for (int i = 0; i < 4; ++i) v += in[i] * matrix.m[i][j];
        channel[j] = static_cast<std::uint32_t>(std::lround(std::clamp(v, 0.0f, 1.0f) * 255.0f));
    }
    return channel[3] << 24 | channel[0] << 16 | channel[1] << 8 | channel[2];
}

}  // namespace uc::skin
