// Round button painting into a DC: colour-key transparency, background fill, icons and their matrices, caption, arrows.
#include <gtest/gtest.h>

#include <memory>

#include "dib_canvas.h"
#include "gdiplus_session.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "skin/round_button_layout.h"
#include "skin/win/font_repository.h"
#include "skin/win/round_button_paint.h"

using namespace uc::skin;
using uc::test::DibCanvas;

namespace {

constexpr std::uint32_t kParent = 0xFF00FF;  // what lies under the button
constexpr std::uint32_t kDarkFace = 0xFF204080;
constexpr std::uint32_t kLightFace = 0xFFE0E0E0;

class RoundButtonPaintTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::test::EnsureGdiplus();
        utilsExam::m_consoleType = 0;
        utilsExam::SetLayoutLeft(false);
        style.brushType = tButtonStyle::BrushSolid;
        style.solidBrush.fill = 1;
        style.radius = 40;
        style.borderRatio = 0.2;
        style.shadowText = 0;
        for (ColorState& c : style.colours) {
            c.facePrimary = kDarkFace;
            c.border = 0xFFA0A0A0;
        }
        style.background = 0xFFC0C0C0;
        look.style = &style;
    }
    void Paint(DibCanvas& canvas, int w, int h) {
        canvas.Fill(kParent);
        painter.Draw(canvas.dc(), w, h, look);
    }
    // A solid-colour image held by the test (the repository is not needed to paint one).
    static std::unique_ptr<Gdiplus::Bitmap> Solid(int w, int h, std::uint32_t argb) {
        auto bmp = std::make_unique<Gdiplus::Bitmap>(w, h, PixelFormat32bppARGB);
        Gdiplus::Graphics g(bmp.get());
        g.Clear(Gdiplus::Color(argb));
        return bmp;
    }

    tButtonStyle style;
    RoundButtonLook look;
    RoundButtonPainter painter;
    DibCanvas canvas{200, 80};
};

TEST_F(RoundButtonPaintTest, OffScreenLeavesTheParentVisibleAroundTheFaceAndAtTheKeyColour) {
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(1, 1), kParent) << "outside the rounded corner";
    EXPECT_EQ(canvas.Pixel(100, 40), 0x204080u);

    // Face pixels of exactly RGB(1,1,1) are the transparency key: the parent shows through them.
    for (ColorState& c : style.colours) c.facePrimary = 0xFF010101;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(100, 40), kParent);
    painter.SetOffScreen(false);
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(100, 40), 0x010101u) << "painted directly there is no key";
    EXPECT_EQ(canvas.Pixel(1, 1), kParent);
}

TEST_F(RoundButtonPaintTest, TheSurfaceIsClearedForEveryPaintWhateverItsSize) {
    Paint(canvas, 200, 80);
    style.solidBrush.fill = 0;  // a transparent face: only the border is drawn
    DibCanvas small(60, 30);
    Paint(small, 50, 20);
    EXPECT_EQ(small.Pixel(25, 10), kParent) << "nothing of the earlier, larger paint shows";
    EXPECT_EQ(small.Pixel(55, 25), kParent) << "nothing is copied outside the button";
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(100, 40), kParent);
}

TEST_F(RoundButtonPaintTest, RepaintsCopyKeptImagesUntilAnythingOfTheLookChanges) {
    auto paints = [&] { return painter.PaintsDrawn(); };
    look.caption = L"Go";
    Paint(canvas, 200, 80);
    Paint(canvas, 200, 80);
    EXPECT_EQ(paints(), 1u) << "the same look is copied";
    EXPECT_EQ(canvas.Pixel(1, 1), kParent) << "a kept image is still copied through the colour key";
    EXPECT_EQ(canvas.Pixel(100, 5), 0x204080u);

    // Released and held down alternate without drawing again.
    look.faceState = 3;
    Paint(canvas, 200, 80);
    look.faceState = 0;
    Paint(canvas, 200, 80);
    look.faceState = 3;
    Paint(canvas, 200, 80);
    EXPECT_EQ(paints(), 2u);

    // Every input of the paint counts: style values, caption, size, layout, rate.
    const unsigned long before = paints();
    style.colours[3].facePrimary = 0xFF00FF00;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(100, 5), 0x00FF00u) << "a changed style value is painted";
    look.caption = L"Stop";
    Paint(canvas, 200, 80);
    Paint(canvas, 199, 80);
    utilsExam::SetLayoutLeft(true);
    Paint(canvas, 199, 80);
    utilsExam::SetLayoutLeft(false);
    look.incrementRate = 1;
    Paint(canvas, 199, 80);
    EXPECT_EQ(paints(), before + 5);
    // A third look pushes out the least recently used one.
    look.faceState = 2;
    Paint(canvas, 199, 80);
    look.faceState = 3;
    Paint(canvas, 199, 80);
    EXPECT_EQ(paints(), before + 6) << "the most recent look is kept";
    painter.Invalidate();
    Paint(canvas, 199, 80);
    EXPECT_EQ(paints(), before + 7);
    painter.SetOffScreen(false);
    Paint(canvas, 199, 80);
    Paint(canvas, 199, 80);
    EXPECT_EQ(paints(), before + 9) << "painting directly keeps nothing";
}

