// uc::ui::Window: binding, subclassing and its undoing, dispatch, exceptions, timers, capture, owner-draw reflection.
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "platform/logger.h"
#include "ui/win/cursor.h"
#include "ui/win/gdi.h"
#include "ui/win/owner_draw_button.h"
#include "ui/win/timers.h"
#include "ui/win/ui_thread.h"
#include "ui/win/window.h"
#include "ui_test_support.h"

using namespace uc::ui;

namespace {

// Records what reaches its handlers.
class Probe : public Window {
public:
    std::vector<UINT> created;
    std::vector<UINT_PTR> ticks;
    std::vector<POINT> downs;
    int captureLost = 0;
    int finals = 0;
    bool throwOnTimer = false;
    bool killOnTick = false;
    UINT_PTR restartWith = 0;

protected:
    int OnCreate(CREATESTRUCTW* cs) override {
        created.push_back(WM_CREATE);
        return Window::OnCreate(cs);
    }
    void OnTimer(UINT_PTR id) override {
        if (throwOnTimer) throw std::runtime_error("handler failed");
        ticks.push_back(id);
        if (killOnTick) KillTimer(id);
        if (restartWith) SetTimer(id, static_cast<UINT>(restartWith));
    }
    void OnLButtonDown(UINT, POINT pt) override { downs.push_back(pt); }
    void OnCaptureChanged(HWND) override { ++captureLost; }
    void OnFinalMessage(HWND) override { ++finals; }
};

class WindowTest : public ::testing::Test {
protected:
    void SetUp() override { zelLogger::Instance().ClearEntries(); }
    uc::test::ForeignWindow parent;
};

TEST_F(WindowTest, OwnClassWindowIsBoundFromCreationUntilNcDestroy) {
    Probe p;
    ASSERT_TRUE(p.Create(0, nullptr, L"probe", WS_CHILD, {0, 0, 50, 20}, parent.hwnd, 7));
    EXPECT_EQ(p.created.size(), 1u) << "WM_CREATE reached the object";
    EXPECT_EQ(Window::FromHandle(p.GetHwnd()), &p);
    EXPECT_EQ(::GetDlgCtrlID(p.GetHwnd()), 7);
    HWND hwnd = p.GetHwnd();
    EXPECT_TRUE(p.DestroyWindow());
    EXPECT_EQ(p.GetHwnd(), nullptr);
    EXPECT_EQ(p.finals, 1);
    EXPECT_EQ(Window::FromHandle(hwnd), nullptr);
}

TEST_F(WindowTest, DestructorDestroysWhatTheObjectCreatedButNotWhatItSubclassed) {
    HWND created = nullptr;
    {
        Probe p;
        ASSERT_TRUE(p.Create(0, nullptr, L"", WS_CHILD, {0, 0, 5, 5}, parent.hwnd, 1));
        created = p.GetHwnd();
    }
    EXPECT_FALSE(::IsWindow(created));

    HWND button = parent.AddButton(L"keep", 2);
    const LONG_PTR original = ::GetWindowLongPtrW(button, GWLP_WNDPROC);
    {
        Probe p;
        ASSERT_TRUE(p.Subclass(button));
        EXPECT_NE(::GetWindowLongPtrW(button, GWLP_WNDPROC), original);
    }
    EXPECT_TRUE(::IsWindow(button));
    EXPECT_EQ(::GetWindowLongPtrW(button, GWLP_WNDPROC), original) << "the original procedure is back";
    EXPECT_EQ(Window::FromHandle(button), nullptr);
}

TEST_F(WindowTest, SubclassedControlKeepsItsOwnBehaviourThroughDefault) {
    HWND button = parent.AddButton(L"before", 3);
    Probe p;
    ASSERT_TRUE(p.Subclass(button));
    ::SetWindowTextW(button, L"after");  // WM_SETTEXT is not handled: the button's own procedure stores it
    EXPECT_EQ(p.Text(), L"after");
    ::SendMessageW(button, BM_SETCHECK, BST_CHECKED, 0);
    ::PostMessageW(button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(-5, 7));  // signed co-ordinates (captured drags)
    PumpPendingMessages();
    ASSERT_EQ(p.downs.size(), 1u);
    EXPECT_EQ(p.downs[0].x, -5);
    EXPECT_EQ(p.downs[0].y, 7);
}

TEST_F(WindowTest, SubclassRefusesTakenOrMissingWindows) {
    HWND button = parent.AddButton(L"x", 4);
    Probe a, b;
    EXPECT_FALSE(a.Subclass(nullptr));
    EXPECT_FALSE(a.SubclassDlgItem(999, parent.hwnd)) << "no such item";
    ASSERT_TRUE(a.Subclass(button));
    EXPECT_FALSE(b.Subclass(button)) << "one object per window";
    EXPECT_FALSE(a.Subclass(parent.AddButton(L"y", 5))) << "one window per object";
    EXPECT_EQ(a.Unsubclass(), button);
    EXPECT_TRUE(b.Subclass(button));
}

// A foreign subclass installed after ours: unbinding cannot restore the procedure without cutting it out.
LRESULT CALLBACK CountingProc(HWND h, UINT m, WPARAM w, LPARAM l) {
    auto previous = reinterpret_cast<WNDPROC>(::GetPropW(h, L"test.previous"));
    if (m == WM_USER + 7) return 77;
    return ::CallWindowProcW(previous, h, m, w, l);
}

TEST_F(WindowTest, UnbindingUnderAForeignSubclassKeepsTheChainWorking) {
    HWND button = parent.AddButton(L"chain", 6);
    auto p = std::make_unique<Probe>();
    ASSERT_TRUE(p->Subclass(button));
    ::SetPropW(button, L"test.previous",
               reinterpret_cast<HANDLE>(::SetWindowLongPtrW(button, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CountingProc))));
    p->Unsubclass();
    p.reset();
    EXPECT_EQ(::GetWindowLongPtrW(button, GWLP_WNDPROC), reinterpret_cast<LONG_PTR>(&CountingProc));
    EXPECT_EQ(::SendMessageW(button, WM_USER + 7, 0, 0), 77);
    ::SetWindowTextW(button, L"still a button");
    wchar_t text[32] = {};
    ::GetWindowTextW(button, text, 32);
    EXPECT_STREQ(text, L"still a button") << "messages pass through to the button's procedure";
    ::RemovePropW(button, L"test.previous");
}

