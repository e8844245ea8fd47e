// No leaks: GDI objects, USER objects (windows) and kernel handles are unchanged after 200 open/close cycles
// of each dialog kind (50 of the please-wait box, each a thread of its own).
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <functional>

#include "dialog_test_support.h"
#include "dialogs/win/custom_dialog.h"
#include "dialogs/win/custom_property_sheet.h"
#include "dialogs/win/message_box.h"
#include "gui_resources.h"
#include "ui/win/timers.h"
#include "ui_test_support.h"

namespace {

constexpr int kCycles = 200;

// A console dialog with title label, tool tip and background colour that closes itself once it has painted.
class Cycle : public CCustomDialog {
public:
    Cycle() {
        SetTemplate(uc::test::ConsoleTemplate());
        SetBkColor(RGB(30, 30, 30));
        m_title = L"Leak check";
    }

protected:
    BOOL OnInitDialog() override {
        CCustomDialog::OnInitDialog();
        SetToolTip(m_hWnd, Item(IDOK), L"close");
        uc::test::ArmWatchdog(m_hWnd);
        Post(WM_APP + 400);
        return TRUE;
    }
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg == WM_APP + 400) {
            ::ShowWindow(m_hWnd, SW_SHOW);
            ::UpdateWindow(m_hWnd);
            EndDialog(IDOK);
            return 0;
        }
        return CCustomDialog::WindowProc(msg, wp, lp);
    }
};

class SheetCycle : public CCustomPropertySheet {
public:
    SheetCycle() : CCustomPropertySheet(L"Leak check", nullptr) {}

protected:
    BOOL OnInitDialog() override {
        CCustomPropertySheet::OnInitDialog();
        uc::test::ArmWatchdog(m_hWnd);
        // Pressed through the sheet, not by mouse: other test programs move the real pointer meanwhile.
        Post(PSM_PRESSBUTTON, PSBTN_OK);
        return TRUE;
    }
};

// Runs `once` a few times to fill caches (classes, atoms, fonts), then `cycles` times, and compares.
void ExpectNoGrowth(const char* what, const std::function<void()>& once, int cycles = kCycles) {
    for (int i = 0; i < 3; ++i) once();
    const uc::test::GuiResources before = uc::test::Measure();
    for (int i = 0; i < cycles; ++i) once();
    const uc::test::GuiResources after = uc::test::Measure();
    SCOPED_TRACE(what);
    std::printf("%s: gdi %ld -> %ld, user %ld -> %ld, handles %ld -> %ld (%ls)\n", what, before.gdi, after.gdi,
                before.user, after.user, before.handles, after.handles, before.how.c_str());
    ASSERT_GE(before.user, 0);
    EXPECT_EQ(after.user, before.user);
    EXPECT_EQ(after.handles, before.handles);
    if (before.gdi >= 0) {
        EXPECT_EQ(after.gdi, before.gdi);
    }
}

TEST(Leaks, TheMeasuresSeeALeak) {
    const uc::test::GuiResources before = uc::test::Measure();
    HBRUSH brush = ::CreateSolidBrush(RGB(1, 2, 3));
    HANDLE event = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 5, 5, nullptr, nullptr, nullptr, nullptr);
    const uc::test::GuiResources after = uc::test::Measure();
    if (before.gdi >= 0) {
        EXPECT_EQ(after.gdi, before.gdi + 1);
    }
    EXPECT_GT(after.user, before.user);
    EXPECT_EQ(after.handles, before.handles + 1);
    ::DestroyWindow(window);
    ::CloseHandle(event);
    ::DeleteObject(brush);
}

TEST(Leaks, ConsoleDialogOpenedAndClosed200Times) {
    ExpectNoGrowth("console dialog", [] {
        Cycle d;
        ASSERT_EQ(d.DoModal(), IDOK);
    });
}

TEST(Leaks, PropertySheetOpenedAndClosed200Times) {
    std::vector<WORD> page = [] {
        uc::ui::DialogTemplate t(WS_CHILD | WS_CAPTION | DS_CONTROL, 0, 0, 0, 150, 80, L"Page");
        t.Add(L"STATIC", L"text", 1400, WS_CHILD | WS_VISIBLE, 5, 5, 100, 10);
        return t.Words();
    }();
    ExpectNoGrowth("property sheet", [&] {
        CCustomPropertyPage a, b;
        a.SetTemplate(page);
        b.SetTemplate(page);
        SheetCycle sheet;
        sheet.SetResizePages(true);
        sheet.SetCascadeBkColor(RGB(20, 20, 20));
        sheet.AddPage(&a);
        sheet.AddPage(&b);
        ASSERT_EQ(sheet.DoModal(), IDOK);
    });
}

// Each cycle starts a thread and GDI+: fewer cycles keep the run short, any leak still shows.
TEST(Leaks, PleaseWaitBoxShownAndClosed50Times) {
    uc::ui::ManualTimers timers;
    uc::ui::ScopedTimerService use(timers);
    ExpectNoGrowth("please-wait box", [&] {
        std::unique_ptr<CMessageBoxThread> t(CMessageBoxThread::CreateObject());
        t->SetMessage(L"Leak check");
        t->SetTimeout(0);
        ASSERT_TRUE(t->Start());
        timers.Advance(110);  // shown and animated once: every painting path ran
        t->Stop();
    }, 50);
}

}  // namespace
