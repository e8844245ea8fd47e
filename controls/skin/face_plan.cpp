// Face painting worked out without GDI+, so the arithmetic of every brush can be checked on any build.
#include "skin/face_plan.h"

#include <algorithm>

#include "skin/hls.h"

namespace uc::skin {

namespace {
// 1/2.3 as a single-precision constant: the border's gradient peaks at this fraction of the border ratio.
constexpr float kBorderFocusFactor = 0.43478262f;

GradientBlend MakeBlend(float focus, float scale, bool bell, bool triangle, bool gamma) {
    GradientBlend b;
    b.factors[0] = 0.0f;
    b.factors[1] = focus;
    b.factors[2] = 1.0f;
    b.positions[0] = 0.0f;
    b.positions[1] = scale;
    b.positions[2] = 1.0f;
    b.bell = bell;
    b.triangle = triangle;
    b.focus = focus;
    b.scale = scale;
    b.gammaCorrection = gamma;
    return b;
}
}  // namespace

void DefaultRamp(const ColorState& slot, std::vector<std::uint32_t>& colours, std::vector<float>& positions) {
    const std::uint32_t secondary = BrightenArgb(slot.faceSecondary, slot.brightness);
    const std::uint32_t primary = BrightenArgb(slot.facePrimary, slot.brightness);
    colours = {secondary, secondary, primary, secondary};
    positions = {0.0f, 0.3f, 0.35f, 1.0f};
}

FacePlan PlanFace(const tButtonStyle& style, int width, int height, int state, int consoleType, bool layoutLeft) {
    FacePlan p;
    if (state < 0 || state >= tButtonStyle::kSlots) return p;
    p.paints = true;
    const ColorState& c = style.colours[state];
    const int radius = TruncateToInt(style.radius);
    p.face = BuildShapeFigure(width, height, style.shape, radius, 1, layoutLeft);
    p.outline = BuildShapeFigure(width, height, style.shape, radius, 0, layoutLeft);
    p.borderWidth = static_cast<float>(std::min(width, height) * style.borderRatio);

    switch (style.brushType) {
    case tButtonStyle::BrushSolid:
        p.fill = FacePlan::FillSolid;
        p.solidColour = style.solidBrush.fill ? c.facePrimary : 0u;
        break;
    case tButtonStyle::BrushLinear: {
        const tLinearBrush& b = style.linearBrush;
        p.fill = FacePlan::FillLinear;
        p.colour1 = c.facePrimary;
        p.colour2 = c.faceSecondary;
        p.angle = b.rotate;
        p.blend = MakeBlend(b.focus, b.scale, b.shapeBell != 0, b.shapeTriangle != 0, b.gamma != 0);
        break;
    }
    case tButtonStyle::BrushMultiStop: {
        const tMultiStopBrush& b = style.multiStopBrush;
        p.fill = FacePlan::FillMultiStop;
        p.angle = b.rotate;
        if (b.stops.empty()) {
            DefaultRamp(c, p.stopColours, p.stopPositions);
        } else {
            for (const RibbonItem& r : b.stops) {
                p.stopColours.push_back(r.colours[state]);
                p.stopPositions.push_back(r.position);
            }
        }
        break;
    }
    case tButtonStyle::BrushPath: {
        const tPathBrush& b = style.pathBrush;
        p.fill = FacePlan::FillPath;
        // Centre and edge are the reverse of the linear brush's order, deliberately.
        p.colour1 = c.facePrimary;
        p.colour2 = c.faceSecondary;
        p.blend = MakeBlend(b.focus, b.scale, b.shapeBell != 0, b.shapeTriangle != 0, b.gamma != 0);
        p.focusX = b.focusx;
        p.focusY = b.focusy;
        break;
    }
    default:
        p.fill = FacePlan::FillNone;
        break;
    }

    p.borderCentre = c.border;
    p.borderSurround = style.background;
    p.borderFocus = static_cast<float>(style.borderRatio * kBorderFocusFactor);
    p.borderScale = 0.8f;
    p.penWidth = p.borderWidth * 0.5f + 1.0f;
    p.darkRim = consoleType == 4;
    return p;
}

}  // namespace uc::skin
