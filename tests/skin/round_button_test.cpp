// Round button rules and geometry: check and click per kind, repeat schedules, capture, icon placement, colours, scaling.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "skin/round_button_layout.h"
#include "skin/round_button_logic.h"

namespace {

using namespace uc::skin;
using A = ButtonAction;

// Carries out the actions as a window would, on a virtual time line (timer 1 fires on its schedule).
struct FakeWindow {
    RoundButtonLogic logic;
    bool capture = false, pushed = false;
    int period = 0, now = 0, due = 0;
    std::vector<std::pair<int, int>> told;  // (time, click type)

    explicit FakeWindow(ButtonType type, int w = 100, int h = 90) {
        logic.SetType(type);
        logic.SetSize(w, h);
    }
    void Run(const ButtonActions& actions) {
        for (const A& a : actions) {
            if (a.kind == A::Notify) told.emplace_back(now, a.value);
            capture |= a.kind == A::TakeCapture;
            if (a.kind == A::ReleaseCapture && capture) LoseCapture();  // WM_CAPTURECHANGED comes at once
            if (a.kind == A::SetPushed) pushed = a.value != 0;
            if (a.kind == A::StartTimer) period = a.value, due = now + a.value;
            if (a.kind == A::KillTimer) period = 0;
        }
    }
    void LoseCapture() {
        capture = false;
        Run(logic.CaptureChanged(true));
    }
    bool In(int x, int y) const { return x >= 0 && y >= 0 && x < logic.Width() && y < logic.Height(); }
    void Move(int x, int y, bool held = false) { Run(logic.MouseMove(x, y, In(x, y), held)); }
    void Down(int x, int y) { Run(logic.LButtonDown(x, y, In(x, y))); }
    void Up(int x, int y) { Run(logic.LButtonUp(x, y, In(x, y))); }
    void Advance(int ms) {
        const int end = now + ms;
        while (period && due <= end) {
            now = due;
            due += period;
            Run(logic.Timer(capture));  // may restart the timer: `due` is set anew then
        }
        now = end;
    }
    std::vector<int> Times() const {
        std::vector<int> t;
        for (auto [time, click] : told) t.push_back(time);
        return t;
    }
};

TEST(RoundButtonRules, CheckAndClickOnReleaseByKind) {
    struct Case {
        const wchar_t* name;
        bool fromFalse, fromTrue, clickOutside;
    };
    const Case cases[kButtonTypeCount] = {
        {L"Radio Button", true, true, true},         {L"Check Button", true, false, false},
        {L"Push Button", false, false, false},       {L"Radio Push Button", true, false, true},
        {L"Push Drag Button", false, false, false},  {L"Rocker Button", false, true, false},
        {L"Check State Button", false, true, false},
    };
    for (int t = 0; t < kButtonTypeCount; ++t) {
        const Case& c = cases[t];
        EXPECT_EQ(RoundButtonLogic::TypeName(t), c.name);
        for (bool outside : {false, true})
            for (bool check : {false, true}) {
                FakeWindow w(static_cast<ButtonType>(t));
                w.logic.SetCheck(check);
                w.Move(50, 45);
                w.Down(50, 45);
                if (outside) w.Move(50, 300, true);  // held and dragged off: the capture keeps the messages coming
                w.Up(50, outside ? 300 : 45);
                EXPECT_EQ(w.logic.GetCheck(), check ? c.fromTrue : c.fromFalse) << c.name;
                const bool clicks = outside ? c.clickOutside : true;  // a rocker's middle third clicks
                EXPECT_EQ(w.told, (clicks ? decltype(w.told){{0, Click}} : decltype(w.told){})) << c.name;
                EXPECT_FALSE(w.capture || w.pushed || w.period) << c.name;
            }
    }
    EXPECT_TRUE(RoundButtonLogic::TypeName(kButtonTypeCount).empty());
    EXPECT_EQ(RoundButtonLogic().GetType(), RadioButton) << "the default kind is the radio kind";
}

TEST(RoundButtonRules, HoverCaptureAndALostCapture) {
    FakeWindow w(PushButton);
    w.Move(10, 10);
    EXPECT_TRUE(w.logic.GetHover() && w.capture);
    w.Down(10, 10);
    w.Move(-5, 10);  // the left button was released elsewhere: the pointer leaves
    EXPECT_FALSE(w.logic.GetHover() || w.capture || w.pushed);
    w.Up(10, 10);
    EXPECT_TRUE(w.told.empty()) << "a release inside without hover does not click";
    EXPECT_TRUE(w.logic.CaptureChanged(false).empty()) << "taking the capture itself is no loss";
}

TEST(RoundButtonRules, HeldRockerStepsAtOnceThenAccelerates) {
    struct Case {
        int y, rate;
    };
    for (const Case c : {Case{29, 1}, Case{30, 0}, Case{60, 0}, Case{61, -1}}) {  // thirds of 90 at 30 and 60
        FakeWindow w(RockerButton);
        w.Down(50, c.y);
        EXPECT_EQ(w.logic.GetIncrementRate(), c.rate) << c.y;
        EXPECT_EQ(w.told.size(), c.rate ? 1u : 0u) << "the first step comes at once";
    }
    FakeWindow w(RockerButton);
    w.Move(50, 10);
    w.Down(50, 10);
    w.Advance(1030);
    EXPECT_EQ(w.Times(), (std::vector<int>{0, 500, 600, 700, 800, 900, 1000, 1010, 1020, 1030}));
    for (auto [time, click] : w.told) EXPECT_EQ(click, StepUp);
    w.Up(50, 10);
    w.Advance(1000);
    EXPECT_EQ(w.told.size(), 10u) << "no click after steps; the timer stops at its next tick";
    EXPECT_EQ(w.period, 0);

    FakeWindow down(RockerButton);
    down.Down(50, 80);
    down.Advance(600);
    EXPECT_EQ(down.told, (decltype(down.told){{0, StepDown}, {500, StepDown}, {600, StepDown}}));
    down.LoseCapture();  // a dialog pops up over the held button
    down.Advance(1000);
    EXPECT_EQ(down.told.size(), 3u);
    EXPECT_EQ(down.period, 0);
}

TEST(RoundButtonRules, PushDragRateIsTheDistanceInHalfWidths) {
    struct Case {
        int x, rate;
    };
    // Width 100, down at x 50: a step is 50 pixels, truncated toward zero, clamped to 3.
    for (const Case c : {Case{99, 0}, Case{100, 1}, Case{150, 2}, Case{5000, 3}, Case{1, 0}, Case{0, -1},
                         Case{-100, -3}, Case{-2000000000, -3}}) {
        FakeWindow w(PushDragButton);
        w.Down(50, 45);
        w.Move(c.x, 45, true);
        EXPECT_EQ(w.logic.GetIncrementRate(), c.rate) << c.x;
        EXPECT_EQ(w.period, RoundButtonLogic::TimerPeriod(c.rate)) << c.x;
    }
    FakeWindow w(PushDragButton);
    w.Move(50, 45);
    w.Down(50, 45);
    w.Move(-100, 45, true);  // one and a half widths to the left
    w.Advance(30);
    EXPECT_EQ(w.told, (decltype(w.told){{0, StepDown}, {10, StepDown}, {20, StepDown}, {30, StepDown}}));
    w.Move(50, 45, true);
    EXPECT_EQ(w.period, 0) << "back at the down point the steps stop";
    w.Up(50, 45);
    EXPECT_EQ(w.told.size(), 4u) << "and the release is no click";
    FakeWindow unpressed(PushDragButton);
    unpressed.Move(300, 45, true);
    EXPECT_EQ(unpressed.logic.GetIncrementRate(), 0) << "no drag without a press";
}

TEST(RoundButtonRules, ANewRateStopsTheOldTimerFirstAndOnlyAStartSteps) {
    RoundButtonLogic l;
    EXPECT_EQ(l.SetIncrementRate(7).Count(A::Notify, StepUp), 1u);
    EXPECT_TRUE(l.SetIncrementRate(3).empty());
    const ButtonActions a = l.SetIncrementRate(-1);
    EXPECT_EQ(a.Count(A::Notify), 0u);
    EXPECT_EQ(a[0], (A{A::KillTimer, 0}));
    EXPECT_EQ(a[1], (A{A::StartTimer, 500}));
    EXPECT_EQ(RoundButtonLogic::TimerPeriod(std::numeric_limits<int>::min()), 10);
}

TEST(RoundButtonLayout, IconPlacementShiftAndFit) {
    struct Case {
        int location, shape;
        bool left;
        LayoutRect expected;
    };
    // 200 x 60, border ratio 0.2: margins 20 and 6; a 20 x 16 icon; the arrow tab shifts by 30.
    const Case cases[] = {
        {IconNone, 0, false, {}},           {IconCentre, 0, false, {90, 22, 20, 16}},
        {IconLeft, 0, false, {20, 22, 20, 16}}, {IconRight, 0, false, {160, 22, 20, 16}},
        {IconTop, 0, false, {90, 6, 20, 16}},   {IconBottom, 0, false, {90, 38, 20, 16}},
        {IconOnBackground, 0, false, {90, 22, 20, 16}}, {7, 0, false, {}},
        {IconCentre, 7, false, {60, 22, 20, 16}}, {IconCentre, 7, true, {120, 22, 20, 16}},
        {IconLeft, 7, false, {0, 22, 20, 16}},  // shifted, but kept on the button
    };
    for (const Case& c : cases)
        EXPECT_EQ(PlaceIcon(c.location, 200, 60, 20, 16, 0.2, c.shape, c.left), c.expected) << c.location;
    EXPECT_EQ(PlaceIcon(IconCentre, 200, 60, 400, 100, 0.2, 0, false), (LayoutRect{20, 10, 160, 40})) << "shrunk";
    EXPECT_TRUE(PlaceIcon(IconCentre, 0, 0, 16, 16, 0.2, 0, false).empty());
    EXPECT_TRUE(PlaceIcon(IconCentre, 100, 100, 16, 16, 5.0, 0, false).empty()) << "margins leave no room";
    EXPECT_EQ(PlaceIcon(IconLeft, 100, 100, 16, 16, std::nan(""), 0, false).x, 0);
    EXPECT_EQ(PlaceIcon(IconCentre, 2000000000, 1000000000, 16, 16, 0.2, 7, false).x, 499999992) << "no overflow";
    EXPECT_EQ(PlaceCaption(IconLeft, 200, 60, LayoutRect{20, 22, 20, 16}), (LayoutRect{40, 0, 160, 60}));
    EXPECT_EQ(PlaceCaption(IconBottom, 200, 60, LayoutRect{90, 38, 20, 16}), (LayoutRect{0, 0, 200, 38}));
    EXPECT_EQ(PlaceCaption(IconCentre, 200, 60, LayoutRect{90, 22, 20, 16}), (LayoutRect{0, 0, 200, 60}));
}

TEST(RoundButtonLayout, CaptionColourMatricesArrowsAndScaling) {
    // 255 - luminance below 105 is a light face; red is the low byte of a GDI colour.
    for (auto [face, caption] : {std::pair{0xFFFFFFul, 0x020202ul}, {0x979797ul, 0x020202ul}, {0x959595ul, 0xFDFDFDul},
                                 {0x00FF00ul, 0xFDFDFDul}, {0x0096FFul, 0x020202ul}, {0xFF9600ul, 0xFDFDFDul}})
        EXPECT_EQ(TextColor(face), caption) << std::hex << face;
    EXPECT_EQ(ArgbToColorRef(0xC8102030u), 0x302010ul);
    EXPECT_EQ(ApplyIconMatrix(GrayIconMatrix(), 0xFFFF0000u), 0xFF4C4C4Cu);
    EXPECT_EQ(ApplyIconMatrix(DisabledIconMatrix(), 0xFF000000u), 0x80808080u) << "half-way to white, half opaque";

    struct Case {
        double scale;
        int size;
        double radius;
        int scaledSize;
        double scaledRadius;
    };
    for (const Case c : {Case{2.0, 16, 10, 22, 17.5}, Case{0.5, 15, 10, 12, 6.25}, Case{2.25, -5, 8, -8, 15.5}}) {
        tButtonStyle s;
        s.font.size = c.size;
        s.radius = c.radius;
        s.scaleText = 1;
        EXPECT_TRUE(ScaleStyle(s, c.scale));
        EXPECT_EQ(s.font.size, c.scaledSize) << c.scale;
        EXPECT_DOUBLE_EQ(s.radius, c.scaledRadius) << c.scale;
    }
    tButtonStyle fixed;
    const tButtonStyle original = fixed;
    EXPECT_TRUE(ScaleStyle(fixed, 3.0)) << "scaleText off: nothing scales";
    fixed.scaleText = 1;
    for (double bad : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()})
        EXPECT_FALSE(ScaleStyle(fixed, bad));
    fixed.scaleText = 0;
    EXPECT_EQ(fixed, original);
}

}  // namespace
