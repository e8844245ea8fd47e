// CRoundButton2 as a window: mouse input, WM_COMMAND to the parent, check state, repeat steps on timer 1, capture,
// a parent that destroys the button, bad input, screenshots of every kind, and GDI/USER/handle counts.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "dib_canvas.h"
#include "gdiplus_session.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "skin/round_button_layout.h"
#include "skin/style_repository.h"
#include "skin/win/round_button.h"
#include "support/temp_dir.h"
#include "ui/win/timers.h"

using uc::test::DibCanvas;

namespace {

constexpr std::uint32_t kParentRgb = 0x00C0FF;  // the parent's background, 0xRRGGBB
constexpr int kW = 160, kH = 90;                // the button: thirds at 30 and 60, drag step 80

// A plain application window that records the WM_COMMANDs it receives and paints a known background. It sits
// off the screen, so a pointer moved by other programs on the same display never reaches it.
class Parent {
public:
    Parent() {
        static const bool registered = [] {
            WNDCLASSW wc{};
            wc.lpfnWndProc = Proc;
            wc.hInstance = ::GetModuleHandleW(nullptr);
            wc.lpszClassName = L"uc.test.RoundButtonParent";
            return ::RegisterClassW(&wc) != 0;
        }();
        (void)registered;
        hwnd = ::CreateWindowExW(WS_EX_TOOLWINDOW, L"uc.test.RoundButtonParent", L"parent", WS_POPUP | WS_VISIBLE,
                                 -3000, -3000, 400, 300, nullptr, nullptr, ::GetModuleHandleW(nullptr), nullptr);
        ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~Parent() {
        if (::IsWindow(hwnd)) ::DestroyWindow(hwnd);
    }
    Parent(const Parent&) = delete;
    Parent& operator=(const Parent&) = delete;

    // Click types received from `button`, in order.
    std::vector<int> From(HWND button) const {
        std::vector<int> out;
        for (auto [wp, from] : commands)
            if (from == button) out.push_back(static_cast<int>(wp));
        return out;
    }

    HWND hwnd = nullptr;
    std::vector<std::pair<WPARAM, HWND>> commands;
    std::function<void(WPARAM, HWND)> onCommand;

private:
    static LRESULT CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
        auto* self = reinterpret_cast<Parent*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
        if (msg == WM_COMMAND && self) {
            self->commands.emplace_back(wp, reinterpret_cast<HWND>(lp));
            if (self->onCommand) self->onCommand(wp, reinterpret_cast<HWND>(lp));
            return 0;
        }
        if (msg == WM_ERASEBKGND) {
            RECT rc;
            ::GetClientRect(hwnd, &rc);
            uc::UniqueHBrush brush(::CreateSolidBrush(uc::skin::ArgbToColorRef(kParentRgb)));
            ::FillRect(reinterpret_cast<HDC>(wp), &rc, brush.get());
            return 1;
        }
        return ::DefWindowProcW(hwnd, msg, wp, lp);
    }
};

// Dispatches this thread's pending messages.
void Pump() {
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

// A style whose slots are solid, opaque and easy to tell apart.
tButtonStyle TestStyle() {
    tButtonStyle s;
    s.name = L"test";
    s.brushType = tButtonStyle::BrushSolid;
    s.solidBrush.fill = 1;
    s.radius = 30;
    s.borderRatio = 0.1;
    s.shadowText = 0;
    const std::uint32_t faces[tButtonStyle::kSlots] = {0xFF2050A0, 0xFF808080, 0xFF20A050, 0xFFA03020, 0xFF000000};
    for (int i = 0; i < tButtonStyle::kSlots; ++i) {
        s.colours[i].facePrimary = faces[i];
        s.colours[i].border = faces[i];
    }
    s.background = 0xFF000000 | kParentRgb;
    return s;
}

class RoundButtonWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::test::EnsureGdiplus();
        utilsExam::m_consoleType = 0;
        utilsExam::SetLayoutLeft(false);
        zelLogger::Instance().ClearEntries();
        style = TestStyle();
    }
    // A button of `type` on the parent, at (20,20), kW x kH.
    std::unique_ptr<CRoundButton2> Make(CRoundButton2::ButtonType type, const wchar_t* caption = L"Go", int w = kW,
                                        int h = kH) {
        auto b = std::make_unique<CRoundButton2>();
        EXPECT_TRUE(b->CreateButton(caption, RECT{20, 20, 20 + w, 20 + h}, parent.hwnd, 100));
        b->LoadStyle(&style);
        b->SetType(type);
        Pump();
        return b;
    }
    static void Post(const CRoundButton2& b, UINT msg, int x, int y, WPARAM keys = 0) {
        ::PostMessageW(b.GetHwnd(), msg, keys, MAKELPARAM(x, y));
        Pump();
    }
    static void Enter(const CRoundButton2& b, int x, int y) { Post(b, WM_MOUSEMOVE, x, y); }
    static void Down(const CRoundButton2& b, int x, int y) { Post(b, WM_LBUTTONDOWN, x, y, MK_LBUTTON); }
    static void Drag(const CRoundButton2& b, int x, int y) { Post(b, WM_MOUSEMOVE, x, y, MK_LBUTTON); }
    static void Up(const CRoundButton2& b, int x, int y) { Post(b, WM_LBUTTONUP, x, y); }
    static void Click(const CRoundButton2& b, int x = kW / 2, int y = kH / 2) {
        Enter(b, x, y);
        Down(b, x, y);
        Up(b, x, y);
    }

