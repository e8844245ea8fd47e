// CRoundButton2 as a window under Wine: WM_COMMAND to the parent, repeat steps on timer 1, capture, a parent that
// destroys the button, bad input, a screenshot per kind against its style's face, and GDI/USER/handle counts.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
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
using B = CRoundButton2;

namespace {

constexpr std::uint32_t kParentRgb = 0x00C0FF;
constexpr int kW = 160, kH = 90;  // rocker thirds at 30 and 60, drag step 80

// An application window (no framework) off the screen, where pointers moved by other programs never reach it;
// it records the WM_COMMANDs it gets.
struct Parent {
    HWND hwnd = nullptr;
    std::vector<std::pair<WPARAM, HWND>> commands;
    std::function<void(WPARAM)> onCommand;

    static LRESULT CALLBACK Proc(HWND h, UINT msg, WPARAM wp, LPARAM lp) {
        auto* self = reinterpret_cast<Parent*>(::GetWindowLongPtrW(h, GWLP_USERDATA));
        if (msg != WM_COMMAND || !self) return ::DefWindowProcW(h, msg, wp, lp);
        self->commands.emplace_back(wp, reinterpret_cast<HWND>(lp));
        if (self->onCommand) self->onCommand(wp);
        return 0;
    }
    Parent() {
        WNDCLASSW wc{};
        wc.lpfnWndProc = Proc;
        wc.lpszClassName = L"uc.test.RoundButtonParent";
        ::RegisterClassW(&wc);
        hwnd = ::CreateWindowExW(WS_EX_TOOLWINDOW, wc.lpszClassName, L"", WS_POPUP | WS_VISIBLE, -3000, -3000, 400,
                                 300, nullptr, nullptr, nullptr, nullptr);
        ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~Parent() { ::DestroyWindow(hwnd); }
    std::vector<int> Clicks() const {
        std::vector<int> out;
        for (auto [wp, from] : commands) out.push_back(static_cast<int>(wp));
        return out;
    }
};

void Pump() {
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageW(&msg);
}

void Post(const B& b, UINT msg, int x, int y, WPARAM keys = 0) {
    ::PostMessageW(b.GetHwnd(), msg, keys, MAKELPARAM(x, y));
    Pump();
}
void Press(const B& b, int x, int y) {
    Post(b, WM_MOUSEMOVE, x, y);
    Post(b, WM_LBUTTONDOWN, x, y, MK_LBUTTON);
}
void Click(const B& b) {
    Press(b, kW / 2, kH / 2);
    Post(b, WM_LBUTTONUP, kW / 2, kH / 2);
}

// The button as it paints itself (WM_PRINTCLIENT becomes its owner draw) over the parent's colour.
void Capture(const B& b, DibCanvas& shot) {
    shot.Fill(kParentRgb);
    ::SendMessageW(b.GetHwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(shot.dc()), PRF_CLIENT);
}

class RoundButtonWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::test::EnsureGdiplus();
        utilsExam::m_consoleType = 0;
        utilsExam::SetLayoutLeft(false);
        zelLogger::Instance().ClearEntries();
        style.brushType = tButtonStyle::BrushSolid;  // solid, opaque slots that are easy to tell apart
        style.radius = 30;
        style.borderRatio = 0.1;
        style.shadowText = 0;
        const std::uint32_t faces[tButtonStyle::kSlots] = {0xFF2050A0, 0xFF808080, 0xFF20A050, 0xFFA03020, 0};
        for (int i = 0; i < tButtonStyle::kSlots; ++i) style.colours[i].facePrimary = style.colours[i].border = faces[i];
        style.background = 0xFF000000 | kParentRgb;
    }
    std::unique_ptr<B> Make(B::ButtonType type, int w = kW, int h = kH) {
        auto b = std::make_unique<B>();
        EXPECT_TRUE(b->Create(L"Go", WS_VISIBLE, RECT{20, 20, 20 + w, 20 + h}, parent.hwnd, 100));
        b->LoadStyle(&style);
        b->SetType(type);
        Pump();
        return b;
    }
    tButtonStyle style;
    Parent parent;
};

