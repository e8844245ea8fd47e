// Property sheets and tabbed dialogs on screen: centring, no close box, translation of controls and tabs,
// touch-panel messages, cascaded colours, resized pages, tabs showing owned pages, OK applying every page.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <string>
#include <vector>

#include "dialog_test_support.h"
#include "dialogs/win/custom_dialog.h"
#include "dialogs/win/custom_property_sheet.h"
#include "dialogs/win/tabbed_dialog.h"
#include "dialogs_test_ids.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "ui/win/dialog.h"
#include "ui/win/capture.h"
#include "ui_test_support.h"

namespace {

std::vector<WORD> PageTemplate(const wchar_t* text, short cx, short cy, WORD points = 8) {
    uc::ui::DialogTemplate t(WS_CHILD | WS_DISABLED | WS_CAPTION | DS_CONTROL, 0, 0, 0, cx, cy, L"Page", L"MS Shell Dlg", points);
    t.Add(L"STATIC", text, 1400, WS_CHILD | WS_VISIBLE, 5, 5, 100, 10);
    return t.Words();
}

class TestPage : public CCustomPropertyPage {
public:
    TestPage(const wchar_t* text, short cx = 180, short cy = 90, WORD points = 8) { SetTemplate(PageTemplate(text, cx, cy, points)); }
};

class TestSheet : public uc::test::Stepped<TestSheet, CCustomPropertySheet> {
public:
    using Stepped::Stepped;
};

class SheetTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::ClearLocalisedStrings();
        utilsExam::SetDialogRect({0, 0, 1001, 801});
        CCustomPropertySheet::m_touch = nullptr;
        zelLogger::Instance().ClearEntries();
    }
    void TearDown() override {
        uc::ClearLocalisedStrings();
        utilsExam::SetDialogRect({});
        CCustomPropertySheet::m_touch = nullptr;
    }
};

std::wstring TabText(HWND tab, int i) {
    wchar_t text[256] = {};
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = text;
    item.cchTextMax = 255;
    ::SendMessageW(tab, TCM_GETITEMW, i, reinterpret_cast<LPARAM>(&item));
    return text;
}

RECT ChildRect(HWND parent, HWND child) {
    RECT r{};
    ::GetWindowRect(child, &r);
    ::MapWindowPoints(HWND_DESKTOP, parent, reinterpret_cast<POINT*>(&r), 2);
    return r;
}

TEST_F(SheetTest, OpensCentredTranslatedWithoutCloseBoxAndTellsTheTouchPanel) {
    uc::SetLocalisedString("page.text", L"Seitentext");
    uc::SetLocalisedString("Page", L"Seite");
    uc::test::TouchPanel touch;
    ASSERT_TRUE(touch.Create(0, nullptr, L"", WS_POPUP, {0, 0, 5, 5}, nullptr, 0));
    CCustomPropertySheet::m_touch = touch.GetHwnd();
    TestPage first(L"page.text"), second(L"other");
    TestSheet sheet(L"Settings", nullptr);
    sheet.m_touchNotify = TRUE;
    sheet.m_touchPassSelf = 1;
    sheet.AddPage(&first);
    sheet.AddPage(&second);
    sheet.steps = [&](TestSheet& self) {
        EXPECT_FALSE(::GetWindowLongPtrW(self.GetHwnd(), GWL_STYLE) & WS_SYSMENU) << "no close box";
        const RECT w = self.WindowRect();
        EXPECT_EQ(w.left, (1001 - (w.right - w.left)) / 2);
        EXPECT_EQ(w.top, (801 - (w.bottom - w.top)) / 2);
        EXPECT_EQ(uc::test::TextOf(::GetDlgItem(self.ActivePage(), 1400)), L"Seitentext");
        EXPECT_EQ(TabText(self.TabControl(), 0), L"Seite") << "tab texts are translated too";
        ASSERT_EQ(touch.received.size(), 1u);
        EXPECT_EQ(touch.received[0].msg, 0x8048u);
        EXPECT_EQ(touch.received[0].wp, reinterpret_cast<WPARAM>(static_cast<CCustomPropertySheet*>(&self)));
        EXPECT_EQ(self.TouchReply(), uc::test::TouchPanel::kReply);
        uc::test::ClickWithMouseMessages(self.Item(IDOK));
    };
    EXPECT_EQ(sheet.DoModal(), IDOK);
    ASSERT_EQ(touch.received.size(), 2u);
    EXPECT_EQ(touch.received[1].msg, 0x804Eu);
}