    tButtonStyle style;
    Parent parent;
};

TEST_F(RoundButtonWindowTest, ClicksReachTheParentWithTheClickTypeAndTheHandle) {
    struct Case {
        CRoundButton2::ButtonType type;
        bool checkAfter;      // from unchecked, after a click inside
        bool clickOutside;    // a release outside still notifies
    };
    const Case cases[] = {
        {CRoundButton2::RadioButton, true, true},       {CRoundButton2::CheckButton, true, false},
        {CRoundButton2::PushButton, false, false},      {CRoundButton2::RadioPushButton, true, true},
        {CRoundButton2::PushDragButton, false, false},  {CRoundButton2::RockerButton, false, false},
        {CRoundButton2::CheckStateButton, false, false},
    };
    for (const Case& c : cases) {
        const std::wstring name = CRoundButton2::m_saTypes[c.type];
        auto b = Make(c.type);
        parent.commands.clear();
        Click(*b);  // the middle of a rocker is its click area
        EXPECT_EQ(parent.From(b->GetHwnd()), std::vector<int>{0}) << name.c_str();
        ASSERT_EQ(parent.commands.size(), 1u);
        EXPECT_EQ(parent.commands[0].first, 0u) << "wParam is the click type, not the control id";
        EXPECT_EQ(b->GetCheck(), c.checkAfter) << name.c_str();
        EXPECT_NE(::GetCapture(), b->GetHwnd()) << "the capture is given back";
        EXPECT_NE(::GetFocus(), b->GetHwnd()) << "the button never takes the focus";
        EXPECT_EQ(::SendMessageW(b->GetHwnd(), BM_GETSTATE, 0, 0) & BST_PUSHED, 0) << "released look";

        parent.commands.clear();
        Enter(*b, kW / 2, kH / 2);
        Down(*b, kW / 2, kH / 2);
        Drag(*b, kW / 2, kH + 40);  // off the bottom, still held: the capture brings the messages
        Up(*b, kW / 2, kH + 40);
        EXPECT_EQ(parent.From(b->GetHwnd()).size(), c.clickOutside ? 1u : 0u) << name.c_str();
    }
}