TEST_F(RoundButtonWindowTest, TheParentHearsTheClickTypeWithTheHandle) {
    auto push = Make(B::PushButton);
    Click(*push);
    ASSERT_EQ(parent.commands.size(), 1u);
    EXPECT_EQ(parent.commands[0], std::make_pair(WPARAM{0}, push->GetHwnd())) << "the type, not the control id";
    EXPECT_EQ(::GetCapture(), nullptr);
    EXPECT_NE(::GetFocus(), push->GetHwnd()) << "the button never takes the focus";
    EXPECT_EQ(::SendMessageW(push->GetHwnd(), BM_GETSTATE, 0, 0) & BST_PUSHED, 0);
    // Released off the button: only the radio kinds still click; a double click counts as a second press.
    auto radio = Make(B::RadioButton);
    for (B* b : {push.get(), radio.get()}) {
        Press(*b, 10, 10);
        Post(*b, WM_MOUSEMOVE, 10, kH + 40, MK_LBUTTON);
        Post(*b, WM_LBUTTONUP, 10, kH + 40);
    }
    EXPECT_EQ(parent.commands.back().second, radio->GetHwnd());
    EXPECT_EQ(parent.commands.size(), 2u);
    auto check = Make(B::CheckButton);
    Click(*check);
    Post(*check, WM_LBUTTONDBLCLK, 10, 10, MK_LBUTTON);
    Post(*check, WM_LBUTTONUP, 10, 10);
    EXPECT_EQ(parent.commands.size(), 4u);
    EXPECT_FALSE(check->GetCheck()) << "toggled twice";
}

TEST_F(RoundButtonWindowTest, RepeatStepsRunOnTimerOneAndStopWhenTheCaptureGoes) {
    uc::ui::ManualTimers timers;  // timer 1 driven by hand; the schedule itself is checked natively
    uc::ui::ScopedTimerService useTimers(timers);
    auto rocker = Make(B::RockerButton);
    Press(*rocker, kW / 2, 10);
    timers.Advance(600);
    EXPECT_EQ(parent.Clicks(), std::vector<int>(3, 1)) << "at once, at 500 ms, then every 100 ms";
    Post(*rocker, WM_LBUTTONUP, kW / 2, 10);
    timers.Advance(100);
    EXPECT_FALSE(timers.Running(rocker->GetHwnd(), 1));
    EXPECT_EQ(parent.commands.size(), 3u) << "no click after steps";

    auto drag = Make(B::PushDragButton);
    Press(*drag, 80, 45);
    Post(*drag, WM_MOUSEMOVE, 80 - 240, 45, MK_LBUTTON);  // one and a half widths to the left
    timers.Advance(20);
    EXPECT_EQ(parent.Clicks(), (std::vector<int>{1, 1, 1, 2, 2, 2}));
    ::SetCapture(parent.hwnd);  // another window takes the capture
    Pump();
    timers.Advance(20);
    EXPECT_FALSE(timers.Running(drag->GetHwnd(), 1));
    EXPECT_EQ(parent.commands.size(), 6u);
    ::ReleaseCapture();
}

TEST_F(RoundButtonWindowTest, RealWindowTimerDeliversSteps) {
    auto drag = Make(B::PushDragButton);
    Press(*drag, 80, 45);
    Post(*drag, WM_MOUSEMOVE, 300, 45, MK_LBUTTON);  // fastest: USER32's timer 1 at 10 ms
    for (const ULONGLONG end = ::GetTickCount64() + 10000; parent.commands.size() < 4 && ::GetTickCount64() < end;) {
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);  // woken by the timer's message
        Pump();
    }
    EXPECT_GE(parent.commands.size(), 4u);
}

