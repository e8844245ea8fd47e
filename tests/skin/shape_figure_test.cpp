// Face outlines: exact corners of every shape code, radius clamping, integer halves, the arrow's flip, bounds.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "skin/shape_figure.h"

namespace {

using uc::skin::BuildShapeFigure;
using uc::skin::FigureElement;
using uc::skin::FigurePoint;
using uc::skin::ShapeFigure;

std::vector<FigurePoint> PolygonOf(const ShapeFigure& f) {
    EXPECT_EQ(f.elements.size(), 1u);
    EXPECT_EQ(f.elements[0].kind, FigureElement::Polygon);
    return f.elements.empty() ? std::vector<FigurePoint>{} : f.elements[0].points;
}

void ExpectArc(const FigureElement& e, int x, int y, int w, int h, float start, float sweep) {
    EXPECT_EQ(e.kind, FigureElement::Arc);
    EXPECT_EQ(e.x, x);
    EXPECT_EQ(e.y, y);
    EXPECT_EQ(e.width, w);
    EXPECT_EQ(e.height, h);
    EXPECT_NEAR(e.startAngle, start, 1e-3);
    EXPECT_NEAR(e.sweepAngle, sweep, 1e-3);
}

TEST(ShapeFigure, TrianglesUseIntegerHalvesOfOddSides) {
    // 101 x 41: the halves round toward zero (50 and 20).
    using P = std::vector<FigurePoint>;
    EXPECT_EQ(PolygonOf(BuildShapeFigure(101, 41, 1, 10, 2, false)), (P{{2, 20}, {99, 2}, {99, 39}}));
    EXPECT_EQ(PolygonOf(BuildShapeFigure(101, 41, 2, 10, 2, false)), (P{{2, 2}, {99, 20}, {2, 39}}));
    EXPECT_EQ(PolygonOf(BuildShapeFigure(101, 41, 3, 10, 2, false)), (P{{2, 39}, {50, 2}, {99, 39}}));
    EXPECT_EQ(PolygonOf(BuildShapeFigure(101, 41, 4, 10, 2, false)), (P{{2, 2}, {99, 2}, {50, 39}}));
    // The apex is not inset (the half is taken of the full side).
    EXPECT_EQ(PolygonOf(BuildShapeFigure(10, 10, 1, 0, 3, false))[0], (FigurePoint{3, 5}));
    EXPECT_EQ(PolygonOf(BuildShapeFigure(10, 10, 3, 0, 3, false))[1], (FigurePoint{5, 3}));
}

TEST(ShapeFigure, ArrowTabFlipsWithTheLayout) {
    using P = std::vector<FigurePoint>;
    EXPECT_EQ(PolygonOf(BuildShapeFigure(120, 41, 7, 10, 1, false)),
              (P{{99, 1}, {1, 1}, {1, 40}, {99, 40}, {119, 20}}))
        << "right-handed: points right";
    EXPECT_EQ(PolygonOf(BuildShapeFigure(120, 41, 7, 10, 1, true)), (P{{21, 1}, {119, 1}, {119, 40}, {21, 40}, {1, 20}}))
        << "left-handed: points left";
}

TEST(ShapeFigure, CircleIsCentredOnTheShorterSide) {
    const ShapeFigure f = BuildShapeFigure(100, 41, 6, 10, 1, false);
    ASSERT_EQ(f.elements.size(), 1u);
    const FigureElement& e = f.elements[0];
    EXPECT_EQ(e.kind, FigureElement::Ellipse);
    EXPECT_EQ(e.width, 39);
    EXPECT_EQ(e.height, 39);
    EXPECT_EQ(e.x, 30) << "(100-39)/2 rounds toward zero";
    EXPECT_EQ(e.y, 1);
}

TEST(ShapeFigure, RoundedRectangleCornersClampAndDegenerate) {
    ShapeFigure f = BuildShapeFigure(100, 40, 0, 10, 1, false);
    ASSERT_EQ(f.elements.size(), 4u);
    ExpectArc(f.elements[0], 1, 1, 10, 10, 180, 90);
    ExpectArc(f.elements[1], 89, 1, 10, 10, 270, 90);
    ExpectArc(f.elements[2], 89, 29, 10, 10, 0, 90);
    ExpectArc(f.elements[3], 1, 29, 10, 10, 90, 90);
    EXPECT_TRUE(f.closed);

    // A radius at or above the shorter side is that side.
    f = BuildShapeFigure(100, 40, 0, 500, 0, false);
    ASSERT_EQ(f.elements.size(), 4u);
    ExpectArc(f.elements[1], 60, 0, 40, 40, 270, 90);
    f = BuildShapeFigure(100, 40, 0, 40, 0, false);
    EXPECT_EQ(f.elements[0].width, 40);
    f = BuildShapeFigure(100, 40, 0, 39, 0, false);
    EXPECT_EQ(f.elements[0].width, 39);

    // Below 1 a plain rectangle; codes outside 1-7 are the rounded rectangle too.
    for (int radius : {0, -5}) {
        f = BuildShapeFigure(100, 40, 0, radius, 1, false);
        ASSERT_EQ(f.elements.size(), 1u);
        EXPECT_EQ(f.elements[0].kind, FigureElement::Rectangle);
        EXPECT_EQ(f.elements[0].x, 1);
        EXPECT_EQ(f.elements[0].width, 98);
        EXPECT_EQ(f.elements[0].height, 38);
    }
    for (int code : {-1, 8, 1000}) EXPECT_EQ(BuildShapeFigure(100, 40, code, 10, 1, false).elements.size(), 4u) << code;
}

TEST(ShapeFigure, HexagonAnglesAndBoxes) {
    const int w = 60, h = 90, r = 6, in = 1;
    const ShapeFigure f = BuildShapeFigure(w, h, 5, r, in, false);
    ASSERT_EQ(f.elements.size(), 6u);
    const float t = static_cast<float>(std::atan2(0.5 * w - r - in, 0.33333334 * h - r - in) * 180.0 / std::numbers::pi);
    EXPECT_NEAR(t, 45.0, 1e-4) << "23 over 23";
    const int d = 12, xm = 30 - 6 + 1, y1 = 30 - 6 + 1, y2 = 60 - 6 + 1;
    ExpectArc(f.elements[0], in, y2, d, d, 180 - t, t);
    ExpectArc(f.elements[1], in, y1, d, d, 180, t);
    ExpectArc(f.elements[2], xm, in, d, d, 180 + t, 180 - 2 * t);
    ExpectArc(f.elements[3], w - d - in, y1, d, d, 360 - t, t);
    ExpectArc(f.elements[4], w - d - in, y2, d, d, 0, t);
    ExpectArc(f.elements[5], xm, h - d - in, d, d, t, 180 - 2 * t);

    // Thirds of a side not divisible by 3 round toward zero: 2*h/3 is taken of 2h, not twice h/3.
    const ShapeFigure g = BuildShapeFigure(60, 101, 5, 0, 0, false);
    EXPECT_EQ(g.elements[1].y, 33);
    EXPECT_EQ(g.elements[0].y, 67);
    // The radius is clamped before doubling: a huge radius gives boxes of twice the shorter side.
    EXPECT_EQ(BuildShapeFigure(60, 100, 5, 1000, 0, false).elements[0].width, 120);
}

TEST(ShapeFigure, OutlinesStayInsideTheirRectangle) {
    // Sample every shape at a range of sizes: all points lie within the inset rectangle (a rounding slack of
    // half a pixel for arcs). The hexagon is left out: its corner boxes reach outside by design on flat faces,
    // and so is an arrow tab narrower than it is tall.
    for (int shape : {0, 1, 2, 3, 4, 6, 7})
        for (int w : {16, 33, 120})
            for (int h : {16, 27, 64})
                for (int inset : {0, 1})
                    for (bool left : {false, true}) {
                        if (shape == 7 && w < h) continue;
                        const ShapeFigure f = BuildShapeFigure(w, h, shape, 12, inset, left);
                        for (auto [x, y] : uc::skin::FlattenFigure(f)) {
                            ASSERT_GE(x, inset - 0.5) << shape << " " << w << "x" << h;
                            ASSERT_LE(x, w - inset + 0.5) << shape << " " << w << "x" << h;
                            ASSERT_GE(y, inset - 0.5) << shape << " " << w << "x" << h;
                            ASSERT_LE(y, h - inset + 0.5) << shape << " " << w << "x" << h;
                        }
                    }
}

TEST(ShapeFigure, TruncationOfRealsFromFiles) {
    using uc::skin::TruncateToInt;
    EXPECT_EQ(TruncateToInt(9.99), 9);
    EXPECT_EQ(TruncateToInt(-9.99), -9);
    EXPECT_EQ(TruncateToInt(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(TruncateToInt(1e300), std::numeric_limits<int>::max());
    EXPECT_EQ(TruncateToInt(-1e300), std::numeric_limits<int>::min());
    EXPECT_EQ(TruncateToInt(std::numeric_limits<double>::infinity()), std::numeric_limits<int>::max());
}

}  // namespace