TEST_F(RoundButtonWindowTest, RadioGroupMembersAreLeftToTheParent) {
    auto a = Make(CRoundButton2::RadioButton);
    auto b = Make(CRoundButton2::RadioButton);
    a->SetRadioGroup(4);
    b->SetRadioGroup(4);
    a->SetCheck(true);
    Click(*b);
    EXPECT_TRUE(b->GetCheck());
    EXPECT_TRUE(a->GetCheck()) << "the button unchecks no other member";
    // The parent's usual policy: uncheck the other members of the clicked button's group.
    std::vector<CRoundButton2*> all = {a.get(), b.get()};
    parent.onCommand = [&](WPARAM wp, HWND from) {
        for (CRoundButton2* other : all)
            if (wp == 0 && other->GetHwnd() != from && other->GetRadioGroup() == 4) other->SetCheck(false);
    };
    Click(*a);
    EXPECT_TRUE(a->GetCheck());
    EXPECT_FALSE(b->GetCheck());
    EXPECT_EQ(a->GetRadioGroup(), 4);
}

TEST_F(RoundButtonWindowTest, HeldRockerStepsOnTimerOneAndAccelerates) {
    uc::ui::ManualTimers timers;
    uc::ui::ScopedTimerService useTimers(timers);
    auto b = Make(CRoundButton2::RockerButton);
    const HWND h = b->GetHwnd();
    Enter(*b, kW / 2, 10);
    Down(*b, kW / 2, 10);
    EXPECT_EQ(parent.From(h), std::vector<int>{1}) << "one step up at once";
    EXPECT_EQ(timers.Period(h, 1), 500u);
    timers.Advance(499);
    EXPECT_EQ(parent.From(h).size(), 1u);
    timers.Advance(1);
    EXPECT_EQ(parent.From(h).size(), 2u);
    EXPECT_EQ(timers.Period(h, 1), 100u) << "from the first tick every 100 ms";
    timers.Advance(500);
    EXPECT_EQ(parent.From(h).size(), 7u);
    EXPECT_EQ(timers.Period(h, 1), 10u) << "after five ticks more every 10 ms";
    timers.Advance(100);
    EXPECT_EQ(parent.From(h).size(), 17u);
    for (int click : parent.From(h)) EXPECT_EQ(click, 1);

    Up(*b, kW / 2, 10);
    EXPECT_EQ(parent.From(h).size(), 17u) << "a release after steps is no click";
    timers.Advance(10);
    EXPECT_FALSE(timers.Running(h, 1)) << "the timer stops at its next tick";
    EXPECT_EQ(parent.From(h).size(), 17u);

    // The lower third steps down.
    parent.commands.clear();
    Enter(*b, kW / 2, 80);
    Down(*b, kW / 2, 80);
    timers.Advance(500);
    EXPECT_EQ(parent.From(h), (std::vector<int>{2, 2}));
    Up(*b, kW / 2, 80);
}

TEST_F(RoundButtonWindowTest, PushDragStepsFollowTheDragAndStopWhenTheCaptureGoes) {
    uc::ui::ManualTimers timers;
    uc::ui::ScopedTimerService useTimers(timers);
    auto b = Make(CRoundButton2::PushDragButton);
    const HWND h = b->GetHwnd();
    Enter(*b, 80, 45);
    Down(*b, 80, 45);
    Drag(*b, 80 + 240, 45);  // one and a half widths to the right
    EXPECT_EQ(b->GetIncrementRate(), 3);
    EXPECT_EQ(timers.Period(h, 1), 10u);
    timers.Advance(30);
    EXPECT_EQ(parent.From(h), (std::vector<int>{1, 1, 1, 1}));
    Drag(*b, 80 - 100, 45);
    EXPECT_EQ(b->GetIncrementRate(), -1);
    timers.Advance(500);
    EXPECT_EQ(parent.From(h).back(), 2);
    Drag(*b, 80, 45);
    EXPECT_EQ(b->GetIncrementRate(), 0);
    EXPECT_FALSE(timers.Running(h, 1));

    // Another window takes the capture while the button repeats: the steps stop at the next tick.
    Drag(*b, 200, 45);
    ASSERT_TRUE(timers.Running(h, 1));
    const std::size_t steps = parent.From(h).size();
    ::SetCapture(parent.hwnd);
    Pump();
    EXPECT_EQ(b->GetIncrementRate(), 0);
    EXPECT_FALSE(b->GetHover());
    timers.Advance(500);
    EXPECT_FALSE(timers.Running(h, 1));
    EXPECT_EQ(parent.From(h).size(), steps);
    ::ReleaseCapture();
}