TEST_F(WindowTest, ExceptionInAHandlerIsLoggedAndDoesNotLeaveTheProcedure) {
    Probe p;
    ASSERT_TRUE(p.Create(0, nullptr, L"", WS_CHILD, {0, 0, 5, 5}, parent.hwnd, 1));
    p.throwOnTimer = true;
    EXPECT_EQ(::SendMessageW(p.GetHwnd(), WM_TIMER, 3, 0), 0);
    EXPECT_EQ(zelLogger::Instance().Count(L"exception 'handler failed'"), 1u);
    EXPECT_TRUE(::IsWindow(p.GetHwnd()));
}

TEST_F(WindowTest, ManualTimersDeliverEveryDueTickInOrder) {
    ManualTimers timers;
    ScopedTimerService use(timers);
    Probe fast, slow;
    ASSERT_TRUE(fast.Create(0, nullptr, L"", WS_CHILD, {0, 0, 5, 5}, parent.hwnd, 1));
    ASSERT_TRUE(slow.Create(0, nullptr, L"", WS_CHILD, {0, 0, 5, 5}, parent.hwnd, 2));
    EXPECT_EQ(fast.SetTimer(1, 100), 1u);
    EXPECT_EQ(slow.SetTimer(2, 250), 2u);
    EXPECT_EQ(timers.Advance(99), 0);
    EXPECT_EQ(timers.Advance(1), 1);
    EXPECT_EQ(timers.Advance(400), 6) << "fast at 200, 300, 400, 500; slow at 250, 500";
    EXPECT_EQ(fast.ticks.size(), 5u);
    EXPECT_EQ(slow.ticks.size(), 2u);
    EXPECT_EQ(timers.Period(slow.GetHwnd(), 2), 250u);

    // Setting a running timer again restarts its period; a handler may kill its own timer.
    fast.SetTimer(1, 300);
    timers.Advance(299);
    EXPECT_EQ(fast.ticks.size(), 5u);
    fast.killOnTick = true;
    timers.Advance(1000);
    EXPECT_EQ(fast.ticks.size(), 6u);
    EXPECT_FALSE(timers.Running(fast.GetHwnd(), 1));
    EXPECT_FALSE(fast.KillTimer(1));

    // Periods below 10 ms count as 10; a destroyed window's timers die with it.
    slow.SetTimer(3, 0);
    EXPECT_EQ(timers.Period(slow.GetHwnd(), 3), 10u);
    slow.DestroyWindow();
    EXPECT_EQ(timers.Advance(1000), 0);
}

