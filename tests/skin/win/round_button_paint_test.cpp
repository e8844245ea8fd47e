// Round button painting into a DC: colour key, kept images, background fill, icons and matrices, caption, arrows.
#include <gtest/gtest.h>

#include <memory>

#include "dib_canvas.h"
#include "gdiplus_session.h"
#include "platform/paths.h"
#include "skin/win/font_repository.h"
#include "skin/win/round_button_paint.h"

using namespace uc::skin;
using uc::test::DibCanvas;

namespace {

constexpr std::uint32_t kParent = 0xFF00FF;  // what lies under the button

class RoundButtonPaintTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::test::EnsureGdiplus();
        utilsExam::m_consoleType = 0;
        utilsExam::SetLayoutLeft(false);
        style.brushType = tButtonStyle::BrushSolid;
        style.radius = 40;
        style.borderRatio = 0.2;
        style.shadowText = 0;
        for (ColorState& c : style.colours) c.facePrimary = 0xFF204080, c.border = 0xFFA0A0A0;
        style.background = 0xFFC0C0C0;
        look.style = &style;
    }
    void Paint(DibCanvas& target, int w, int h) {
        target.Fill(kParent);
        painter.Draw(target.dc(), w, h, look);
    }
    int Count(std::uint32_t rgb) const { return canvas.Count(rgb, 8, 10, 10, 190, 70); }  // inside the border

    tButtonStyle style;
    RoundButtonLook look;
    RoundButtonPainter painter;
    DibCanvas canvas{200, 80};
};

TEST_F(RoundButtonPaintTest, ColourKeyShowsTheParentAndKeptImagesAreCopiedUntilTheLookChanges) {
    Paint(canvas, 200, 80);
    look.faceState = 3;
    Paint(canvas, 200, 80);
    look.faceState = 0;
    Paint(canvas, 200, 80);
    EXPECT_EQ(painter.PaintsDrawn(), 2u) << "released and held down are kept";
    EXPECT_EQ(canvas.Pixel(1, 1), kParent) << "a kept image goes through the key too";
    for (ColorState& c : style.colours) c.facePrimary = 0xFF010101;  // exactly the key: the parent shows
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(100, 40), kParent) << "a changed style value is painted, not copied";
    DibCanvas small(60, 30);
    style.solidBrush.fill = 0;
    Paint(small, 50, 20);
    EXPECT_EQ(small.Pixel(25, 10), kParent) << "nothing of the earlier, larger paint shows";
    EXPECT_EQ(small.Pixel(55, 25), kParent) << "nothing is copied outside the button";
    utilsExam::SetLayoutLeft(true);
    Paint(small, 50, 20);
    EXPECT_EQ(painter.PaintsDrawn(), 5u) << "the layout counts as well";
    style.solidBrush.fill = 1;
    painter.SetOffScreen(false);
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(100, 40), 0x010101u) << "painted directly there is no key";
}

TEST_F(RoundButtonPaintTest, IconsByLocationWithMatricesAndTheBackgroundFill) {
    Gdiplus::Bitmap red(10, 10, PixelFormat32bppARGB);
    Gdiplus::Graphics(&red).Clear(Gdiplus::Color(0xFFFF0000));
    look.icon = &red;
    look.iconLocation = IconRight;  // 200 x 80, ratio 0.2: 20 from the right edge
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(175, 40), 0xFF0000u);
    EXPECT_EQ(canvas.Count(0xFF0000, 30, 0, 0, 165, 80), 0);
    style.shape = 7;  // the arrow tab moves a centred icon half the height away from its point
    look.iconLocation = IconCentre;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(60, 40), 0xFF0000u);
    look.gray = true;
    Paint(canvas, 200, 80);
    EXPECT_LE(uc::test::ColourDistance(canvas.Pixel(60, 40), 0x4C4C4C), 2) << "luminance of red";
    look.gray = false;
    look.faceState = 1;
    style.colours[1].facePrimary = 0xFF000000;
    Paint(canvas, 200, 80);
    EXPECT_LE(uc::test::ColourDistance(canvas.Pixel(60, 40), 0x535353), 3) << "half-opaque light grey on black";
    style.iconLocation = IconOnBackground;
    style.background = 0x80336699;
    look.icon = nullptr;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Count(0x336699, 0), 200 * 80) << "location 6: the background, opaque, instead of the face";
}

TEST_F(RoundButtonPaintTest, CaptionContrastsWithThePaintedFaceAndCastsAShadow) {
    look.font = FontRepository::GetFont(FontDescriptor(L"Tahoma", 48))->GetSafeHandle();
    look.caption = L"MMMM";
    style.shadowText = 1;
    Paint(canvas, 200, 80);
    EXPECT_GT(Count(0xFDFDFD), 50) << "light on a dark face";
    EXPECT_GT(Count(0x020202), 20) << "with a shadow in the inverse colour";
    look.faceState = 3;
    Paint(canvas, 200, 80);
    EXPECT_EQ(Count(0x020202), 0) << "none when pressed";
    look.faceState = 2;
    style.colours[2].facePrimary = 0xFFE0E0E0;
    Paint(canvas, 200, 80);
    EXPECT_EQ(painter.LastCaptionColour(), 0x020202u) << "checked: the light slot 2";
    style.solidBrush.fill = 0;
    Paint(canvas, 200, 80);
    EXPECT_EQ(painter.LastCaptionColour(), 0xFDFDFDu) << "read from the painted centre (the key), not the style";
    look.gray = true;
    style.colours[1].textColour = 0xC8123456;
    Paint(canvas, 200, 80);
    EXPECT_GT(Count(0x123456), 50) << "gray: slot 1's text colour";
}

}  // namespace