TEST_F(RoundButtonWindowTest, AParentMayDestroyOrDeleteTheButtonWhileNotified) {
    auto push = Make(B::PushButton);
    parent.onCommand = [&](WPARAM) { push->DestroyWindow(); };
    Click(*push);
    EXPECT_EQ(push->GetHwnd(), nullptr);
    uc::ui::ManualTimers timers;
    uc::ui::ScopedTimerService useTimers(timers);
    auto rocker = Make(B::RockerButton);
    const HWND h = rocker->GetHwnd();
    parent.onCommand = [&](WPARAM) { rocker.reset(); };  // deleted from inside its own press
    Press(*rocker, kW / 2, 5);
    EXPECT_FALSE(::IsWindow(h));
    EXPECT_FALSE(timers.Running(h, 1));
}

TEST_F(RoundButtonWindowTest, UnknownStyleMissingIconAndDegenerateSizes) {
    uc::test::TempDir dir;
    dir.write(L"ButtonStyles.xml", "<Styles><style id=\"0\" name=\"Base\"><shape shape=\"6\"/></style>"
                                   "<style id=\"1\" name=\"Other\"><shape shape=\"5\"/></style></Styles>");
    ASSERT_TRUE(StyleRepository::GetInstance()->LoadFile(dir.file(L"ButtonStyles.xml")));
    auto b = Make(B::PushButton);
    EXPECT_TRUE(b->LoadStyle(std::wstring(L"Other")));
    EXPECT_EQ(b->GetButtonStyle()->shape, 5);
    EXPECT_FALSE(b->LoadStyle(std::wstring(L"NoSuchStyle")));
    EXPECT_EQ(b->GetButtonStyle()->name, L"Base") << "the default style, id 0";
    EXPECT_EQ(zelLogger::Instance().Count(L"Round button style \"NoSuchStyle\" not found"), 1u);
    EXPECT_FALSE(b->LoadStyle(static_cast<const tButtonStyle*>(nullptr)));
    StyleRepository::DestroyInstance();
    EXPECT_EQ(b->SetIcon(dir.file(L"missing.png"), B::IconLeft), 0);
    EXPECT_EQ(zelLogger::Instance().Count(L"missing.png\" could not be loaded"), 1u);
    Click(*b);
    EXPECT_EQ(parent.commands.size(), 1u) << "still a working button";

    DibCanvas shot(64, 64);
    auto zero = Make(B::RadioButton, 0, 0);
    Capture(*zero, shot);
    EXPECT_EQ(shot.Count(kParentRgb, 0), 64 * 64) << "nothing painted";
    Post(*zero, WM_LBUTTONDOWN, 5, 5, MK_LBUTTON);
    Post(*zero, WM_LBUTTONUP, 5, 5);
    EXPECT_EQ(parent.commands.size(), 2u) << "a radio released outside itself";
    style.borderRatio = 0.01;  // keeps the border off the pixel looked at
    auto huge = Make(B::PushButton, 30000, 30000);
    Capture(*huge, shot);
    EXPECT_EQ(zelLogger::Instance().Count(L"painted as 2048x2048"), 1u);
    EXPECT_EQ(shot.Pixel(32, 32), 0x2050A0u);
}

