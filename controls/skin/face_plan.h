// What painting one button face involves, worked out portably: outlines, brush parameters, colours and pens.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/export.h"
#include "skin/button_style.h"
#include "skin/shape_figure.h"

namespace uc::skin {

// Blend of a two-colour gradient: three points, then optionally a bell (sigma) and a triangle (linear) shape,
// applied in that order, so a triangle replaces a bell.
struct GradientBlend {
    float factors[3] = {0.0f, 0.0f, 1.0f};
    float positions[3] = {0.0f, 1.0f, 1.0f};
    bool bell = false;
    bool triangle = false;
    float focus = 0.0f;
    float scale = 1.0f;
    bool gammaCorrection = false;
};

struct FacePlan {
    enum Fill { FillNone, FillSolid, FillLinear, FillMultiStop, FillPath };

    bool paints = false;  // false for a state outside 0-4: nothing is drawn
    ShapeFigure face;     // inset 1, filled
    ShapeFigure outline;  // inset 0, stroked

    Fill fill = FillNone;
    std::uint32_t solidColour = 0;  // FillSolid (0, fully transparent, when the brush does not fill)
    // FillLinear: from colour1 to colour2 at `angle` (scaled with the rectangle, tiled).
    // FillPath: colour1 at the edge (surround), colour2 at the centre, focus scales (focusX, focusY).
    std::uint32_t colour1 = 0;
    std::uint32_t colour2 = 0;
    float angle = 0.0f;
    GradientBlend blend;
    float focusX = 0.0f;
    float focusY = 0.0f;
    // FillMultiStop: one colour per stop for the state, at `angle`.
    std::vector<std::uint32_t> stopColours;
    std::vector<float> stopPositions;

    // Border: a path gradient on the outline from `borderCentre` to `borderSurround` with a triangle blend,
    // gamma corrected, stroked with a pen of `penWidth`.
    float borderWidth = 0.0f;
    std::uint32_t borderCentre = 0;
    std::uint32_t borderSurround = 0;
    float borderFocus = 0.0f;
    float borderScale = 0.8f;
    float penWidth = 1.0f;

    // Console type 4 draws a dark rim over the outline.
    bool darkRim = false;
    std::uint32_t rimColour = 0xFF010101u;
    float rimWidth = 2.0f;
};

// Plan for painting `style` in a `width` x `height` face for colour slot `state`.
UC_API FacePlan PlanFace(const tButtonStyle& style, int width, int height, int state, int consoleType, bool layoutLeft);

// The default multi-stop ramp of one slot: positions 0, 0.3, 0.35, 1.0 with the secondary, secondary, primary
// and secondary face colours, each brightened by the slot's `brightness`.
UC_API void DefaultRamp(const ColorState& slot, std::vector<std::uint32_t>& colours, std::vector<float>& positions);

}  // namespace uc::skin
