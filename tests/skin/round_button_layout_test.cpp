// Round button geometry and colours: icon placement and shift, caption room, arrows, caption colour, matrices, scaling.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "skin/round_button_layout.h"

namespace {

using namespace uc::skin;

TEST(RoundButtonLayout, IconPlacementForEveryLocation) {
    struct Case {
        int location;
        LayoutRect expected;
    };
    // 200 x 60, border ratio 0.2: margins 20 (width) and 6 (height); a 20 x 16 icon.
    const Case cases[] = {
        {IconNone, {}},
        {IconCentre, {90, 22, 20, 16}},
        {IconLeft, {20, 22, 20, 16}},
        {IconRight, {160, 22, 20, 16}},
        {IconTop, {90, 6, 20, 16}},
        {IconBottom, {90, 38, 20, 16}},
        {IconOnBackground, {90, 22, 20, 16}},
        {7, {}},
        {-1, {}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(PlaceIcon(c.location, 200, 60, 20, 16, 0.2, 0, false), c.expected) << "location " << c.location;
    // Margins are truncated: 99 x 0.25 x 0.5 = 12.375.
    EXPECT_EQ(PlaceIcon(IconLeft, 99, 40, 10, 10, 0.25, 0, false).x, 12);
    EXPECT_EQ(PlaceIcon(IconBottom, 99, 41, 10, 10, 0.25, 0, false).y, 41 - 5 - 10);
}

TEST(RoundButtonLayout, ArrowTabShiftsTheIconAwayFromItsPoint) {
    // 200 x 60: half the height is 30.
    EXPECT_EQ(PlaceIcon(IconCentre, 200, 60, 20, 16, 0.2, 7, false).x, 90 - 30);
    EXPECT_EQ(PlaceIcon(IconCentre, 200, 60, 20, 16, 0.2, 7, true).x, 90 + 30) << "the point is on the left";
    EXPECT_EQ(PlaceIcon(IconRight, 200, 60, 20, 16, 0.2, 7, false).x, 130);
    EXPECT_EQ(PlaceIcon(IconLeft, 200, 60, 20, 16, 0.2, 7, false).x, 0) << "shifted, but kept on the button";
    EXPECT_EQ(PlaceIcon(IconRight, 200, 60, 20, 16, 0.2, 7, true).x, 180);
    EXPECT_EQ(PlaceIcon(IconCentre, 200, 60, 20, 16, 0.2, 6, false).x, 90) << "other shapes are not shifted";
}

TEST(RoundButtonLayout, LargeIconsShrinkAndBadSizesGiveNoIcon) {
    // Room 160 x 48 inside the margins: a 400 x 100 icon shrinks by 0.4, its width filling the room.
    LayoutRect r = PlaceIcon(IconCentre, 200, 60, 400, 100, 0.2, 0, false);
    EXPECT_EQ(r.width, 160);
    EXPECT_EQ(r.height, 40);
    EXPECT_GE(r.x, 0);
    EXPECT_LE(r.x + r.width, 200);
    // A huge image in a tiny button stays at least one pixel and inside.
    r = PlaceIcon(IconRight, 4, 4, 100000, 3, 0.0, 0, false);
    EXPECT_EQ(r.width, 4);
    EXPECT_EQ(r.height, 1);
    EXPECT_LE(r.x + r.width, 4);
    EXPECT_TRUE(PlaceIcon(IconCentre, 0, 0, 16, 16, 0.2, 0, false).empty()) << "zero-size button";
    EXPECT_TRUE(PlaceIcon(IconCentre, 100, 100, 0, 16, 0.2, 0, false).empty()) << "image without pixels";
    EXPECT_TRUE(PlaceIcon(IconCentre, 100, 100, 16, 16, 5.0, 0, false).empty()) << "margins leave no room";
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(PlaceIcon(IconLeft, 100, 100, 16, 16, nan, 0, false).x, 0) << "a ratio that is not a number: no margin";
    EXPECT_EQ(PlaceIcon(IconLeft, 100, 100, 16, 16, -3, 0, false).x, 0);
    r = PlaceIcon(IconCentre, 2000000000, 1000000000, 16, 16, 0.2, 7, false);
    EXPECT_EQ(r.x, 1000000000 - 8 - 500000000) << "huge buttons do not overflow";
    EXPECT_EQ(r.y, 500000000 - 8);
}

TEST(RoundButtonLayout, CaptionTakesTheRoomBesideTheIcon) {
    const LayoutRect icon{20, 22, 20, 16};
    EXPECT_EQ(PlaceCaption(IconLeft, 200, 60, icon), (LayoutRect{40, 0, 160, 60}));
    EXPECT_EQ(PlaceCaption(IconRight, 200, 60, LayoutRect{160, 22, 20, 16}), (LayoutRect{0, 0, 160, 60}));
    EXPECT_EQ(PlaceCaption(IconTop, 200, 60, LayoutRect{90, 6, 20, 16}), (LayoutRect{0, 22, 200, 38}));
    EXPECT_EQ(PlaceCaption(IconBottom, 200, 60, LayoutRect{90, 38, 20, 16}), (LayoutRect{0, 0, 200, 38}));
    EXPECT_EQ(PlaceCaption(IconCentre, 200, 60, LayoutRect{90, 22, 20, 16}), (LayoutRect{0, 0, 200, 60}));
    EXPECT_EQ(PlaceCaption(IconLeft, 200, 60, LayoutRect{}), (LayoutRect{0, 0, 200, 60})) << "no icon drawn";
    EXPECT_EQ(PlaceCaption(IconLeft, -5, -5, LayoutRect{}), (LayoutRect{0, 0, 0, 0}));
}

TEST(RoundButtonLayout, TextColorContrastsWithTheFace) {
    struct Case {
        unsigned long face, caption;
    };
    const Case cases[] = {
        {0xFFFFFF, 0x020202}, {0x000000, 0xFDFDFD},
        {0x979797, 0x020202},  // grey 151: 255 - 151 = 104, below 105: light
        {0x959595, 0xFDFDFD},  // grey 149: 106
        {0x00FF00, 0xFDFDFD},  // pure green: 255 - 149.685 is just above 105
        // Red is the low byte: red 255 + green 150 is light; read the other way round it would be dark.
        {0x0096FF, 0x020202},
        {0xFF9600, 0xFDFDFD},
    };
    for (const Case& c : cases) EXPECT_EQ(TextColor(c.face), c.caption) << std::hex << c.face;
    EXPECT_EQ(TextColor(0xFF000000ul), 0xFDFDFDul) << "the byte above the colour is ignored";
    EXPECT_EQ(ArgbToColorRef(0xC8102030u), 0x302010ul);
}

TEST(RoundButtonLayout, ArrowsOfTheRepeatingKinds) {
    EXPECT_TRUE(PlanArrows(PushButton, 100, 90, 0).empty());
    EXPECT_TRUE(PlanArrows(RockerButton, 100, 5, 0).empty()) << "too small to hold arrows";
    EXPECT_TRUE(PlanArrows(PushDragButton, 10, 40, 0).empty());

    auto arrows = PlanArrows(RockerButton, 100, 90, 2);
    ASSERT_EQ(arrows.size(), 2u);
    EXPECT_EQ(arrows[0].direction, StepUp);
    EXPECT_TRUE(arrows[0].active);
    EXPECT_FALSE(arrows[1].active);
    for (auto [x, y] : arrows[0].points) EXPECT_LT(y, 30) << "up arrow in the upper third";
    for (auto [x, y] : arrows[1].points) EXPECT_GT(y, 60) << "down arrow in the lower third";
    EXPECT_LT(arrows[0].points[0].second, arrows[0].points[1].second) << "points up";
    EXPECT_GT(arrows[1].points[0].second, arrows[1].points[1].second) << "points down";

    arrows = PlanArrows(PushDragButton, 200, 50, -3);
    ASSERT_EQ(arrows.size(), 2u);
    EXPECT_EQ(arrows[0].direction, StepDown);
    EXPECT_TRUE(arrows[0].active);
    for (auto [x, y] : arrows[0].points) EXPECT_LT(x, 100) << "down on the left";
    for (auto [x, y] : arrows[1].points) {
        EXPECT_GT(x, 100) << "up on the right";
        EXPECT_LT(x, 200);
    }
    EXPECT_FALSE(arrows[1].active);
}

TEST(RoundButtonLayout, ScaleStyleGrowsFontAndCornersAtTheirRates) {
    struct Case {
        double scale;
        int size;
        double radius;
        int scaledSize;
        double scaledRadius;
    };
    const Case cases[] = {
        {2.0, 16, 10, 22, 17.5},    // 1.4 x 16 = 22.4
        {0.5, 15, 10, 12, 6.25},    // 0.8 x 15
        {1.125, 25, 10, 26, 10.9375},  // 1.05 x 25 = 26.25
        {2.25, -5, 8, -8, 15.5},    // 1.5 x -5 = -7.5: halves round away from zero
        {2.0, -16, 10, -22, 17.5},  // character-height sizes scale the same way
    };
    for (const Case& c : cases) {
        tButtonStyle s;
        s.font.size = c.size;
        s.radius = c.radius;
        s.scaleText = 1;
        EXPECT_TRUE(ScaleStyle(s, c.scale));
        EXPECT_EQ(s.font.size, c.scaledSize) << c.scale;
        EXPECT_DOUBLE_EQ(s.radius, c.scaledRadius) << c.scale;
    }

    tButtonStyle fixed;
    fixed.scaleText = 0;
    const tButtonStyle before = fixed;
    EXPECT_TRUE(ScaleStyle(fixed, 3.0));
    EXPECT_EQ(fixed, before) << "without scaleText nothing scales";
    tButtonStyle s = before;
    s.scaleText = 1;
    const tButtonStyle unscaled = s;
    for (double bad : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(ScaleStyle(s, bad));
        EXPECT_EQ(s, unscaled);
    }
    EXPECT_TRUE(ScaleStyle(s, 1.0));
    EXPECT_EQ(s, unscaled);
}

TEST(RoundButtonLayout, IconMatricesGrayAndFade) {
    // Gray: every channel becomes the luminance, alpha kept.
    EXPECT_EQ(ApplyIconMatrix(GrayIconMatrix(), 0xFFFF0000u), 0xFF4C4C4Cu);
    EXPECT_EQ(ApplyIconMatrix(GrayIconMatrix(), 0x80FFFFFFu), 0x80FFFFFFu);
    const std::uint32_t g = ApplyIconMatrix(GrayIconMatrix(), 0xFF00FF00u);
    EXPECT_EQ(g & 0xFF, (g >> 8) & 0xFF);
    EXPECT_EQ(g & 0xFF, (g >> 16) & 0xFF);
    // Disabled: half-way to white and half as opaque.
    EXPECT_EQ(ApplyIconMatrix(DisabledIconMatrix(), 0xFF000000u), 0x80808080u);
    EXPECT_EQ(ApplyIconMatrix(DisabledIconMatrix(), 0xFFFFFFFFu), 0x80FFFFFFu);
    EXPECT_EQ(ApplyIconMatrix(DisabledIconMatrix(), 0x00123456u) >> 24, 0u) << "transparent stays transparent";
}

}  // namespace