TEST_F(RoundButtonWindowTest, RealWindowTimerDeliversTheRepeatSteps) {
    auto b = Make(CRoundButton2::PushDragButton);
    const HWND h = b->GetHwnd();
    Enter(*b, 80, 45);
    Down(*b, 80, 45);
    Drag(*b, 300, 45);  // fastest rate: USER32's timer 1 at 10 ms
    const ULONGLONG end = ::GetTickCount64() + 10000;
    while (parent.From(h).size() < 4 && ::GetTickCount64() < end) {
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);  // wakes on the timer's message
        Pump();
    }
    EXPECT_GE(parent.From(h).size(), 4u);
    Up(*b, 80, 45);
}

TEST_F(RoundButtonWindowTest, HoverTakesTheCaptureAndLeavingGivesItBack) {
    auto b = Make(CRoundButton2::PushButton);
    Enter(*b, 10, 10);
    EXPECT_TRUE(b->GetHover());
    EXPECT_EQ(::GetCapture(), b->GetHwnd());
    Enter(*b, kW + 5, 10);
    EXPECT_FALSE(b->GetHover());
    EXPECT_EQ(::GetCapture(), nullptr);

    // A double click counts as a second press.
    auto c = Make(CRoundButton2::CheckButton);
    Click(*c);
    Post(*c, WM_LBUTTONDBLCLK, 10, 10, MK_LBUTTON);
    Up(*c, 10, 10);
    EXPECT_EQ(parent.From(c->GetHwnd()), (std::vector<int>{0, 0}));
    EXPECT_FALSE(c->GetCheck()) << "toggled twice";
    MSG focus{c->GetHwnd(), WM_SETFOCUS, 0, 0, 0, {}};
    EXPECT_TRUE(c->PreTranslateMessage(focus));
    focus.message = WM_LBUTTONDOWN;
    EXPECT_FALSE(c->PreTranslateMessage(focus));
}

TEST_F(RoundButtonWindowTest, AParentMayDestroyOrDeleteTheButtonWhileNotified) {
    auto b = Make(CRoundButton2::PushButton);
    parent.onCommand = [&](WPARAM, HWND) { b->DestroyWindow(); };
    Click(*b);
    EXPECT_EQ(b->GetHwnd(), nullptr);
    EXPECT_EQ(::GetCapture(), nullptr);

    uc::ui::ManualTimers timers;
    uc::ui::ScopedTimerService useTimers(timers);
    auto r = Make(CRoundButton2::RockerButton);
    const HWND h = r->GetHwnd();
    parent.onCommand = [&](WPARAM wp, HWND) {
        if (wp == 1) r.reset();  // deletes the object from inside its own timer tick
    };
    Enter(*r, kW / 2, 5);
    Down(*r, kW / 2, 5);
    EXPECT_EQ(r, nullptr);
    EXPECT_FALSE(::IsWindow(h));
    EXPECT_FALSE(timers.Running(h, 1));
    timers.Advance(1000);
    EXPECT_EQ(parent.From(h).size(), 1u);
}

