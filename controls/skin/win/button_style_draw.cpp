// tButtonStyle's GDI+ side: the face outline as a GraphicsPath and the painted face with its brushes and border.
#include <vector>

#include "platform/paths.h"
#include "skin/button_style.h"
#include "skin/face_plan.h"
#include "skin/win/gdiplus_figure.h"

using namespace Gdiplus;

namespace {

// Blend of the three points, then the bell and triangle shapes in that order (a later shape replaces the blend).
template <class GradientBrush>
void ApplyBlend(GradientBrush& brush, const uc::skin::GradientBlend& blend) {
    REAL factors[3] = {blend.factors[0], blend.factors[1], blend.factors[2]};
    REAL positions[3] = {blend.positions[0], blend.positions[1], blend.positions[2]};
    brush.SetBlend(factors, positions, 3);
    if (blend.bell) brush.SetBlendBellShape(blend.focus, blend.scale);
    if (blend.triangle) brush.SetBlendTriangularShape(blend.focus, blend.scale);
    brush.SetGammaCorrection(blend.gammaCorrection ? TRUE : FALSE);
}

}  // namespace

void tButtonStyle::GeneratePath(GraphicsPath& path, const Rect& rect, int shape, int radius, int inset) {
    path.Reset();
    uc::skin::AppendFigure(path, uc::skin::BuildShapeFigure(rect.Width, rect.Height, shape, radius, inset,
                                                            utilsExam::IsLayoutLeft()));
}

void tButtonStyle::DrawFace(Graphics& g, const Rect& rect, int state) const {
    const uc::skin::FacePlan plan = uc::skin::PlanFace(*this, rect.Width, rect.Height, state, utilsExam::m_consoleType,
                                                       utilsExam::IsLayoutLeft());
    if (!plan.paints) return;
    using uc::skin::FacePlan;

    GraphicsPath path;
    uc::skin::AppendFigure(path, plan.face);
    switch (plan.fill) {
    case FacePlan::FillSolid: {
        SolidBrush brush(Color(plan.solidColour));
        g.FillPath(&brush, &path);
        break;
    }
    case FacePlan::FillLinear: {
        LinearGradientBrush brush(rect, Color(plan.colour1), Color(plan.colour2), plan.angle, TRUE);
        brush.SetWrapMode(WrapModeTile);
        ApplyBlend(brush, plan.blend);
        g.FillPath(&brush, &path);
        break;
    }
    case FacePlan::FillMultiStop: {
        const std::size_t n = plan.stopColours.size();
        LinearGradientBrush brush(rect, Color(plan.stopColours.front()), Color(plan.stopColours.back()), plan.angle,
                                  TRUE);
        // GDI+ refuses fewer than two stops or positions that do not run from 0 to 1; the brush then keeps the
        // first and last stop colours.
        std::vector<Color> colours;
        for (std::uint32_t c : plan.stopColours) colours.emplace_back(c);
        brush.SetInterpolationColors(colours.data(), plan.stopPositions.data(), static_cast<INT>(n));
        g.FillPath(&brush, &path);
        break;
    }
    case FacePlan::FillPath: {
        PathGradientBrush brush(&path);
        brush.SetCenterColor(Color(plan.colour2));
        Color surround(plan.colour1);
        INT count = 1;
        brush.SetSurroundColors(&surround, &count);
        REAL factors[3] = {plan.blend.factors[0], plan.blend.factors[1], plan.blend.factors[2]};
        REAL positions[3] = {plan.blend.positions[0], plan.blend.positions[1], plan.blend.positions[2]};
        brush.SetBlend(factors, positions, 3);
        brush.SetFocusScales(plan.focusX, plan.focusY);
        if (plan.blend.bell) brush.SetBlendBellShape(plan.blend.focus, plan.blend.scale);
        if (plan.blend.triangle) brush.SetBlendTriangularShape(plan.blend.focus, plan.blend.scale);
        brush.SetGammaCorrection(plan.blend.gammaCorrection ? TRUE : FALSE);
        g.FillPath(&brush, &path);
        break;
    }
    case FacePlan::FillNone: break;
    }

    path.Reset();
    uc::skin::AppendFigure(path, plan.outline);
    PathGradientBrush border(&path);
    border.SetCenterColor(Color(plan.borderCentre));
    Color surround(plan.borderSurround);
    INT count = 1;
    border.SetSurroundColors(&surround, &count);
    border.SetBlendTriangularShape(plan.borderFocus, plan.borderScale);
    border.SetGammaCorrection(TRUE);
    Pen pen(&border, plan.penWidth);
    g.DrawPath(&pen, &path);

    if (plan.darkRim) {
        Pen rim(Color(plan.rimColour), plan.rimWidth);
        g.DrawPath(&rim, &path);
    }
}
