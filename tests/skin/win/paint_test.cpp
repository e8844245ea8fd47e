// GDI+ painting of button faces: outlines as paths, every brush type, slot choice, border and the dark rim.
#include <gtest/gtest.h>

#include <memory>

#include "gdiplus_session.h"
#include "platform/paths.h"
#include "skin/button_style.h"

using namespace Gdiplus;

namespace {

class PaintTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::test::EnsureGdiplus();
        utilsExam::m_consoleType = 0;
        utilsExam::SetLayoutLeft(false);
    }
    void TearDown() override {
        utilsExam::m_consoleType = 0;
        utilsExam::SetLayoutLeft(false);
    }
    // Paints `style` for `state` into a fresh transparent bitmap of w x h.
    std::unique_ptr<Bitmap> Paint(const tButtonStyle& style, int w, int h, int state) {
        auto bmp = std::make_unique<Bitmap>(w, h, PixelFormat32bppARGB);
        Graphics g(bmp.get());
        g.Clear(Color(0, 0, 0, 0));
        style.DrawFace(g, Rect(0, 0, w, h), state);
        return bmp;
    }
    static tButtonStyle Opaque(int brush) {
        tButtonStyle s;
        s.brushType = brush;
        s.SetAlpha(255);
        s.linearBrush.shapeTriangle = 0;
        s.pathBrush.shapeTriangle = 0;
        return s;
    }
};

int Red(std::uint32_t c) { return (c >> 16) & 0xFF; }
int Green(std::uint32_t c) { return (c >> 8) & 0xFF; }
int Blue(std::uint32_t c) { return c & 0xFF; }
int Alpha(std::uint32_t c) { return c >> 24; }

TEST_F(PaintTest, GeneratePathFollowsTheShapeAndLayout) {
    GraphicsPath path;
    path.AddRectangle(Rect(0, 0, 5, 5));
    tButtonStyle::GeneratePath(path, Rect(500, 500, 100, 40), 0, 10, 1);
    RectF bounds;
    path.GetBounds(&bounds);
    EXPECT_NEAR(bounds.X, 1, 0.01) << "the path is reset and placed at the origin, whatever the rectangle's position";
    EXPECT_NEAR(bounds.Width, 98, 0.01);
    EXPECT_NEAR(bounds.Height, 38, 0.01);
    EXPECT_TRUE(path.IsVisible(50, 20));
    tButtonStyle::GeneratePath(path, Rect(0, 0, 100, 40), 0, 30, 1);
    EXPECT_FALSE(path.IsVisible(3, 3)) << "rounded corner";
    EXPECT_TRUE(path.IsVisible(16, 16));

    tButtonStyle::GeneratePath(path, Rect(0, 0, 100, 40), 6, 0, 0);
    EXPECT_TRUE(path.IsVisible(50, 20));
    EXPECT_FALSE(path.IsVisible(25, 20)) << "the circle spans the shorter side only";

    tButtonStyle::GeneratePath(path, Rect(0, 0, 100, 40), 7, 0, 0);
    EXPECT_TRUE(path.IsVisible(95, 20)) << "right-handed arrow tip";
    EXPECT_FALSE(path.IsVisible(3, 20) && !path.IsVisible(1, 1)) << "flat left end";
    utilsExam::SetLayoutLeft(true);
    tButtonStyle::GeneratePath(path, Rect(0, 0, 100, 40), 7, 0, 0);
    EXPECT_TRUE(path.IsVisible(5, 20));
    EXPECT_FALSE(path.IsVisible(98, 20) && !path.IsVisible(98, 2)) << "flat right end";
    EXPECT_FALSE(path.IsVisible(2, 3)) << "the tip is now on the left";
}

TEST_F(PaintTest, SolidFillUsesTheStateSlotAndNoFillIsTransparent) {
    tButtonStyle s = Opaque(0);
    s.colours[0].facePrimary = 0xFFFF0000;
    s.colours[4].facePrimary = 0xFF00FF00;
    auto bmp = Paint(s, 60, 40, 0);
    EXPECT_EQ(uc::test::PixelAt(*bmp, 30, 20), 0xFFFF0000u);
    bmp = Paint(s, 60, 40, 4);
    EXPECT_EQ(uc::test::PixelAt(*bmp, 30, 20), 0xFF00FF00u) << "state 4 paints slot 4";
    s.solidBrush.fill = 0;
    bmp = Paint(s, 60, 40, 0);
    EXPECT_EQ(Alpha(uc::test::PixelAt(*bmp, 30, 20)), 0) << "no fill leaves the face transparent";
    EXPECT_GT(Alpha(uc::test::PixelAt(*bmp, 30, 1)), 0) << "the border is still drawn";
    bmp = Paint(s, 60, 40, 5);
    EXPECT_EQ(Alpha(uc::test::PixelAt(*bmp, 30, 1)), 0) << "an unknown state paints nothing";
}