TEST_F(RoundButtonWindowTest, UnknownStyleMissingIconAndDegenerateSizes) {
    uc::test::TempDir dir;
    dir.write(L"ButtonStyles.xml",
              "<Styles><style id=\"0\" name=\"Base\"><shape shape=\"6\" radius=\"3.00\" borderRatio=\"0.10\"/></style>"
              "<style id=\"1\" name=\"Other\"><shape shape=\"5\" radius=\"3.00\" borderRatio=\"0.10\"/></style></Styles>");
    ASSERT_TRUE(StyleRepository::GetInstance()->LoadFile(dir.file(L"ButtonStyles.xml")));
    auto b = Make(CRoundButton2::PushButton);
    EXPECT_TRUE(b->LoadStyle(std::wstring(L"Other")));
    EXPECT_EQ(b->GetButtonStyle()->shape, 5);
    EXPECT_FALSE(b->LoadStyle(std::wstring(L"NoSuchStyle")));
    EXPECT_EQ(b->GetButtonStyle()->name, L"Base") << "the default style, id 0";
    EXPECT_EQ(zelLogger::Instance().Count(L"Round button style \"NoSuchStyle\" not found"), 1u);
    EXPECT_FALSE(b->LoadStyle(static_cast<const tButtonStyle*>(nullptr)));
    EXPECT_EQ(b->GetButtonStyle()->name, L"Base") << "a null style changes nothing";
    StyleRepository::DestroyInstance();

    EXPECT_EQ(b->SetIcon(dir.file(L"missing.png"), CRoundButton2::IconLeft), 0);
    EXPECT_EQ(zelLogger::Instance().Count(L"missing.png\" could not be loaded"), 1u);
    EXPECT_EQ(b->GetButtonStyle()->iconLocation, CRoundButton2::IconLeft);
    ::UpdateWindow(b->GetHwnd());
    Click(*b);
    EXPECT_EQ(parent.From(b->GetHwnd()).size(), 1u) << "still a working button";

    // A zero-size button paints nothing and still works; a huge one paints its top-left part.
    CRoundButton2 zero;
    ASSERT_TRUE(zero.CreateButton(L"zero", RECT{0, 0, 0, 0}, parent.hwnd, 101));
    zero.LoadStyle(&style);
    DibCanvas canvas(64, 64);
    canvas.Fill(kParentRgb);
    ::SendMessageW(zero.GetHwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(canvas.dc()), PRF_CLIENT);
    ::RedrawWindow(zero.GetHwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(canvas.Count(kParentRgb, 0), 64 * 64);
    zero.SetType(CRoundButton2::RadioButton);
    Post(zero, WM_LBUTTONDOWN, 5, 5, MK_LBUTTON);
    Post(zero, WM_LBUTTONUP, 5, 5);
    EXPECT_EQ(parent.From(zero.GetHwnd()), std::vector<int>{0}) << "a radio released outside itself";
    CRoundButton2 huge;
    ASSERT_TRUE(huge.Create(L"huge", 0, RECT{0, 0, 30000, 30000}, parent.hwnd, 102));
    style.borderRatio = 0.01;  // keeps the border away from the pixel looked at
    huge.LoadStyle(&style);
    ::SendMessageW(huge.GetHwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(canvas.dc()), PRF_CLIENT);
    EXPECT_EQ(zelLogger::Instance().Count(L"painted as 2048x2048"), 1u);
    EXPECT_EQ(canvas.Pixel(32, 32), style.colours[0].facePrimary & 0xFFFFFF);
}

// Captures the button as it paints itself (WM_PRINTCLIENT, which the button control turns into its owner draw)
// over the parent's background colour, so other windows on the display cannot spoil the picture.
void Capture(const CRoundButton2& b, DibCanvas& canvas) {
    canvas.Fill(kParentRgb);
    ::SendMessageW(b.GetHwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(canvas.dc()), PRF_CLIENT);
}

// Compares a capture with the style's face for `slot` painted on its own: wherever the face covers a pixel fully
// it must have the face's colour, wherever it leaves a pixel untouched the parent must show; anti-aliased edges
// and the areas in `skip` (caption, arrows) are not compared. Returns the number of pixels compared.
int CompareWithFace(const DibCanvas& shot, const tButtonStyle& s, int slot, const std::vector<RECT>& skip,
                    int& mismatches) {
    Gdiplus::Bitmap face(kW, kH, PixelFormat32bppARGB);
    {
        Gdiplus::Graphics g(&face);
        g.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
        g.Clear(Gdiplus::Color(0, 0, 0, 0));
        s.DrawFace(g, Gdiplus::Rect(0, 0, kW, kH), slot);
    }
    int compared = 0;
    mismatches = 0;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            bool skipped = false;
            for (const RECT& r : skip) skipped |= x >= r.left && x < r.right && y >= r.top && y < r.bottom;
            const std::uint32_t ref = uc::test::PixelAt(face, x, y);
            if (skipped || ((ref >> 24) != 0 && (ref >> 24) != 255)) continue;
            const std::uint32_t want = (ref >> 24) == 0 ? kParentRgb : (ref & 0xFFFFFF);
            ++compared;
            if (uc::test::ColourDistance(shot.Pixel(x, y), want) > 6) ++mismatches;
        }
    return compared;
}