TEST_F(SheetTest, CascadedColourReachesOnlyPagesAddedAfterIt) {
    TestPage before(L"before"), after(L"after");
    TestSheet sheet(L"Colours", nullptr);
    sheet.AddPage(&before);
    sheet.SetCascadeBkColor(RGB(1, 2, 3));
    sheet.AddPage(&after);
    EXPECT_FALSE(before.UsesBkColor());
    EXPECT_TRUE(after.UsesBkColor());
    EXPECT_EQ(after.BkColor(), RGB(1, 2, 3));
    sheet.steps = [](TestSheet& self) {
        EXPECT_EQ(uc::test::BkModeAfterCtlColor(self.GetHwnd(), self.Item(IDOK)), TRANSPARENT);
        uc::test::ClickWithMouseMessages(self.Item(IDOK));
    };
    EXPECT_EQ(sheet.DoModal(), IDOK);
}

TEST_F(SheetTest, ResizedPagesFillTheTabAreaAndFollowTabChanges) {
    TestPage small(L"small", 120, 60, 9), large(L"large", 220, 120);
    TestSheet sheet(L"Resized", nullptr);
    sheet.SetResizePages(true);
    sheet.AddPage(&small);
    sheet.AddPage(&large);
    sheet.steps = [&](TestSheet& self) {
        HFONT font = self.SheetFont();
        ASSERT_NE(font, nullptr) << "made from the first page's template font";
        LOGFONTW lf{};
        ::GetObjectW(font, sizeof lf, &lf);
        EXPECT_STREQ(lf.lfFaceName, L"MS Shell Dlg");
        EXPECT_EQ(reinterpret_cast<HFONT>(::SendMessageW(::GetDlgItem(self.ActivePage(), 1400), WM_GETFONT, 0, 0)), font);
        EXPECT_NE(large.GetHwnd(), nullptr) << "every page was created on opening";

        // The page area is the tab control's display area.
        RECT expected = ChildRect(self.GetHwnd(), self.TabControl());
        ::SendMessageW(self.TabControl(), TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&expected));
        const RECT area = self.PageRect();
        EXPECT_EQ(area.left, expected.left);
        EXPECT_EQ(area.bottom, expected.bottom);
        const RECT first = ChildRect(self.GetHwnd(), self.ActivePage());
        EXPECT_EQ(first.left, area.left);
        EXPECT_EQ(first.right, area.right);
        EXPECT_EQ(first.bottom, area.bottom);

        // The page's controls show in a picture of the sheet (the page's erase must not land over them).
        ::ShowWindow(self.GetHwnd(), SW_SHOW);
        const uc::ui::Pixels px = uc::ui::ReadPixels(uc::ui::CaptureWindow(self.GetHwnd()).get());
        POINT origin{area.left, area.top};
        ::ClientToScreen(self.GetHwnd(), &origin);
        const RECT w = self.WindowRect();
        const LONG x = origin.x - w.left, y = origin.y - w.top;
        EXPECT_GT(uc::test::DarkPixels(px, {x, y, x + 100, y + 30}), 10) << "the static text of the page";
        // A tab change posts the resize: the newly active page lands in the same area.
        self.SetActive(1);
        NMHDR change{self.TabControl(), static_cast<UINT_PTR>(::GetDlgCtrlID(self.TabControl())), static_cast<UINT>(TCN_SELCHANGE)};
        ::SendMessageW(self.GetHwnd(), WM_NOTIFY, change.idFrom, reinterpret_cast<LPARAM>(&change));
        MSG posted{};
        ASSERT_TRUE(::PeekMessageW(&posted, self.GetHwnd(), UWM_RESIZE_PAGE, UWM_RESIZE_PAGE, PM_REMOVE));
        ::DispatchMessageW(&posted);
        EXPECT_EQ(self.ActivePage(), large.GetHwnd());
        const RECT second = ChildRect(self.GetHwnd(), self.ActivePage());
        EXPECT_TRUE(::EqualRect(&second, &area));
        uc::test::ClickWithMouseMessages(self.Item(IDOK));
    };
    EXPECT_EQ(sheet.DoModal(), IDOK);
}