TEST_F(WindowTest, ManualTimersReachWindowsOfAnotherThread) {
    ManualTimers timers;
    ScopedTimerService use(timers);
    struct Owner : UiThread {
        Probe probe;
        std::atomic<DWORD> tickThread{0};
        bool InitInstance() override {
            if (!probe.Create(0, nullptr, L"", WS_POPUP, {0, 0, 5, 5}, nullptr, 0)) return false;
            probe.SetTimer(9, 50);
            return true;
        }
        int ExitInstance() override {
            probe.DestroyWindow();
            return 0;
        }
        ~Owner() override { Stop(); }
    } owner;
    ASSERT_TRUE(owner.Start());
    ASSERT_TRUE(uc::test::WaitFor([&] { return timers.Running(owner.probe.GetHwnd(), 9); }));
    EXPECT_EQ(timers.Advance(100), 2) << "sent through the owner thread's loop; handled when Advance returns";
    EXPECT_EQ(owner.probe.ticks.size(), 2u);
    owner.Stop();
    EXPECT_FALSE(::IsWindow(owner.probe.GetHwnd()));
}

TEST_F(WindowTest, RealTimerTicksThroughTheMessageLoop) {
    Probe p;
    ASSERT_TRUE(p.Create(0, nullptr, L"", WS_CHILD, {0, 0, 5, 5}, parent.hwnd, 1));
    p.SetTimer(5, 10);
    ASSERT_TRUE(uc::test::WaitFor([&] { return !p.ticks.empty(); }));
    EXPECT_EQ(p.ticks.front(), 5u);
    EXPECT_TRUE(p.KillTimer(5));
}

TEST_F(WindowTest, CaptureIsHeldAndItsLossReported) {
    Probe a, b;
    ASSERT_TRUE(a.Create(0, nullptr, L"", WS_CHILD | WS_VISIBLE, {0, 0, 5, 5}, parent.hwnd, 1));
    ASSERT_TRUE(b.Create(0, nullptr, L"", WS_CHILD | WS_VISIBLE, {10, 0, 15, 5}, parent.hwnd, 2));
    a.SetCapture();
    EXPECT_TRUE(a.HasCapture());
    b.ReleaseCapture();  // not b's to release
    EXPECT_TRUE(a.HasCapture());
    {
        MouseCapture scoped(b.GetHwnd());
        EXPECT_TRUE(b.HasCapture());
        EXPECT_EQ(a.captureLost, 1);
    }
    EXPECT_FALSE(b.HasCapture());
    EXPECT_EQ(::GetCapture(), nullptr);
}

class RecordingButton : public OwnerDrawButton {
public:
    std::vector<UINT> states;
    RECT lastRect{};
    void DrawItem(const DRAWITEMSTRUCT& item) override {
        states.push_back(item.itemState);
        lastRect = item.rcItem;
        HBRUSH brush = ::CreateSolidBrush(RGB(0, 200, 0));
        ::FillRect(item.hDC, &item.rcItem, brush);
        ::DeleteObject(brush);
    }
};

// A parent that is itself a framework window (it reflects in its own dispatcher).
class FrameworkParent : public Window {};