TEST_F(RoundButtonWindowTest, EveryKindLooksAsItsStyleStateSays) {
    uc::ui::ManualTimers timers;
    uc::ui::ScopedTimerService useTimers(timers);
    struct Case {
        B::ButtonType type;
        int slot;                           // the colour slot its state shows
        std::function<void(B&)> bringAbout;
    };
    auto hold = [](int y) { return [y](B& b) { Press(b, kW / 2, y); }; };
    const Case cases[] = {
        {B::RadioButton, 2, Click},
        {B::CheckButton, 2, Click},
        {B::PushButton, 0, Click},
        {B::RadioPushButton, 3, hold(kH / 2)},
        {B::PushDragButton, 3, [](B& b) { Press(b, kW / 2, kH / 2), Post(b, WM_MOUSEMOVE, 0, kH / 2, MK_LBUTTON); }},
        {B::RockerButton, 3, hold(5)},
        {B::CheckStateButton, 1, [](B& b) { ::EnableWindow(b.GetHwnd(), FALSE); }},
    };
    for (const Case& c : cases) {
        const std::wstring name = B::m_saTypes[c.type];
        auto b = Make(c.type);
        c.bringAbout(*b);
        DibCanvas shot(kW, kH);
        Capture(*b, shot);
        EXPECT_EQ(b->GetFaceState(), c.slot) << name.c_str();
        // Reference: the style's face for that slot alone. Fully covered pixels must show the face colour,
        // uncovered ones the parent; anti-aliased edges, the caption and the arrows are looked at separately.
        Gdiplus::Bitmap face(kW, kH, PixelFormat32bppARGB);
        {
            Gdiplus::Graphics g(&face);
            g.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
            style.DrawFace(g, Gdiplus::Rect(0, 0, kW, kH), c.slot);
        }
        std::vector<RECT> skip = {{kW / 2 - 30, kH / 2 - 14, kW / 2 + 30, kH / 2 + 14}};
        for (const auto& a : uc::skin::PlanArrows(c.type, kW, kH, b->GetIncrementRate())) {
            RECT box{kW, kH, 0, 0};
            for (auto [x, y] : a.points)
                box = {std::min<LONG>(box.left, x - 2), std::min<LONG>(box.top, y - 2), std::max<LONG>(box.right, x + 3),
                       std::max<LONG>(box.bottom, y + 3)};
            skip.push_back(box);
            const int cx = (a.points[0].first + a.points[1].first + a.points[2].first) / 3;
            const int cy = (a.points[0].second + a.points[1].second + a.points[2].second) / 3;
            EXPECT_GT(uc::test::ColourDistance(shot.Pixel(cx, cy), style.colours[c.slot].facePrimary & 0xFFFFFF), 30)
                << name.c_str() << ": an arrow is drawn";
        }
        int compared = 0, wrong = 0;
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x) {
                const std::uint32_t ref = uc::test::PixelAt(face, x, y), alpha = ref >> 24;
                bool skipped = alpha != 0 && alpha != 255;
                for (const RECT& r : skip) skipped |= x >= r.left && x < r.right && y >= r.top && y < r.bottom;
                if (skipped) continue;
                ++compared;
                wrong += uc::test::ColourDistance(shot.Pixel(x, y), alpha ? ref & 0xFFFFFF : kParentRgb) > 6;
            }
        EXPECT_GT(compared, kW * kH * 3 / 4) << name.c_str();
        EXPECT_EQ(wrong, 0) << name.c_str();
        const std::uint32_t caption = c.slot == 1 ? style.colours[1].textColour & 0xFFFFFF : 0xFDFDFD;
        EXPECT_GT(shot.Count(caption, 8, kW / 2 - 30, kH / 2 - 14, kW / 2 + 30, kH / 2 + 14), 10) << name.c_str();
        Post(*b, WM_LBUTTONUP, kW / 2, kH / 2);
    }
}

TEST_F(RoundButtonWindowTest, TenThousandPaintsLeaveGdiUserAndHandleCountsUnchanged) {
    auto b = Make(B::RockerButton, 48, 30);  // small: the counts matter, not the area
    auto counts = [] {
        DWORD handles = 0;
        ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
        return std::vector<DWORD>{::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS),
                                  ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS), handles};
    };
    DibCanvas target(48, 30);
    auto paint = [&](int i) {
        // A new caption every 50th paint, so painting as well as copying kept images is exercised; mostly into
        // a memory DC through the owner draw, every 100th on screen, released and held down in turns.
        if (i % 50 == 0) ::SetWindowTextW(b->GetHwnd(), std::to_wstring(i).c_str());
        if (i % 100 == 0) {
            ::SendMessageW(b->GetHwnd(), BM_SETSTATE, (i / 100) % 2, 0);
            ::RedrawWindow(b->GetHwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        }
        Capture(*b, target);
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
