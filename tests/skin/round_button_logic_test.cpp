// Round button interaction: check rules, clicks on release, hover and capture, rocker and push-drag repeat timing.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "skin/round_button_logic.h"

namespace {

using namespace uc::skin;
using A = ButtonAction;

// Carries out the logic's actions as a window would, on a virtual time line, and records what the parent hears.
struct FakeWindow {
    RoundButtonLogic logic;
    bool capture = false;
    bool pushed = false;
    int timerPeriod = 0;  // 0: timer 1 not running
    int now = 0;          // ms
    int nextTick = 0;
    int repaints = 0;
    std::vector<std::pair<int, int>> notified;  // (time, click type)

    explicit FakeWindow(ButtonType type, int w = 100, int h = 90) {
        logic.SetType(type);
        logic.SetSize(w, h);
    }
    void Run(const ButtonActions& actions) {
        for (const A& a : actions) {
            switch (a.kind) {
            case A::Notify: notified.emplace_back(now, a.value); break;
            case A::TakeCapture: capture = true; break;
            case A::ReleaseCapture:
                if (capture) {
                    capture = false;
                    Run(logic.CaptureChanged(true));  // as WM_CAPTURECHANGED arrives during ReleaseCapture
                }
                break;
            case A::SetPushed: pushed = a.value != 0; break;
            case A::StartTimer:
                timerPeriod = a.value;
                nextTick = now + a.value;
                break;
            case A::KillTimer: timerPeriod = 0; break;
            case A::Repaint: ++repaints; break;
            }
        }
    }
    bool Inside(int x, int y) const { return x >= 0 && y >= 0 && x < logic.Width() && y < logic.Height(); }
    void Move(int x, int y, bool held) { Run(logic.MouseMove(x, y, Inside(x, y), held)); }
    void Down(int x, int y) { Run(logic.LButtonDown(x, y, Inside(x, y))); }
    void Up(int x, int y) { Run(logic.LButtonUp(x, y, Inside(x, y))); }
    void ClickAt(int x, int y) {
        Move(x, y, false);
        Down(x, y);
        Up(x, y);
    }
    // Lets time pass, firing timer 1 on its schedule.
    void Advance(int ms) {
        const int end = now + ms;
        while (timerPeriod && nextTick <= end) {
            now = nextTick;
            nextTick += timerPeriod;
            Run(logic.Timer(capture));
        }
        now = end;
    }
    std::vector<int> StepTimes() const {
        std::vector<int> t;
        for (auto [time, click] : notified)
            if (click != Click) t.push_back(time);
        return t;
    }
};

TEST(RoundButtonLogic, KindsNamesAndCheckAfterRelease) {
    struct Case {
        ButtonType type;
        const wchar_t* name;
        bool fromFalse, fromTrue;
    };
    const Case cases[] = {
        {RadioButton, L"Radio Button", true, true},           {CheckButton, L"Check Button", true, false},
        {PushButton, L"Push Button", false, false},           {RadioPushButton, L"Radio Push Button", true, false},
        {PushDragButton, L"Push Drag Button", false, false},  {RockerButton, L"Rocker Button", false, true},
        {CheckStateButton, L"Check State Button", false, true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(RoundButtonLogic::TypeName(c.type), c.name);
        EXPECT_EQ(RoundButtonLogic::CheckAfterRelease(c.type, false), c.fromFalse) << c.name;
        EXPECT_EQ(RoundButtonLogic::CheckAfterRelease(c.type, true), c.fromTrue) << c.name;
        // The same through a real release, inside and outside the button.
        for (bool inside : {true, false}) {
            FakeWindow w(c.type);
            w.logic.SetCheck(true);
            w.Down(50, 45);
            w.Up(inside ? 50 : 500, 45);
            EXPECT_EQ(w.logic.GetCheck(), c.fromTrue) << c.name;
        }
    }
    EXPECT_TRUE(RoundButtonLogic::TypeName(7).empty());
    EXPECT_TRUE(RoundButtonLogic::TypeName(-1).empty());
    EXPECT_EQ(RoundButtonLogic().GetType(), RadioButton) << "the default kind is the radio kind";
    EXPECT_EQ(RoundButtonLogic().GetRadioGroup(), -1);
}

TEST(RoundButtonLogic, ClickIsNotifiedOnReleaseInsideAndForRadiosOutside) {
    for (int t = 0; t < kButtonTypeCount; ++t) {
        const auto type = static_cast<ButtonType>(t);
        if (type == RockerButton) continue;  // its middle third is covered below
        FakeWindow in(type);
        in.ClickAt(50, 45);
        ASSERT_EQ(in.notified.size(), 1u) << RoundButtonLogic::TypeName(t);
        EXPECT_EQ(in.notified[0].second, Click);
        EXPECT_FALSE(in.capture) << "capture released after the click";
        EXPECT_FALSE(in.pushed);

        FakeWindow out(type);
        out.Move(50, 45, false);
        out.Down(50, 45);
        out.Move(50, 300, true);  // dragged off below with the button held: the capture keeps the messages coming
        out.Up(50, 300);
        const bool radio = type == RadioButton || type == RadioPushButton;
        EXPECT_EQ(out.notified.size(), radio ? 1u : 0u) << RoundButtonLogic::TypeName(t);
        EXPECT_FALSE(out.capture);
    }
    FakeWindow rocker(RockerButton);
    rocker.ClickAt(50, 45);
    ASSERT_EQ(rocker.notified.size(), 1u) << "the middle third clicks";
    EXPECT_EQ(rocker.notified[0].second, Click);
    EXPECT_EQ(rocker.timerPeriod, 0);
}

TEST(RoundButtonLogic, ReleaseInsideWithoutHoverDoesNotClick) {
    // The press arrived without the pointer having entered first, and the capture went elsewhere meanwhile.
    FakeWindow w(PushButton);
    w.Down(50, 45);
    EXPECT_TRUE(w.capture);
    w.Run(w.logic.CaptureChanged(true));
    w.capture = false;
    w.Up(50, 45);
    EXPECT_TRUE(w.notified.empty());
}

TEST(RoundButtonLogic, HoverTakesAndReleasesTheCapture) {
    FakeWindow w(PushButton);
    w.Move(10, 10, false);
    EXPECT_TRUE(w.logic.GetHover());
    EXPECT_TRUE(w.capture);
    const int repaints = w.repaints;
    w.Move(20, 20, false);
    EXPECT_EQ(w.repaints, repaints) << "moving inside changes nothing";
    w.Down(20, 20);
    EXPECT_TRUE(w.pushed);
    w.Move(-5, 20, false);  // left the button without the left button (e.g. released over another window)
    EXPECT_FALSE(w.logic.GetHover());
    EXPECT_FALSE(w.capture);
    EXPECT_FALSE(w.pushed) << "the pushed look ends when the pointer leaves";
    EXPECT_TRUE(w.logic.CaptureChanged(false).empty()) << "taking the capture itself is no loss";
}

TEST(RoundButtonLogic, RockerThirdsAndTheirSteps) {
    struct Case {
        int y;
        int rate;
    };
    // H = 90: thirds at 30 and 60.
    for (const Case c : {Case{0, 1}, Case{29, 1}, Case{30, 0}, Case{60, 0}, Case{61, -1}, Case{89, -1}}) {
        FakeWindow w(RockerButton);
        w.Down(50, c.y);
        EXPECT_EQ(w.logic.GetIncrementRate(), c.rate) << "y " << c.y;
        EXPECT_EQ(w.timerPeriod, c.rate ? 500 : 0);
        ASSERT_EQ(w.notified.size(), c.rate ? 1u : 0u) << "the first step is sent at once";
        if (c.rate) {
            EXPECT_EQ(w.notified[0].second, c.rate > 0 ? StepUp : StepDown);
        }
        EXPECT_TRUE(w.pushed);
    }
}

TEST(RoundButtonLogic, HeldRockerAcceleratesOnItsSchedule) {
    FakeWindow w(RockerButton);
    w.Move(50, 10, false);
    w.Down(50, 10);
    w.Advance(1050);
    // At once; 500 ms; then every 100 ms; after five ticks at 100 ms every 10 ms.
    const std::vector<int> expected = {0, 500, 600, 700, 800, 900, 1000, 1010, 1020, 1030, 1040, 1050};
    EXPECT_EQ(w.StepTimes(), expected);
    EXPECT_EQ(w.logic.GetIncrementRate(), 3);
    for (auto [time, click] : w.notified) EXPECT_EQ(click, StepUp);

    // Release: no click (the steps replaced it), the timer stops at its next tick.
    w.Up(50, 10);
    EXPECT_EQ(w.StepTimes().size(), expected.size());
    EXPECT_EQ(w.notified.size(), expected.size());
    EXPECT_EQ(w.logic.GetIncrementRate(), 0);
    w.Advance(10);
    EXPECT_EQ(w.timerPeriod, 0);
    EXPECT_EQ(w.notified.size(), expected.size());
}

TEST(RoundButtonLogic, RockerStepsDownAndStopsWhenTheCaptureIsLost) {
    FakeWindow w(RockerButton);
    w.Down(50, 80);
    w.Advance(600);
    EXPECT_EQ(w.StepTimes(), (std::vector<int>{0, 500, 600}));
    for (auto [time, click] : w.notified) EXPECT_EQ(click, StepDown);
    EXPECT_EQ(w.logic.GetIncrementRate(), -2);

    // Another window takes the capture (a dialog pops up): the steps stop at the next tick.
    w.Run(w.logic.CaptureChanged(true));
    w.capture = false;
    w.Advance(1000);
    EXPECT_EQ(w.StepTimes().size(), 3u);
    EXPECT_EQ(w.timerPeriod, 0);
}

TEST(RoundButtonLogic, TimerWithoutTheCaptureStops) {
    FakeWindow w(RockerButton);
    w.Down(50, 5);
    w.capture = false;  // lost without notice
    w.Advance(500);
    EXPECT_EQ(w.StepTimes().size(), 1u);
    EXPECT_EQ(w.timerPeriod, 0);
    EXPECT_EQ(w.logic.GetIncrementRate(), 0);
}

TEST(RoundButtonLogic, PushDragRateFollowsTheHorizontalDistance) {
    struct Case {
        int x;
        int rate;
    };
    // Width 100: a step is 50 pixels from the down point at x 50.
    const Case cases[] = {{50, 0}, {99, 0}, {100, 1}, {149, 1}, {150, 2}, {200, 3}, {5000, 3},
                          {1, 0},  {0, -1}, {-50, -2}, {-100, -3}, {-2000000000, -3}};
    for (const Case c : cases) {
        FakeWindow w(PushDragButton);
        w.Down(50, 45);
        w.Move(c.x, 45, true);
        EXPECT_EQ(w.logic.GetIncrementRate(), c.rate) << "x " << c.x;
        EXPECT_EQ(w.timerPeriod, RoundButtonLogic::TimerPeriod(c.rate));
    }

    // One and a half widths to the left: the fastest rate, stepping down; back to the down point: no steps.
    FakeWindow w(PushDragButton);
    w.Move(50, 45, false);
    w.Down(50, 45);
    w.Move(-100, 45, true);
    EXPECT_EQ(w.logic.GetIncrementRate(), -3);
    w.Advance(30);
    EXPECT_EQ(w.StepTimes(), (std::vector<int>{0, 10, 20, 30}));
    for (auto [time, click] : w.notified) EXPECT_EQ(click, StepDown);
    w.Move(50, 45, true);
    EXPECT_EQ(w.logic.GetIncrementRate(), 0);
    EXPECT_EQ(w.timerPeriod, 0);
    w.Advance(500);
    w.Up(50, 45);
    EXPECT_EQ(w.notified.size(), 4u) << "no further steps and no click after dragging";
    EXPECT_FALSE(w.logic.GetCheck());
}

TEST(RoundButtonLogic, PushDragNeedsAPressAndAWidth) {
    FakeWindow w(PushDragButton, 1, 20);  // step at least one pixel
    w.Move(300, 10, true);
    EXPECT_EQ(w.logic.GetIncrementRate(), 0) << "no down point: no drag";
    w.Down(0, 10);
    w.Move(2, 10, true);
    EXPECT_EQ(w.logic.GetIncrementRate(), 2);
    FakeWindow push(PushButton);
    push.Down(50, 45);
    push.Move(400, 45, true);
    EXPECT_EQ(push.logic.GetIncrementRate(), 0) << "only the push-drag kind drags";
}

TEST(RoundButtonLogic, SetIncrementRateClampsRestartsAndNotifiesOnlyOnStart) {
    RoundButtonLogic l;
    ButtonActions a = l.SetIncrementRate(7);
    EXPECT_EQ(l.GetIncrementRate(), 3);
    EXPECT_EQ(a.Count(A::Notify, StepUp), 1u);
    EXPECT_EQ(a.Count(A::StartTimer, 10), 1u);
    a = l.SetIncrementRate(3);
    EXPECT_TRUE(a.empty()) << "same rate: nothing";
    a = l.SetIncrementRate(-1);
    EXPECT_EQ(a.Count(A::Notify), 0u) << "a change of rate is not a start";
    ASSERT_GE(a.size(), 2u);
    EXPECT_EQ(a[0], (A{A::KillTimer, 0})) << "the old timer goes before the new one starts";
    EXPECT_EQ(a[1], (A{A::StartTimer, 500}));
    a = l.SetIncrementRate(-9);
    EXPECT_EQ(l.GetIncrementRate(), -3);
    a = l.SetIncrementRate(0);
    EXPECT_EQ(a.Count(A::StartTimer), 0u);
    EXPECT_EQ(a.Count(A::KillTimer), 1u);
    EXPECT_EQ(a.Count(A::Notify), 0u);
    for (int r = -4; r <= 4; ++r)
        EXPECT_EQ(RoundButtonLogic::TimerPeriod(r), r == 0 ? 0 : (std::abs(r) == 1 ? 500 : (std::abs(r) == 2 ? 100 : 10)))
            << r;
}

TEST(RoundButtonLogic, FaceStatesAndGray) {
    EXPECT_EQ(RoundButtonLogic::FaceStateFor(true, true, true), 1);
    EXPECT_EQ(RoundButtonLogic::FaceStateFor(false, true, true), 3);
    EXPECT_EQ(RoundButtonLogic::FaceStateFor(false, false, true), 2);
    EXPECT_EQ(RoundButtonLogic::FaceStateFor(false, false, false), 0);
    RoundButtonLogic l;
    l.SetFaceState(3);
    EXPECT_EQ(l.PaintState(), 3);
    l.SetGray(true);
    EXPECT_EQ(l.PaintState(), 1) << "a gray button paints the disabled slot";
}

}  // namespace