TEST_F(WindowTest, OwnerDrawReachesTheButtonInForeignAndFrameworkParents) {
    FrameworkParent framework;
    ASSERT_TRUE(framework.Create(0, nullptr, L"", WS_POPUP | WS_VISIBLE, {0, 0, 200, 100}, nullptr, 0));
    for (HWND host : {parent.hwnd, framework.GetHwnd()}) {
        ::ShowWindow(host, SW_SHOWNOACTIVATE);
        RecordingButton button;
        ASSERT_TRUE(button.CreateButton(L"od", {10, 10, 70, 40}, host, 100));
        EXPECT_EQ(::GetWindowLongPtrW(button.GetHwnd(), GWL_STYLE) & 0x0F, BS_OWNERDRAW);
        ::UpdateWindow(button.GetHwnd());
        ASSERT_FALSE(button.states.empty()) << "painted through the reflected WM_DRAWITEM";
        EXPECT_EQ(button.lastRect.right, 60);
        ::SendMessageW(button.GetHwnd(), BM_SETSTATE, TRUE, 0);
        const bool pushed = uc::test::WaitFor([&] { return (button.states.back() & ODS_SELECTED) != 0; });
        EXPECT_TRUE(pushed);
        ::EnableWindow(button.GetHwnd(), FALSE);
        ::RedrawWindow(button.GetHwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        EXPECT_TRUE(button.states.back() & ODS_DISABLED);
    }
}

TEST_F(WindowTest, OwnerDrawnButtonPrintsIntoABitmap) {
    ::ShowWindow(parent.hwnd, SW_SHOWNOACTIVATE);
    RecordingButton button;
    ASSERT_TRUE(button.CreateButton(L"od", {0, 0, 40, 20}, parent.hwnd, 100));
    WindowDC screen(nullptr);
    Canvas canvas(screen, 40, 20);
    ASSERT_TRUE(canvas.ok());
    ::SendMessageW(button.GetHwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(canvas.dc()), PRF_CLIENT);
    EXPECT_EQ(::GetPixel(canvas.dc(), 20, 10), RGB(0, 200, 0));
}

TEST_F(WindowTest, ReflectionSubclassGivesWayToARealObject) {
    RecordingButton button;
    ASSERT_TRUE(button.CreateButton(L"od", {0, 0, 40, 20}, parent.hwnd, 100));
    ASSERT_NE(Window::FromHandle(parent.hwnd), nullptr) << "the foreign parent reflects through a stand-in";
    FrameworkParent real;
    ASSERT_TRUE(real.Subclass(parent.hwnd)) << "the stand-in makes room";
    EXPECT_EQ(Window::FromHandle(parent.hwnd), &real);
    button.states.clear();
    ::RedrawWindow(button.GetHwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    ::ShowWindow(parent.hwnd, SW_SHOWNOACTIVATE);
    ::RedrawWindow(button.GetHwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_FALSE(button.states.empty());
    real.Unsubclass();
}

TEST_F(WindowTest, CursorVisibilityIsForcedForTheScopeAndRestored) {
    ::ShowCursor(FALSE);
    ::ShowCursor(FALSE);
    const int hidden = ::ShowCursor(FALSE);  // two below the starting count
    {
        ShowCursorHelper visible(true);
        EXPECT_GE(::ShowCursor(TRUE) - 1, 0);
        ::ShowCursor(FALSE);
    }
    EXPECT_EQ(::ShowCursor(TRUE) - 1, hidden);
    ::ShowCursor(FALSE);
    try {
        ShowCursorHelper visible(true);
        throw std::runtime_error("leave");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(::ShowCursor(TRUE) - 1, hidden) << "restored when the scope is left by an exception";
    ::ShowCursor(FALSE);
    for (int i = 0; i < 3; ++i) ::ShowCursor(TRUE);
}

TEST_F(WindowTest, CanvasOfZeroSizeIsStillUsable) {
    WindowDC screen(nullptr);
    Canvas empty(screen, 0, 0);
    EXPECT_TRUE(empty.ok());
    EXPECT_EQ(empty.width(), 1);
    Canvas c(screen, 8, 8);
    ::SetPixel(c.dc(), 3, 3, RGB(1, 2, 3));
    Canvas target(screen, 8, 8);
    EXPECT_TRUE(c.CopyTo(target.dc()));
    EXPECT_EQ(::GetPixel(target.dc(), 3, 3), RGB(1, 2, 3));
}

}  // namespace