// Gradients are checked by direction rather than exact colours: renderers differ in how far a gradient spreads.
TEST_F(PaintTest, LinearGradientRunsFromPrimaryToSecondary) {
    tButtonStyle s = Opaque(1);
    s.colours[0].facePrimary = 0xFFFF0000;
    s.colours[0].faceSecondary = 0xFF0000FF;
    s.linearBrush.rotate = 0;
    s.linearBrush.focus = 0.5f;
    s.linearBrush.scale = 0.5f;
    s.radius = 0;
    auto bmp = Paint(s, 200, 40, 0);
    std::uint32_t left = uc::test::PixelAt(*bmp, 12, 20), mid = uc::test::PixelAt(*bmp, 100, 20),
                  right = uc::test::PixelAt(*bmp, 188, 20);
    EXPECT_GT(Red(left), Blue(left) + 80);
    EXPECT_GT(Blue(right), Red(right) + 80);
    EXPECT_GT(Red(left), Red(mid));
    EXPECT_GT(Red(mid), Red(right));

    // A triangle blend peaks in the middle: both ends lean to the primary colour, the centre to the secondary.
    s.linearBrush.shapeTriangle = 1;
    bmp = Paint(s, 200, 40, 0);
    left = uc::test::PixelAt(*bmp, 12, 20), mid = uc::test::PixelAt(*bmp, 100, 20), right = uc::test::PixelAt(*bmp, 188, 20);
    EXPECT_GT(Red(left), Blue(left));
    EXPECT_GT(Red(right), Blue(right));
    EXPECT_GT(Blue(mid), Blue(left) + 40);
    EXPECT_GT(Blue(mid), Blue(right) + 40);

    // Rotated 90 degrees the gradient runs top to bottom.
    s.linearBrush.shapeTriangle = 0;
    s.linearBrush.rotate = 90;
    bmp = Paint(s, 40, 200, 0);
    const std::uint32_t top = uc::test::PixelAt(*bmp, 20, 12), bottom = uc::test::PixelAt(*bmp, 20, 188);
    EXPECT_GT(Red(top), Blue(top) + 80);
    EXPECT_GT(Blue(bottom), Red(bottom) + 80);
}

TEST_F(PaintTest, MultiStopBrushPaintsEveryStopAndTheDefaultRamp) {
    tButtonStyle s = Opaque(2);
    s.radius = 0;
    s.multiStopBrush.rotate = 0;
    s.multiStopBrush.stops.assign(3, RibbonItem());
    const std::uint32_t colours[3] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF};
    for (int i = 0; i < 3; ++i) {
        s.multiStopBrush.stops[i].position = i * 0.5f;
        s.multiStopBrush.stops[i].colours[2] = colours[i];
    }
    auto bmp = Paint(s, 300, 40, 2);
    const std::uint32_t left = uc::test::PixelAt(*bmp, 10, 20), mid = uc::test::PixelAt(*bmp, 150, 20),
                        right = uc::test::PixelAt(*bmp, 290, 20);
    EXPECT_EQ(Blue(left), 0) << "left of the middle: red and green only";
    EXPECT_GT(Red(left), Red(mid));
    EXPECT_GT(Green(mid), 200);
    EXPECT_GT(Green(mid), Red(mid) + 100);
    EXPECT_GT(Green(mid), Blue(mid) + 100);
    EXPECT_EQ(Red(right), 0) << "right of the middle: green and blue only";
    EXPECT_GT(Blue(right), Blue(mid));
    // The state picks the stops' colours: slot 0 of these stops is all zero, i.e. transparent.
    bmp = Paint(s, 300, 40, 0);
    EXPECT_EQ(Alpha(uc::test::PixelAt(*bmp, 150, 20)), 0);

    // No stops: the ramp has the primary colour in a narrow band at 0.3-0.35 of the height.
    s.multiStopBrush.stops.clear();
    s.multiStopBrush.rotate = 90;
    s.colours[0].facePrimary = 0xFF000080;    // dark blue
    s.colours[0].faceSecondary = 0xFFE0E0E0;  // light grey
    bmp = Paint(s, 40, 200, 0);
    const std::uint32_t band = uc::test::PixelAt(*bmp, 20, 66), above = uc::test::PixelAt(*bmp, 20, 20),
                        below = uc::test::PixelAt(*bmp, 20, 170);
    EXPECT_LT(Red(band) + 60, Red(above)) << "primary band darker than the secondary above";
    EXPECT_LT(Red(band) + 60, Red(below)) << "and below";
}

TEST_F(PaintTest, PathGradientHasTheSecondaryColourAtTheCentre) {
    tButtonStyle s = Opaque(3);
    s.shape = 6;
    s.colours[0].facePrimary = 0xFFFF0000;
    s.colours[0].faceSecondary = 0xFF0000FF;
    auto bmp = Paint(s, 100, 100, 0);
    EXPECT_GT(Blue(uc::test::PixelAt(*bmp, 50, 50)), 200) << "centre";
    EXPECT_GT(Red(uc::test::PixelAt(*bmp, 50, 12)), Red(uc::test::PixelAt(*bmp, 50, 50))) << "towards the edge";
    EXPECT_EQ(Alpha(uc::test::PixelAt(*bmp, 3, 3)), 0) << "outside the circle";
}

TEST_F(PaintTest, UnknownBrushPaintsOnlyTheBorderAndConsoleFourAddsADarkRim) {
    tButtonStyle s = Opaque(9);
    s.radius = 0;
    auto bmp = Paint(s, 80, 40, 0);
    EXPECT_EQ(Alpha(uc::test::PixelAt(*bmp, 40, 20)), 0);
    EXPECT_GT(Alpha(uc::test::PixelAt(*bmp, 40, 0)), 0);

    s.colours[0].border = 0xFFFFFFFF;
    s.background = 0xFFFFFFFF;
    bmp = Paint(s, 80, 40, 0);
    EXPECT_GT(Red(uc::test::PixelAt(*bmp, 40, 0)), 200) << "light border without the rim";
    utilsExam::m_consoleType = 4;
    bmp = Paint(s, 80, 40, 0);
    EXPECT_LT(Red(uc::test::PixelAt(*bmp, 40, 0)), 40) << "dark rim over the outline";
}

}  // namespace