TEST_F(RoundButtonWindowTest, EveryKindLooksAsItsStyleStateSays) {
    uc::ui::ManualTimers timers;
    uc::ui::ScopedTimerService useTimers(timers);
    struct Case {
        CRoundButton2::ButtonType type;
        int slot;  // colour slot the state shows
        std::function<void(CRoundButton2&)> bringIntoState;
    };
    const Case cases[] = {
        {CRoundButton2::RadioButton, 2, [](CRoundButton2& b) { Click(b); }},
        {CRoundButton2::CheckButton, 2, [](CRoundButton2& b) { Click(b); }},
        {CRoundButton2::PushButton, 0, [](CRoundButton2& b) { Click(b); }},
        {CRoundButton2::RadioPushButton, 3,
         [](CRoundButton2& b) {
             Enter(b, kW / 2, kH / 2);
             Down(b, kW / 2, kH / 2);  // held down
         }},
        {CRoundButton2::PushDragButton, 3,
         [](CRoundButton2& b) {
             Enter(b, kW / 2, kH / 2);
             Down(b, kW / 2, kH / 2);
             Drag(b, kW / 2 - kW, kH / 2);  // stepping down: the left arrow lights up
         }},
        {CRoundButton2::RockerButton, 3,
         [](CRoundButton2& b) {
             Enter(b, kW / 2, 5);
             Down(b, kW / 2, 5);
         }},
        {CRoundButton2::CheckStateButton, 1, [](CRoundButton2& b) { ::EnableWindow(b.GetHwnd(), FALSE); }},
    };
    for (const Case& c : cases) {
        const std::wstring name = CRoundButton2::m_saTypes[c.type];
        auto b = Make(c.type, L"Go");
        c.bringIntoState(*b);
        DibCanvas shot(kW, kH);
        Capture(*b, shot);
        EXPECT_EQ(b->GetFaceState(), c.slot) << name.c_str();

        // Caption in the middle, arrows where the layout puts them: looked at separately.
        std::vector<RECT> skip = {RECT{kW / 2 - 30, kH / 2 - 14, kW / 2 + 30, kH / 2 + 14}};
        const auto arrows = uc::skin::PlanArrows(c.type, kW, kH, b->GetIncrementRate());
        for (const auto& a : arrows) {
            RECT r{a.points[0].first, a.points[0].second, a.points[0].first + 1, a.points[0].second + 1};
            for (auto [x, y] : a.points) {
                r.left = std::min<LONG>(r.left, x - 2), r.top = std::min<LONG>(r.top, y - 2);
                r.right = std::max<LONG>(r.right, x + 3), r.bottom = std::max<LONG>(r.bottom, y + 3);
            }
            skip.push_back(r);
            // The active arrow is drawn in full caption colour, the idle one faintly: both differ from the face.
            const std::uint32_t face = style.colours[c.slot].facePrimary & 0xFFFFFF;
            EXPECT_LT(shot.Count(face, 6, r.left + 2, r.top + 2, r.right - 2, r.bottom - 2),
                      (r.right - r.left - 4) * (r.bottom - r.top - 4))
                << name.c_str() << ": an arrow is drawn";
        }
        int mismatches = 0;
        const int compared = CompareWithFace(shot, style, c.slot, skip, mismatches);
        EXPECT_GT(compared, kW * kH * 3 / 4) << name.c_str() << ": most of the button is compared";
        EXPECT_EQ(mismatches, 0) << name.c_str();
        // The caption is there, in the colour that contrasts with the face (the disabled text colour when disabled).
        const std::uint32_t caption = c.slot == 1 ? uc::test::RgbOfArgb(style.colours[1].textColour)
                                                  : uc::test::RgbOfColorRef(CRoundButton2::TextColor(
                                                        uc::skin::ArgbToColorRef(style.colours[c.slot].facePrimary)));
        EXPECT_GT(shot.Count(caption, 8, kW / 2 - 30, kH / 2 - 14, kW / 2 + 30, kH / 2 + 14), 10) << name.c_str();
        Up(*b, kW / 2, kH / 2);
    }
}