TEST_F(SheetTest, WithoutResizingPagesStayPutAndCursorClippingIsRestoredAfterCancel) {
    RECT original{};
    ::GetClipCursor(&original);
    TestPage page(L"p", 120, 60);
    TestSheet sheet(L"Plain", nullptr);
    sheet.AddPage(&page);
    int during = -100;
    sheet.steps = [&](TestSheet& self) {
        EXPECT_EQ(self.SheetFont(), nullptr);
        const RECT before = ChildRect(self.GetHwnd(), self.ActivePage());
        ::SendMessageW(self.GetHwnd(), UWM_RESIZE_PAGE, 0, 0);
        const RECT after = ChildRect(self.GetHwnd(), self.ActivePage());
        EXPECT_TRUE(::EqualRect(&before, &after)) << "the page is not moved";
        RECT tiny{0, 0, 50, 50};
        ::ClipCursor(&tiny);
        during = ::ShowCursor(TRUE) - 1;
        ::ShowCursor(FALSE);
        uc::test::ClickWithMouseMessages(self.Item(IDCANCEL));
    };
    EXPECT_EQ(sheet.DoModal(), IDCANCEL);
    RECT after{};
    ::GetClipCursor(&after);
    EXPECT_TRUE(::EqualRect(&original, &after));
    EXPECT_GE(during, 0) << "the cursor shows while the sheet is modal";
}

TEST_F(SheetTest, MissingPageTemplateFailsClearly) {
    CCustomPropertyPage missing(4242);
    TestSheet sheet(L"Broken", nullptr);
    sheet.AddPage(&missing);
    EXPECT_EQ(sheet.DoModal(), -1);
    EXPECT_EQ(zelLogger::Instance().Count(L"page template 4242 is missing"), 1u);
    TestSheet empty(L"Empty", nullptr);
    EXPECT_EQ(empty.DoModal(), -1);
}

// Tabbed dialogs.

std::vector<WORD> TabbedTemplate() {
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_TAB_CLASSES};
    ::InitCommonControlsEx(&icc);
    uc::ui::DialogTemplate t(WS_POPUP | WS_CAPTION | DS_MODALFRAME, 0, 0, 0, 260, 170, L"tabs");
    t.Add(L"SysTabControl32", L"", 1300, WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, 5, 5, 250, 140)
        .Add(L"BUTTON", L"OK", IDOK, WS_CHILD | WS_VISIBLE | BS_DEFPUSHBUTTON, 150, 150, 50, 14)
        .Add(L"BUTTON", L"Cancel", IDCANCEL, WS_CHILD | WS_VISIBLE, 205, 150, 50, 14);
    return t.Words();
}

struct Journal {
    std::vector<std::string> applied;
    int deleted = 0;
};

class TestTabPage : public CCustomTabPageDialog {
public:
    TestTabPage(std::string name, Journal& journal, UINT templateId = 0, HINSTANCE module = nullptr)
        : CCustomTabPageDialog(templateId, module, nullptr), m_name(std::move(name)), m_journal(journal) {
        if (!templateId) {
            uc::ui::DialogTemplate t(WS_CHILD | DS_CONTROL, 0, 0, 0, 100, 50, L"", L"MS Shell Dlg", 8);
            t.Add(L"STATIC", L"content", 1500, WS_CHILD | WS_VISIBLE, 2, 2, 60, 10);
            SetTemplate(t.Words());
        }
    }
    ~TestTabPage() override { ++m_journal.deleted; }
    void ApplyPage() override { m_journal.applied.push_back(m_name); }
    HFONT fontGiven = nullptr;

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg == WM_SETFONT) fontGiven = reinterpret_cast<HFONT>(wp);
        return CCustomTabPageDialog::WindowProc(msg, wp, lp);
    }

private:
    std::string m_name;
    Journal& m_journal;
};

class TestTabbed : public uc::test::Stepped<TestTabbed, CTabbedCustomDialog> {
public:
    explicit TestTabbed(Journal& journal) : Stepped(0, 1300, nullptr), m_journal(journal) { SetTemplate(TabbedTemplate()); }
    bool withMissing = false;

protected:
    void CreateTabs() override {
        AddTab("tab.first", new TestTabPage("first", m_journal));
        AddTab("tab.none", nullptr);
        AddTab("tab.second", new TestTabPage("second", m_journal));
        AddTab("tab.third", new TestTabPage("third", m_journal, IDD_DIALOG_TEST_PAGE, ::GetModuleHandleW(nullptr)));
        if (withMissing) AddTab("tab.missing", new TestTabPage("missing", m_journal, 4242, ::GetModuleHandleW(nullptr)));
    }

private:
    Journal& m_journal;
};

