// Where the round button puts its icon, caption and step arrows, which caption colour it uses, and style scaling.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/export.h"
#include "skin/button_style.h"
#include "skin/round_button_logic.h"

namespace uc::skin {

struct LayoutRect {
    int x = 0, y = 0, width = 0, height = 0;
    bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(const LayoutRect&) const = default;
};

// The icon's rectangle in a `width` x `height` button: placed by `location` with a margin of the button's
// dimension x `borderRatio` x 0.5 (truncated; the width for left/right, the height for top/bottom), shrunk
// to fit the room inside the margins with its aspect kept, and, on the arrow tab (shape 7), shifted by half
// the height away from the pointed end. Empty for location 0, unknown locations and empty images.
UC_API LayoutRect PlaceIcon(int location, int width, int height, int imageWidth, int imageHeight, double borderRatio,
                            int shape, bool layoutLeft);

// The caption's rectangle: the whole button, or the part beside an icon at the left, right, top or bottom.
UC_API LayoutRect PlaceCaption(int location, int width, int height, const LayoutRect& icon);

// Caption colour on a face colour (GDI layout, red in the low byte): near-black 0x020202 on a light face
// (255 - luminance below 105), near-white 0xFDFDFD otherwise.
UC_API unsigned long TextColor(unsigned long colour);

// GDI colour (0x00BBGGRR) of an ARGB colour, alpha dropped.
UC_API unsigned long ArgbToColorRef(std::uint32_t argb);

// One step arrow: a filled triangle; `active` when the button is repeating in its direction.
struct StepArrow {
    std::array<std::pair<int, int>, 3> points{};
    ClickType direction = StepUp;
    bool active = false;
};

// The arrows of the repeating kinds: up in the upper third and down in the lower third of a rocker, left
// (down) and right (up) of a push-drag button. None for the other kinds or a button too small to hold them.
UC_API std::vector<StepArrow> PlanArrows(ButtonType type, int width, int height, int incrementRate);

// Scales a style for a button `scale` times its designed size when its `scaleText` is set: the font by 40 %
// and the corner radius by 75 % of the scale change (font size rounded to the nearest integer). A scale of
// 1.0, or one that is not a positive finite number, leaves the style as it is; false in the latter case.
UC_API bool ScaleStyle(tButtonStyle& style, double scale);

// Colour matrices (GDI+ 5 x 5 layout, row vectors) for icons of a gray button and of a disabled one.
struct IconMatrix {
    float m[5][5];
};
UC_API const IconMatrix& GrayIconMatrix();
UC_API const IconMatrix& DisabledIconMatrix();
// The matrix applied to one ARGB pixel (for checks and previews), each channel clamped to 0..255.
UC_API std::uint32_t ApplyIconMatrix(const IconMatrix& matrix, std::uint32_t argb);

}  // namespace uc::skin