TEST_F(RoundButtonWindowTest, GrayAndIconOnBackground) {
    auto b = Make(CRoundButton2::PushButton, L"");
    b->SetGray(true);
    DibCanvas shot(kW, kH);
    Capture(*b, shot);
    int mismatches = 0;
    EXPECT_GT(CompareWithFace(shot, style, 1, {}, mismatches), kW * kH * 3 / 4);
    EXPECT_EQ(mismatches, 0) << "a gray button shows the disabled slot";
    EXPECT_EQ(b->GetFaceState(), 0) << "while its own state stays enabled";

    b->SetGray(false);
    b->GetButtonStyle()->iconLocation = CRoundButton2::IconOnBackground;
    b->GetButtonStyle()->background = 0x80336699;
    Capture(*b, shot);
    EXPECT_EQ(shot.Count(0x336699, 0), kW * kH) << "the background fills the whole button, opaque";
}

TEST_F(RoundButtonWindowTest, TenThousandPaintsLeaveGdiUserAndHandleCountsUnchanged) {
    auto b = Make(CRoundButton2::RockerButton, L"Go", 48, 30);  // small: the count is what matters, not the area
    auto counts = [] {
        DWORD handles = 0;
        ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
        return std::vector<DWORD>{::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS),
                                  ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS), handles};
    };
    DibCanvas target(48, 30);
    auto paint = [&](int i) {
        // Released and held down in turns of 100; every 50th paint a new caption, so painting (not only copying) is
        // exercised. Mostly into a memory DC (WM_PRINTCLIENT, through the same owner draw), every 100th on screen.
        if (i % 50 == 0) ::SetWindowTextW(b->GetHwnd(), (L"Step " + std::to_wstring(i)).c_str());
        if (i % 100 == 0) {
            ::SendMessageW(b->GetHwnd(), BM_SETSTATE, (i / 100) % 2, 0);
            ::RedrawWindow(b->GetHwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        }
        ::SendMessageW(b->GetHwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(target.dc()), PRF_CLIENT);
    };
    for (int i = 0; i < 100; ++i) paint(i);  // fonts, images and GDI+ caches settle
    Pump();
    const std::vector<DWORD> before = counts();
    for (int i = 0; i < 10000; ++i) paint(i);
    Pump();
    EXPECT_EQ(counts(), before) << "GDI objects, USER objects, handles";
    EXPECT_GT(b->Painter().PaintsDrawn(), 200u);
}

}  // namespace
