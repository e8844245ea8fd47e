// The please-wait box's geometry and its timer state.
#include <gtest/gtest.h>

#include "print.h"
#include "ui/wait_box_layout.h"

namespace wb = uc::ui::wait_box;

TEST(WaitBoxLayout, HeightMultipliesTheTextHeightByTheLineCount) {
    EXPECT_EQ(wb::BoxRect(1280, 1024, 13, 1), (uc::ui::Rect{430, 473, 850, 551}));  // 23 + 55 = 78 high
    const uc::ui::Rect five = wb::BoxRect(1280, 1024, 65, 5);
    EXPECT_EQ(five.Height(), (65 + 10) * 5 + 55);
    EXPECT_EQ(five.Width(), 420);
    EXPECT_EQ(five.top, (1024 - 430) / 2);
    // Odd and small screens: signed halves truncate toward zero.
    EXPECT_EQ(wb::BoxRect(421, 100, 13, 1).left, 0);
    EXPECT_EQ(wb::BoxRect(300, 50, 13, 1), (uc::ui::Rect{-60, -14, 360, 64}));
}

TEST(WaitBoxLayout, FrameBarAndTextAreas) {
    wb::FrameBand bands[4];
    wb::FrameBands(420, 78, bands);
    EXPECT_EQ(bands[0].cx, 420);
    EXPECT_EQ(bands[1].x, 1);
    EXPECT_EQ(bands[1].cx, 417);
    EXPECT_EQ(bands[2].cy, 71);
    EXPECT_EQ(bands[3].x, 5);
    EXPECT_EQ(bands[3].cx, 411);
    EXPECT_EQ(bands[3].sysColour, 15);  // COLOR_BTNFACE inside
    EXPECT_EQ(bands[0].sysColour, 10);  // COLOR_ACTIVEBORDER outside

    const wb::Bar bar = wb::BarFor(78, -400);
    EXPECT_EQ(bar.x, 10);
    EXPECT_EQ(bar.y, 43);
    EXPECT_EQ(bar.cx, 400);
    EXPECT_EQ(bar.cy, 25);
    EXPECT_EQ(bar.x1, -390);
    EXPECT_EQ(bar.x2, 10);
    EXPECT_EQ(bar.y2, 68);
    EXPECT_EQ(wb::BarFor(78, 30).x, 10) << "the rectangle never moves, only the brush";
    EXPECT_EQ(wb::TextArea(78), (uc::ui::Rect{10, 10, 410, 33}));
}

TEST(WaitBoxAnimation, OffsetRunsUpToFourHundredThenWrapsToMinusFourHundred) {
    wb::Animation a;
    EXPECT_EQ(a.OnTimer(wb::kAnimationTimer), wb::TickAction::None) << "no animation before the box shows";
    EXPECT_EQ(a.Offset(), 0);
    EXPECT_EQ(a.OnTimer(wb::kShowTimer), wb::TickAction::Show);
    EXPECT_EQ(a.OnTimer(wb::kShowTimer), wb::TickAction::None) << "shown once";
    for (int expected = 10; expected <= 400; expected += 10) {
        ASSERT_EQ(a.OnTimer(wb::kAnimationTimer), wb::TickAction::Animate);
        ASSERT_EQ(a.Offset(), expected);
    }
    a.OnTimer(wb::kAnimationTimer);
    EXPECT_EQ(a.Offset(), -400) << "after 400 comes -400, not 410";
    a.OnTimer(wb::kAnimationTimer);
    EXPECT_EQ(a.Offset(), -390);
    EXPECT_EQ(a.OnTimer(7), wb::TickAction::None);
    EXPECT_EQ(wb::Animation::Step(395), -400);
    EXPECT_EQ(wb::Animation::Step(-400), -390);
}
