// The calibration prompt (delayed OK, fixed title, message shown as given) and the please-wait box on its thread
// (delay, geometry, animation, painting while the caller is blocked, opening and closing from any thread).
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "dialog_test_support.h"
#include "dialogs/resource_ids.h"
#include "dialogs/win/message_box.h"
#include "dialogs_test_ids.h"
#include "platform/localisation.h"
#include "platform/paths.h"
#include "ui/win/capture.h"
#include "ui/win/resources.h"
#include "ui/win/timers.h"
#include "ui_test_support.h"

namespace {

class TestPrompt : public uc::test::Stepped<TestPrompt, CCustomMessageBox> {
public:
    using CCustomMessageBox::m_title;
};

class MessageBoxTest : public ::testing::Test {
protected:
    void SetUp() override { uc::ClearLocalisedStrings(); }
    void TearDown() override {
        uc::ClearLocalisedStrings();
        utilsExam::SetDialogRect({});
    }
    uc::ui::ManualTimers timers;
};

TEST_F(MessageBoxTest, PromptKeepsOkDisabledForItsDelayThenEnablesItOnce) {
    uc::ui::ScopedTimerService use(timers);
    TestPrompt prompt;
    prompt.SetOKTimeout(1);
    prompt.DisableOKButton(3000);  // the second name of the same setter
    prompt.SetMessage(L"Touch the crosses");
    prompt.steps = [&](TestPrompt& self) {
        HWND ok = self.Item(IDOK);
        EXPECT_FALSE(::IsWindowEnabled(ok));
        EXPECT_EQ(timers.Period(self.GetHwnd(), 1), 3000u);
        timers.Advance(2999);
        EXPECT_FALSE(::IsWindowEnabled(ok));
        timers.Advance(1);
        EXPECT_TRUE(::IsWindowEnabled(ok));
        EXPECT_FALSE(timers.Running(self.GetHwnd(), 1)) << "the timer ends with the first tick";
        ::EnableWindow(ok, FALSE);
        timers.Advance(10000);
        EXPECT_FALSE(::IsWindowEnabled(ok)) << "enabled once, not again";
        ::EnableWindow(ok, TRUE);
        self.Send(WM_TIMER, 2);  // other timer ids are not the OK delay
        uc::test::ClickWithMouseMessages(ok);
    };
    EXPECT_EQ(prompt.DoModal(), IDOK);
}

TEST_F(MessageBoxTest, PromptWithoutDelayShowsTheMessageAsGivenNeverSelected) {
    uc::ui::ScopedTimerService use(timers);
    uc::SetLocalisedString("CALIBRATE TOUCH SCREEN", L"TOUCH-KALIBRIERUNG");
    uc::SetLocalisedString("OK", L"Gut");
    TestPrompt prompt;
    prompt.m_title = L"something else";
    prompt.SetMessage(L"OK");  // a translatable text, shown untranslated because it is set after the translation
    prompt.steps = [&](TestPrompt& self) {
        EXPECT_TRUE(::IsWindowEnabled(self.Item(IDOK)));
        EXPECT_FALSE(timers.Running(self.GetHwnd(), 1));
        HWND text = self.Item(IDC_TXTMESSAGE);
        EXPECT_EQ(uc::test::TextOf(text), L"OK");
        EXPECT_EQ(uc::test::TextOf(self.Item(IDOK)), L"Gut");
        EXPECT_EQ(uc::test::TextOf(self.Item(uc::ui::kTitleLabelId)), L"TOUCH-KALIBRIERUNG")
            << "the title is always the calibration title, translated";
        // Focus coming into the text area drops any selection.
        ::SendMessageW(text, EM_SETSEL, 0, -1);
        ::SetFocus(self.Item(IDOK));
        ::SetFocus(text);
        DWORD start = 0, end = 0;
        ::SendMessageW(text, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
        EXPECT_EQ(start, end);
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(prompt.DoModal(), IDOK);
}

// A box thread owned by the test.
std::unique_ptr<CMessageBoxThread> NewBox(const wchar_t* text, UINT delay, BOOL bar = TRUE) {
    std::unique_ptr<CMessageBoxThread> t(CMessageBoxThread::CreateObject());
    t->SetMessage(text);
    t->SetTimeout(delay);
    t->SetShowStatusBar(bar);
    return t;
}

HWND WaitForBox(CMessageBoxThread& t) {
    uc::test::WaitFor([&] { return t.Box().GetHwnd() != nullptr; });
    return t.Box().GetHwnd();
}

TEST_F(MessageBoxTest, BoxShowsOnlyAfterItsDelayAndThenAnimates) {
    uc::ui::ScopedTimerService use(timers);
    auto t = NewBox(L"Copying", 3000);
    ASSERT_TRUE(t->Start());
    HWND box = WaitForBox(*t);
    ASSERT_NE(box, nullptr);
    ASSERT_TRUE(uc::test::WaitFor([&] { return timers.Running(box, 1); }));
    EXPECT_NE(::GetWindowThreadProcessId(box, nullptr), ::GetCurrentThreadId());
    EXPECT_EQ(timers.Period(box, 1), 3000u);
    timers.Advance(2999);
    EXPECT_FALSE(::IsWindowVisible(box));
    timers.Advance(1);
    EXPECT_TRUE(::IsWindowVisible(box));
    EXPECT_TRUE(::GetWindowLongPtrW(box, GWL_EXSTYLE) & WS_EX_TOPMOST);
    EXPECT_FALSE(timers.Running(box, 1));
    EXPECT_EQ(timers.Period(box, 2), 100u);
    timers.Advance(100);
    EXPECT_EQ(t->Box().m_barOffset, 10) << "animated by the second timer";
    t->Stop();
    EXPECT_FALSE(::IsWindow(box));
}

TEST_F(MessageBoxTest, QuickOperationsNeverShowTheBox) {
    uc::ui::ScopedTimerService use(timers);
    for (int i = 0; i < 3; ++i) {
        auto t = NewBox(L"Quick", 1000);
        ASSERT_TRUE(t->Start());
        if (i == 1) WaitForBox(*t);
        if (i == 2) {
            HWND box = WaitForBox(*t);
            uc::test::WaitFor([&] { return timers.Running(box, 1); });
            timers.Advance(999);
        }
        t->Stop();  // before the delay: closed without ever being visible
        EXPECT_FALSE(t->Box().WasShown()) << i;
        EXPECT_EQ(t->Box().PaintCount(), 0) << i;
        EXPECT_EQ(t->Box().GetHwnd(), nullptr);
    }
}

TEST_F(MessageBoxTest, HeightMultipliesTheTextHeightByTheLineCount) {
    auto one = NewBox(L"One line", 60000);
    ASSERT_TRUE(one->Start());
    HWND box1 = WaitForBox(*one);
    RECT r1{};
    ::GetWindowRect(box1, &r1);
    EXPECT_EQ(r1.right - r1.left, 420);
    const int h1 = r1.bottom - r1.top;
    const int line = h1 - 55 - 10;  // DrawText's height of one line
    EXPECT_EQ(r1.left, (::GetSystemMetrics(SM_CXSCREEN) - 420) / 2);
    EXPECT_EQ(r1.top, (::GetSystemMetrics(SM_CYSCREEN) - h1) / 2);

    auto five = NewBox(L"1\n2\n3\n4\n5", 60000);
    ASSERT_TRUE(five->Start());
    RECT r5{};
    ::GetWindowRect(WaitForBox(*five), &r5);
    EXPECT_EQ(r5.bottom - r5.top, (5 * line + 10) * 5 + 55) << "the whole text's height times five lines";

    // A long text is wrapped to 400 pixels, which adds lines.
    std::wstring longText;
    for (int i = 0; i < 40; ++i) longText += L"word ";
    auto wrapped = NewBox(longText.c_str(), 60000);
    ASSERT_TRUE(wrapped->Start());
    WaitForBox(*wrapped);
    EXPECT_NE(wrapped->Box().m_text.find(L'\n'), std::wstring::npos);
}

TEST_F(MessageBoxTest, MessageFromTheResourceModule) {
    uc::ui::ScopedResourceModule use(::GetModuleHandleW(nullptr));
    auto t = NewBox(L"", 1000);
    t->SetMessage(IDS_DIALOG_TEST_WAIT);
    EXPECT_EQ(t->Message(), L"Waiting for the resource");
    t->SetMessage(static_cast<UINT>(4711));
    EXPECT_EQ(t->Message(), L"") << "a missing string gives an empty message";
}

// Blocks without dispatching this thread's messages until `done` or 10 s.
bool BlockUntil(const std::function<bool()>& done) {
    uc::UniqueKernelHandle never(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    for (int i = 0; i < 1000 && !done(); ++i) ::WaitForSingleObject(never.get(), 10);
    return done();
}

TEST_F(MessageBoxTest, BoxPaintsAndAnimatesWhileTheCallerIsBlocked) {
    auto t = NewBox(L"Burning the disc", 0);
    ASSERT_TRUE(t->Start());
    // This thread neither pumps messages nor returns: the box's own thread shows, paints and animates it.
    ASSERT_TRUE(BlockUntil([&] { return t->Box().WasShown() && t->Box().m_barOffset >= 30 && t->Box().PaintCount() >= 3; }));
    HWND box = t->Box().GetHwnd();

    auto picture = uc::ui::CaptureWindow(box);
    const uc::ui::Pixels px = uc::ui::ReadPixels(picture.get());
    ASSERT_EQ(px.width, 420);
    const int b = px.height;
    EXPECT_EQ(px.At(0, 0), uc::test::Rgb(::GetSysColor(COLOR_ACTIVEBORDER)));
    // The bar: inside it the gradient runs between light cyan and blue; its outline is black.
    EXPECT_EQ(px.At(10, b - 35), 0u);
    int bluish = 0;
    for (int x = 12; x < 408; x += 4) {
        const std::uint32_t c = px.At(x, b - 22);
        if ((c & 0xFF) > 0xC0 && ((c >> 16) & 0xFF) < 0xD0) ++bluish;
    }
    EXPECT_GT(bluish, 80);
    EXPECT_GT(uc::test::DarkPixels(px, {10, 10, 410, b - 45}), 10) << "the text";

    // The gradient moves: a later picture of the bar differs.
    const int offset = t->Box().m_barOffset;
    ASSERT_TRUE(BlockUntil([&] { return t->Box().m_barOffset != offset; }));
    const uc::ui::Pixels later = uc::ui::ReadPixels(uc::ui::CaptureWindow(box).get());
    int changed = 0;
    for (int x = 12; x < 408; ++x) changed += later.At(x, b - 22) != px.At(x, b - 22) ? 1 : 0;
    EXPECT_GT(changed, 20);
    t->Stop();
}

TEST_F(MessageBoxTest, ZeroDelayShowsAtTheFirstTickAndWithoutTheBarOnlyTheBarIsMissing) {
    uc::ui::ScopedTimerService use(timers);
    auto t = NewBox(L"Quiet", 0, FALSE);
    ASSERT_TRUE(t->Start());
    HWND box = WaitForBox(*t);
    ASSERT_TRUE(uc::test::WaitFor([&] { return timers.Running(box, 1); }));
    EXPECT_FALSE(::IsWindowVisible(box));
    timers.Advance(10);
    ASSERT_TRUE(::IsWindowVisible(box));
    const uc::ui::Pixels px = uc::ui::ReadPixels(uc::ui::CaptureWindow(box).get());
    const int b = px.height;
    const std::uint32_t face = uc::test::Rgb(::GetSysColor(COLOR_BTNFACE));
    EXPECT_EQ(px.At(10, b - 35), face) << "no outline";
    EXPECT_EQ(px.At(200, b - 22), face) << "no gradient";
    EXPECT_GT(uc::test::DarkPixels(px, {10, 10, 410, b - 45}), 10) << "the text is still drawn";
}

TEST_F(MessageBoxTest, BoxesOpenAndCloseFromAnyThread) {
    std::vector<std::thread> workers;
    std::atomic<int> done{0};
    std::unique_ptr<uc::ui::PleaseWait> handedOver;
    std::atomic<bool> handed{false};
    for (int w = 0; w < 4; ++w) {
        workers.emplace_back([&, w] {
            for (int i = 0; i < 5; ++i) {
                uc::ui::PleaseWait wait(L"Working", static_cast<UINT>(i * 5));
                EXPECT_TRUE(wait.Thread()->Running() || wait.Thread()->Wait(0));
            }
            if (w == 0) {
                handedOver = std::make_unique<uc::ui::PleaseWait>(L"Opened elsewhere", 0);
                handed = true;
            }
            ++done;
        });
    }
    for (std::thread& t : workers) t.join();
    EXPECT_EQ(done, 4);
    ASSERT_TRUE(handed);
    handedOver.reset();  // opened on a worker that has ended, closed here
    // No box window is left behind.
    EXPECT_EQ(::FindWindowExW(nullptr, nullptr, CMessageBox::ClassName(), nullptr), nullptr);
}

}  // namespace
