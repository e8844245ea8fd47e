// Face painting plans: brush choice per type, colour order, blends, the default ramp, border pen and rim.
#include <gtest/gtest.h>

#include "skin/face_plan.h"
#include "skin/hls.h"

namespace {

using uc::skin::FacePlan;
using uc::skin::PlanFace;

TEST(FacePlan, StatesOutsideTheFiveSlotsPaintNothing) {
    const tButtonStyle s;
    EXPECT_FALSE(PlanFace(s, 100, 40, -1, 0, false).paints);
    EXPECT_FALSE(PlanFace(s, 100, 40, 5, 0, false).paints);
    EXPECT_TRUE(PlanFace(s, 100, 40, 4, 0, false).paints);
}

TEST(FacePlan, OutlinesBorderPenAndRim) {
    tButtonStyle s;
    s.radius = 9.9;
    FacePlan p = PlanFace(s, 100, 40, 0, 0, false);
    ASSERT_EQ(p.face.elements.size(), 4u);
    EXPECT_EQ(p.face.elements[0].x, 1) << "the face is inset by one pixel";
    EXPECT_EQ(p.face.elements[0].width, 9) << "radius truncated";
    EXPECT_EQ(p.outline.elements[0].x, 0) << "the outline is not inset";
    EXPECT_FLOAT_EQ(p.borderWidth, 40 * 0.18f);
    EXPECT_FLOAT_EQ(p.penWidth, 40 * 0.18f * 0.5f + 1.0f);
    EXPECT_NEAR(p.borderFocus, 0.18 / 2.3, 1e-6);
    EXPECT_EQ(p.borderScale, 0.8f);
    EXPECT_EQ(p.borderCentre, s.colours[0].border);
    EXPECT_EQ(p.borderSurround, s.background);
    EXPECT_FALSE(p.darkRim);

    p = PlanFace(s, 30, 80, 3, 4, false);
    EXPECT_TRUE(p.darkRim) << "console type 4 only";
    EXPECT_EQ(p.rimColour, 0xFF010101u);
    EXPECT_EQ(p.rimWidth, 2.0f);
    EXPECT_FLOAT_EQ(p.borderWidth, 30 * 0.18f) << "the shorter side";
    EXPECT_EQ(p.borderCentre, s.colours[3].border);
    EXPECT_FALSE(PlanFace(s, 30, 80, 3, 3, false).darkRim);

    // The arrow tab follows the layout.
    s.shape = 7;
    EXPECT_EQ(PlanFace(s, 100, 40, 0, 0, true).outline.elements[0].points.back().x, 0);
    EXPECT_EQ(PlanFace(s, 100, 40, 0, 0, false).outline.elements[0].points.back().x, 100);
}

TEST(FacePlan, SolidAndLinearBrushes) {
    tButtonStyle s;
    s.brushType = 0;
    FacePlan p = PlanFace(s, 50, 50, 2, 0, false);
    EXPECT_EQ(p.fill, FacePlan::FillSolid);
    EXPECT_EQ(p.solidColour, s.colours[2].facePrimary);
    s.solidBrush.fill = 0;
    EXPECT_EQ(PlanFace(s, 50, 50, 2, 0, false).solidColour, 0u) << "no fill: fully transparent";

    s.brushType = 1;
    s.linearBrush.rotate = 45;
    s.linearBrush.focus = 0.25f;
    s.linearBrush.scale = 0.75f;
    s.linearBrush.shapeBell = 1;
    s.linearBrush.shapeTriangle = 0;
    s.linearBrush.gamma = 1;
    p = PlanFace(s, 50, 50, 1, 0, false);
    EXPECT_EQ(p.fill, FacePlan::FillLinear);
    EXPECT_EQ(p.colour1, s.colours[1].facePrimary);
    EXPECT_EQ(p.colour2, s.colours[1].faceSecondary);
    EXPECT_EQ(p.angle, 45.0f);
    EXPECT_EQ(p.blend.factors[1], 0.25f);
    EXPECT_EQ(p.blend.positions[1], 0.75f);
    EXPECT_EQ(p.blend.factors[2], 1.0f);
    EXPECT_EQ(p.blend.positions[2], 1.0f);
    EXPECT_TRUE(p.blend.bell);
    EXPECT_FALSE(p.blend.triangle);
    EXPECT_TRUE(p.blend.gammaCorrection);

    s.brushType = -1;
    p = PlanFace(s, 50, 50, 1, 0, false);
    EXPECT_EQ(p.fill, FacePlan::FillNone) << "an unknown brush paints no fill";
    EXPECT_TRUE(p.paints) << "but the border still";
}

TEST(FacePlan, PathBrushReversesTheColours) {
    tButtonStyle s;
    s.brushType = 3;
    s.pathBrush.focusx = 0.2f;
    s.pathBrush.focusy = 0.9f;
    s.pathBrush.gamma = 1;
    const FacePlan p = PlanFace(s, 50, 50, 0, 0, false);
    EXPECT_EQ(p.fill, FacePlan::FillPath);
    EXPECT_EQ(p.colour1, s.colours[0].facePrimary) << "surround";
    EXPECT_EQ(p.colour2, s.colours[0].faceSecondary) << "centre";
    EXPECT_EQ(p.focusX, 0.2f);
    EXPECT_EQ(p.focusY, 0.9f);
    EXPECT_EQ(p.blend.factors[1], 1.0f);
    EXPECT_TRUE(p.blend.triangle);
    EXPECT_TRUE(p.blend.gammaCorrection);
}

TEST(FacePlan, MultiStopUsesTheStateColoursOrTheBrightenedRamp) {
    tButtonStyle s;
    s.brushType = 2;
    s.multiStopBrush.rotate = 0;
    s.multiStopBrush.stops.resize(3);
    for (int i = 0; i < 3; ++i) {
        s.multiStopBrush.stops[i].position = i * 0.5f;
        for (int slot = 0; slot < 5; ++slot) s.multiStopBrush.stops[i].colours[slot] = 0xFF000000u | (slot << 8) | i;
    }
    FacePlan p = PlanFace(s, 80, 30, 4, 0, false);
    EXPECT_EQ(p.fill, FacePlan::FillMultiStop);
    EXPECT_EQ(p.angle, 0.0f);
    EXPECT_EQ(p.stopColours, (std::vector<std::uint32_t>{0xFF000400u, 0xFF000401u, 0xFF000402u}));
    EXPECT_EQ(p.stopPositions, (std::vector<float>{0.0f, 0.5f, 1.0f}));

    // No stops: the default ramp of the state, each colour brightened by the state's factor.
    s.multiStopBrush.stops.clear();
    for (int state = 0; state < 5; ++state) {
        p = PlanFace(s, 80, 30, state, 0, false);
        const ColorState& c = s.colours[state];
        const std::uint32_t sec = uc::skin::BrightenArgb(c.faceSecondary, c.brightness);
        const std::uint32_t pri = uc::skin::BrightenArgb(c.facePrimary, c.brightness);
        EXPECT_EQ(p.stopColours, (std::vector<std::uint32_t>{sec, sec, pri, sec})) << state;
        EXPECT_EQ(p.stopPositions, (std::vector<float>{0.0f, 0.3f, 0.35f, 1.0f}));
    }
    // The disabled state's factor 0.1 darkens: luminance drops well below the source colour's.
    p = PlanFace(s, 80, 30, 1, 0, false);
    EXPECT_LT(p.stopColours[0] & 0xFF, s.colours[1].faceSecondary & 0xFF);
}

}  // namespace