TEST_F(RoundButtonPaintTest, LocationSixFillsTheBackgroundOpaqueInsteadOfTheFace) {
    style.iconLocation = IconOnBackground;
    style.background = 0x80336699;  // alpha dropped
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(0, 0), 0x336699u);
    EXPECT_EQ(canvas.Pixel(100, 40), 0x336699u) << "no face";
    EXPECT_EQ(canvas.Pixel(199, 79), 0x336699u);
}

TEST_F(RoundButtonPaintTest, IconGoesWhereItsLocationSaysWithGrayAndDisabledMatrices) {
    auto red = Solid(10, 10, 0xFFFF0000);
    look.icon = red.get();
    // 200 x 80 with border ratio 0.2: margins 20 and 8.
    look.iconLocation = IconLeft;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(25, 40), 0xFF0000u);
    EXPECT_EQ(canvas.Pixel(175, 40), 0x204080u);
    look.iconLocation = IconRight;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(175, 40), 0xFF0000u);
    EXPECT_EQ(canvas.Pixel(25, 40), 0x204080u);
    look.iconLocation = IconBottom;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(100, 66), 0xFF0000u);
    look.iconLocation = IconNone;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Count(0xFF0000, 30), 0);

    // The arrow tab moves a centred icon half the height away from its point.
    style.shape = 7;
    look.iconLocation = IconCentre;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(60, 40), 0xFF0000u);
    EXPECT_EQ(canvas.Count(0xFF0000, 30, 90, 0, 200, 80), 0);
    style.shape = 0;

    look.gray = true;
    Paint(canvas, 200, 80);
    EXPECT_LE(uc::test::ColourDistance(canvas.Pixel(100, 40), 0x4C4C4C), 2) << "luminance of red";
    look.gray = false;
    look.faceState = 1;
    style.colours[1].facePrimary = 0xFF000000;
    Paint(canvas, 200, 80);
    // Half-transparent 0.65 grey over the black disabled face.
    EXPECT_LE(uc::test::ColourDistance(canvas.Pixel(100, 40), 0x535353), 3);
}

TEST_F(RoundButtonPaintTest, UnreadableOrEmptyIconsAreSkipped) {
    Gdiplus::Bitmap missing(L"Z:\\no\\such\\icon.png");
    ASSERT_NE(missing.GetLastStatus(), Gdiplus::Ok);
    look.icon = &missing;
    look.iconLocation = IconCentre;
    look.caption = L"OK";
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Pixel(1, 1), kParent);
    EXPECT_EQ(painter.LastCaptionColour(), 0xFDFDFDu) << "the caption is still drawn";
}