std::vector<bool> Visibility(const TestTabbed& d) {
    std::vector<bool> v;
    for (std::size_t i = 0; i < d.PageCount(); ++i)
        v.push_back((::GetWindowLongPtrW(d.Page(i)->GetHwnd(), GWL_STYLE) & WS_VISIBLE) != 0);
    return v;
}

TEST_F(SheetTest, TabbedDialogShowsOneOwnedPageAtATimeInThePageArea) {
    uc::SetLocalisedString("tab.first", L"Erste");
    Journal journal;
    {
        TestTabbed d(journal);
        d.steps = [](TestTabbed& self) {
            ASSERT_EQ(self.PageCount(), 3u) << "the tab with a null page is not added";
            HWND tab = self.TabControl();
            EXPECT_EQ(TabText(tab, 0), L"Erste");
            EXPECT_EQ(Visibility(self), (std::vector<bool>{true, false, false}));

            // The area: the tab control's client area below its items, inset 2, 3, 4, 4.
            RECT client{}, item{};
            ::GetClientRect(tab, &client);
            ::SendMessageW(tab, TCM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&item));
            RECT expected{client.left + 2, client.top + (item.bottom - item.top) + 3, client.right - 4, client.bottom - 4};
            ::MapWindowPoints(tab, self.GetHwnd(), reinterpret_cast<POINT*>(&expected), 2);
            for (std::size_t i = 0; i < self.PageCount(); ++i) {
                const RECT r = ChildRect(self.GetHwnd(), self.Page(i)->GetHwnd());
                EXPECT_TRUE(::EqualRect(&r, &expected)) << i;
            }
            EXPECT_EQ(self.PageArea().top, expected.top);

            // The page from the program's own resources has the dialog's font.
            EXPECT_EQ(static_cast<TestTabPage*>(self.Page(2))->fontGiven,
                      reinterpret_cast<HFONT>(::SendMessageW(self.GetHwnd(), WM_GETFONT, 0, 0)));

            // Selecting a tab by clicking it shows its page only.
            RECT third{};
            ::SendMessageW(tab, TCM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&third));
            const LPARAM at = MAKELPARAM((third.left + third.right) / 2, (third.top + third.bottom) / 2);
            ::SendMessageW(tab, WM_LBUTTONDOWN, MK_LBUTTON, at);
            ::SendMessageW(tab, WM_LBUTTONUP, 0, at);
            EXPECT_EQ(::SendMessageW(tab, TCM_GETCURSEL, 0, 0), 2);
            EXPECT_EQ(Visibility(self), (std::vector<bool>{false, false, true}));
            uc::test::ClickWithMouseMessages(self.Item(IDOK));
        };
        EXPECT_EQ(d.DoModal(), IDOK);
        // OK applied every page in tab order, including the one never shown.
        EXPECT_EQ(journal.applied, (std::vector<std::string>{"first", "second", "third"}));
        EXPECT_EQ(journal.deleted, 3) << "the dialog owns and deletes its pages";
        EXPECT_EQ(d.PageCount(), 0u);
    }
    EXPECT_EQ(journal.deleted, 3) << "and only once";
}

TEST_F(SheetTest, TabbedDialogCancelAppliesNothingAndAMissingPageIsKeptOutOfApply) {
    Journal journal;
    TestTabbed d(journal);
    d.withMissing = true;
    d.steps = [](TestTabbed& self) {
        EXPECT_EQ(self.PageCount(), 4u);
        EXPECT_EQ(self.Page(3)->GetHwnd(), nullptr) << "its template is missing";
        uc::test::ClickWithMouseMessages(self.Item(IDCANCEL));
    };
    EXPECT_EQ(d.DoModal(), IDCANCEL);
    EXPECT_TRUE(journal.applied.empty());
    EXPECT_EQ(journal.deleted, 4);
    EXPECT_EQ(zelLogger::Instance().Count(L"tab 'tab.missing': its page could not be created"), 1u);
}

}  // namespace