TEST_F(RoundButtonPaintTest, CaptionContrastsWithThePaintedFaceAndCastsAShadow) {
    look.font = FontRepository::GetFont(FontDescriptor(L"Tahoma", 48))->GetSafeHandle();
    look.caption = L"MMMM";
    Paint(canvas, 200, 80);
    EXPECT_EQ(painter.LastCaptionColour(), 0xFDFDFDu) << "light caption on a dark face";
    EXPECT_GT(canvas.Count(0xFDFDFD, 8, 10, 10, 190, 70), 50);
    EXPECT_EQ(canvas.Count(0x020202, 8, 10, 10, 190, 70), 0) << "no shadow without shadowText";

    style.shadowText = 1;
    Paint(canvas, 200, 80);
    EXPECT_GT(canvas.Count(0x020202, 8, 10, 10, 190, 70), 20) << "shadow in the inverse colour";
    look.faceState = 3;
    Paint(canvas, 200, 80);
    EXPECT_EQ(canvas.Count(0x020202, 8, 10, 10, 190, 70), 0) << "pressed: no shadow";

    // Checked: slot 2 is light, so the caption turns dark.
    look.faceState = 2;
    style.colours[2].facePrimary = kLightFace;
    Paint(canvas, 200, 80);
    EXPECT_EQ(painter.LastCaptionColour(), 0x020202u);
    EXPECT_GT(canvas.Count(0x020202, 8, 10, 10, 190, 70), 50);

    // The colour comes from what was painted, not from the style: a transparent face shows the key colour.
    style.solidBrush.fill = 0;
    Paint(canvas, 200, 80);
    EXPECT_EQ(painter.LastCaptionColour(), 0xFDFDFDu);

    // Gray: the disabled slot's text colour, alpha dropped, and no shadow from the face state 1 look.
    look.faceState = 0;
    look.gray = true;
    style.colours[1].textColour = 0xC8123456;
    Paint(canvas, 200, 80);
    EXPECT_EQ(painter.LastCaptionColour(), 0x563412u);
    EXPECT_GT(canvas.Count(0x123456, 8, 10, 10, 190, 70), 50);
}

TEST_F(RoundButtonPaintTest, StepArrowsShowTheRepeatingDirection) {
    DibCanvas rocker(100, 90);
    look.type = RockerButton;
    look.incrementRate = 1;
    Paint(rocker, 100, 90);
    EXPECT_GT(rocker.Count(0xFDFDFD, 4, 0, 0, 100, 30), 5) << "the up arrow at full strength";
    EXPECT_EQ(rocker.Count(0xFDFDFD, 4, 0, 60, 100, 90), 0) << "the idle down arrow is faint";
    const int faint = rocker.Count(0x204080, 6, 0, 60, 100, 90);
    look.type = PushButton;
    Paint(rocker, 100, 90);
    EXPECT_GT(rocker.Count(0x204080, 6, 0, 60, 100, 90), faint) << "the faint arrow covers some face";
    EXPECT_EQ(rocker.Count(0xFDFDFD, 4), 0) << "no arrows on other kinds";

    look.type = PushDragButton;
    look.incrementRate = -2;
    Paint(canvas, 200, 80);
    EXPECT_GT(canvas.Count(0xFDFDFD, 4, 0, 0, 40, 80), 5) << "left arrow active when stepping down";
    EXPECT_EQ(canvas.Count(0xFDFDFD, 4, 160, 0, 200, 80), 0);
}

TEST_F(RoundButtonPaintTest, ZeroSizeNoStyleAndHugeButtons) {
    canvas.Fill(kParent);
    painter.Draw(canvas.dc(), 0, 80, look);
    painter.Draw(canvas.dc(), 200, -3, look);
    RoundButtonLook none;
    painter.Draw(canvas.dc(), 200, 80, none);
    EXPECT_EQ(canvas.Count(kParent, 0), 200 * 80) << "nothing painted";

    // Far larger than any screen: painted at the largest size from the top-left, and said once in the log.
    zelLogger::Instance().ClearEntries();
    look.caption = L"Huge";
    Paint(canvas, 30000, 30000);
    Paint(canvas, 30000, 30000);
    EXPECT_EQ(zelLogger::Instance().Count(L"Round button 30000x30000 painted as 2048x2048"), 1u);
    EXPECT_EQ(canvas.Pixel(0, 0), kParent) << "outside the rounded corner";
    EXPECT_LT(canvas.Count(kParent, 0), 200 * 80 / 2) << "the top-left of the face covers the target";
    // Tall, but within the limit.
    DibCanvas tall(40, 300);
    Paint(tall, 40, 2000);
    EXPECT_EQ(tall.Pixel(0, 0), kParent);
    EXPECT_NE(tall.Pixel(20, 150), kParent);
    EXPECT_EQ(zelLogger::Instance().Count(L"painted"), 1u);
}

}  // namespace
