// CCustomDialog on screen: translation, title, centring, touch-panel messages, system close, colours, drives.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <vector>

#include "dialog_test_support.h"
#include "dialogs/win/custom_dialog.h"
#include "platform/localisation.h"
#include "platform/paths.h"
#include "dialogs_test_ids.h"
#include "ui/win/capture.h"
#include "ui/win/window.h"
#include "ui_test_support.h"

using uc::test::ConsoleTemplate;

namespace {

// A console dialog whose test steps run inside its modal loop (posted after WM_INITDIALOG).
class TestDialog : public uc::test::Stepped<TestDialog, CCustomDialog> {
public:
    TestDialog() { SetTemplate(ConsoleTemplate()); }
    std::function<void(TestDialog&)> beforeInit;  // before the base initialisation (derived dialogs set fields here)
    std::function<void(uc::ui::PaintDC&)> draw;
    int systemCloses = 0, cancels = 0;

    using CCustomDialog::m_showTitle;
    using CCustomDialog::m_title;
    using CCustomDialog::m_touchNotify;
    using CCustomDialog::m_touchPassSelf;
    using CCustomDialog::m_resizer;
    using CCustomDialog::SetTitle;
    using CCustomDialog::AddRemovableDrives;

protected:
    BOOL OnInitDialog() override {
        if (beforeInit) beforeInit(*this);
        return Stepped::OnInitDialog();
    }
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg == WM_SYSCOMMAND && (wp & 0xFFF0) == SC_CLOSE) ++systemCloses;
        return Stepped::WindowProc(msg, wp, lp);
    }
    void OnCancel() override {
        ++cancels;
        CCustomDialog::OnCancel();
    }
    void OnDraw(uc::ui::PaintDC& dc) override {
        if (draw) draw(dc);
    }
};

class CustomDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::ClearLocalisedStrings();
        utilsExam::SetDialogRect({100, 80, 900, 680});
        CCustomDialog::m_touch = nullptr;
    }
    void TearDown() override {
        uc::ClearLocalisedStrings();
        utilsExam::SetDialogRect({});
        CCustomDialog::m_touch = nullptr;
    }
};

TEST_F(CustomDialogTest, OpensTranslatedTitledAndCentredInTheDialogArea) {
    uc::SetLocalisedString("Apply", L"Anwenden");
    uc::SetLocalisedString("dialog.title", L"Image settings");
    uc::SetLocalisedString("inner", L"innen");
    TestDialog d;
    d.m_title = L"dialog.title";
    d.beforeInit = [](TestDialog& self) {
        // A grandchild (a control inside a group's own child window) is translated too.
        HWND group = self.Item(uc::test::kGroupId);
        ::CreateWindowExW(0, L"STATIC", L"inner", WS_CHILD | WS_VISIBLE, 2, 2, 40, 12, group,
                          reinterpret_cast<HMENU>(77), nullptr, nullptr);
    };
    d.steps = [](TestDialog& self) {
        EXPECT_EQ(uc::test::TextOf(self.Item(uc::test::kApplyId)), L"Anwenden");
        EXPECT_EQ(uc::test::TextOf(self.Item(uc::test::kPlainId)), L"no translation") << "unknown texts unchanged";
        EXPECT_EQ(uc::test::TextOf(::GetDlgItem(self.Item(uc::test::kGroupId), 77)), L"innen");

        HWND title = self.Item(uc::ui::kTitleLabelId);
        ASSERT_NE(title, nullptr);
        EXPECT_EQ(uc::test::TextOf(title), L"Image settings") << "the title is translated with the rest";
        RECT r{};
        ::GetWindowRect(title, &r);
        ::MapWindowPoints(HWND_DESKTOP, self.GetHwnd(), reinterpret_cast<POINT*>(&r), 2);
        const RECT client = self.ClientRect();
        EXPECT_EQ(r.left, 10);
        EXPECT_EQ(r.top, 14);
        EXPECT_EQ(r.right, client.right - 10);
        EXPECT_EQ(r.bottom, 80);
        const CLabel& label = self.TitleLabel();
        EXPECT_EQ(label.TextColor(), 0xC0C0C0u);
        EXPECT_EQ(label.HiliteColor(), 0u);
        EXPECT_TRUE(label.Transparent());
        EXPECT_TRUE(label.Font3D());
        EXPECT_STREQ(label.LogFont().lfFaceName, L"Arial");
        EXPECT_EQ(label.LogFont().lfWeight, FW_BOLD);
        EXPECT_EQ(label.LogFont().lfCharSet, 0);

        // Centred on the middle of the dialog area, each half truncated.
        const RECT w = self.WindowRect();
        EXPECT_EQ(w.left, 500 - (w.right - w.left) / 2);
        EXPECT_EQ(w.top, 380 - (w.bottom - w.top) / 2);
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);
}

TEST_F(CustomDialogTest, ATitleShownIsNeverOverwrittenAndWithoutTitleControlsAreStillTranslated) {
    TestDialog d;
    d.m_title = L"First";
    d.steps = [](TestDialog& self) {
        self.SetTitle(L"Second");
        EXPECT_EQ(uc::test::TextOf(self.Item(uc::ui::kTitleLabelId)), L"First");
        ::SetWindowTextW(self.Item(uc::ui::kTitleLabelId), L"");
        self.SetTitle(L"Third");
        EXPECT_EQ(uc::test::TextOf(self.Item(uc::ui::kTitleLabelId)), L"Third") << "a cleared label takes a new title";
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);

    uc::SetLocalisedString("Apply", L"Anwenden");
    TestDialog untitled;
    untitled.m_showTitle = FALSE;
    untitled.steps = [](TestDialog& self) {
        EXPECT_EQ(self.Item(uc::ui::kTitleLabelId), nullptr);
        EXPECT_EQ(uc::test::TextOf(self.Item(uc::test::kApplyId)), L"Anwenden");
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(untitled.DoModal(), IDOK);
}

TEST_F(CustomDialogTest, TouchPanelHearsOpenWithTheDialogAndDestroy) {
    uc::test::TouchPanel touch;
    ASSERT_TRUE(touch.Create(0, nullptr, L"touch", WS_POPUP, {0, 0, 10, 10}, nullptr, 0));
    CCustomDialog::m_touch = touch.GetHwnd();
    TestDialog d;
    d.m_touchNotify = TRUE;
    d.m_touchPassSelf = TRUE;
    d.steps = [&](TestDialog& self) {
        ASSERT_EQ(touch.received.size(), 1u);
        EXPECT_EQ(touch.received[0].msg, 0x8048u);
        EXPECT_EQ(touch.received[0].wp, reinterpret_cast<WPARAM>(static_cast<CCustomDialog*>(&self)));
        EXPECT_EQ(touch.received[0].lp, 0);
        EXPECT_EQ(self.TouchReply(), 0x1234);
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);
    ASSERT_EQ(touch.received.size(), 2u);
    EXPECT_EQ(touch.received[1].msg, 0x804Eu);
    EXPECT_EQ(touch.received[1].wp, 0u);
    EXPECT_EQ(touch.received[1].lp, 0);

    // Without passing itself the open notification carries 0; without notify nothing is sent.
    touch.received.clear();
    TestDialog anonymous;
    anonymous.m_touchNotify = TRUE;
    EXPECT_EQ(anonymous.DoModal(), IDOK);
    ASSERT_EQ(touch.received.size(), 2u);
    EXPECT_EQ(touch.received[0].wp, 0u);
    touch.received.clear();
    TestDialog quiet;
    EXPECT_EQ(quiet.DoModal(), IDOK);
    EXPECT_TRUE(touch.received.empty());

    // A stale or missing touch window is skipped.
    HWND stale = nullptr;
    {
        uc::test::ForeignWindow gone;
        stale = gone.hwnd;
    }
    for (HWND gone : {stale, static_cast<HWND>(nullptr)}) {
        CCustomDialog::m_touch = gone;
        TestDialog skipped;
        skipped.m_touchNotify = TRUE;
        EXPECT_EQ(skipped.DoModal(), IDOK);
        EXPECT_EQ(skipped.TouchReply(), 0);
    }
}

TEST_F(CustomDialogTest, SystemCloseIsIgnoredButTheButtonsStillWork) {
    TestDialog d;
    d.steps = [](TestDialog& self) {
        ::SendMessageW(self.GetHwnd(), WM_SYSCOMMAND, SC_CLOSE, 0);  // title-bar close and Alt+F4
        ::SendMessageW(self.GetHwnd(), WM_CLOSE, 0, 0);
        EXPECT_EQ(self.cancels, 0) << "the dialog stays open";
        // A real click on the dialog's OK button ends it.
        uc::test::ClickWithMouseMessages(self.Item(IDOK));
    };
    EXPECT_EQ(d.DoModal(), IDOK);
}

TEST_F(CustomDialogTest, AltF4FromTheKeyboardLeavesTheDialogOpen) {
    TestDialog d;
    d.steps = [&](TestDialog& self) {
        ::ShowWindow(self.GetHwnd(), SW_SHOW);
        ::SetForegroundWindow(self.GetHwnd());
        uc::test::PressAltF4();
        // The keys arrive as input of this thread: wait until the close command they make has been handled.
        EXPECT_TRUE(uc::test::WaitFor([&] { return self.systemCloses > 0; }));
        uc::test::ClickWithMouseMessages(self.Item(IDOK));
    };
    EXPECT_EQ(d.DoModal(), IDOK);
    EXPECT_EQ(d.systemCloses, 1) << "Alt+F4 reached the dialog";
    EXPECT_EQ(d.cancels, 0) << "and did not cancel it";
}

TEST_F(CustomDialogTest, FlatBackgroundTransparentControlTextAndOnDrawWithThePaintDC) {
    TestDialog d;
    d.SetBkColor(RGB(10, 40, 90));
    d.m_showTitle = FALSE;
    d.draw = [](uc::ui::PaintDC& dc) {
        RECT r{2, 2, 8, 8};
        uc::UniqueHBrush red(::CreateSolidBrush(RGB(255, 0, 0)));
        ::FillRect(dc, &r, red.get());
    };
    d.steps = [](TestDialog& self) {
        ::ShowWindow(self.GetHwnd(), SW_SHOW);
        const RECT c = self.ClientRect();
        EXPECT_EQ(uc::test::ClientPixel(self.GetHwnd(), {c.right - 3, c.bottom - 3}), 0x0A285Au) << "the dialog's colour";
        EXPECT_EQ(uc::test::ClientPixel(self.GetHwnd(), {5, 5}), 0xFF0000u) << "what OnDraw painted";
        EXPECT_EQ(uc::test::BkModeAfterCtlColor(self.GetHwnd(), self.Item(uc::test::kPlainId)), TRANSPARENT);
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);

    TestDialog plain;
    plain.steps = [](TestDialog& self) {
        EXPECT_EQ(uc::test::BkModeAfterCtlColor(self.GetHwnd(), self.Item(uc::test::kPlainId)), OPAQUE)
            << "without a colour the controls keep their background";
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(plain.DoModal(), IDOK);
}

TEST_F(CustomDialogTest, CursorIsVisibleWhileModalAndHiddenAgainAfter) {
    while (::ShowCursor(FALSE) >= 0) {
    }
    const int hidden = ::ShowCursor(TRUE) - 1;
    ::ShowCursor(FALSE);
    int during = -100;
    TestDialog d;
    d.steps = [&](TestDialog& self) {
        during = ::ShowCursor(TRUE) - 1;
        ::ShowCursor(FALSE);
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);
    EXPECT_GE(during, 0);
    EXPECT_EQ(::ShowCursor(TRUE) - 1, hidden);
    while (::ShowCursor(TRUE) < 0) {
    }
}

TEST_F(CustomDialogTest, DialogLargerThanTheAreaIsPlacedPartlyOutside) {
    utilsExam::SetDialogRect({0, 0, 200, 100});
    TestDialog d;
    d.steps = [](TestDialog& self) {
        const RECT w = self.WindowRect();
        ASSERT_GT(w.right - w.left, 200);
        EXPECT_EQ(w.left, 100 - (w.right - w.left) / 2);
        EXPECT_LT(w.left, 0) << "no clamping";
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);
}

TEST_F(CustomDialogTest, ResizerMovesRegisteredControlsOnSize) {
    TestDialog d;
    d.steps = [](TestDialog& self) {
        self.m_resizer.Init(self.GetHwnd());
        ASSERT_TRUE(self.m_resizer.Add(IDOK, uc::ui::kAnchorBottomRight));
        RECT before{};
        ::GetWindowRect(self.Item(IDOK), &before);
        const RECT w = self.WindowRect();
        ::SetWindowPos(self.GetHwnd(), nullptr, 0, 0, w.right - w.left + 40, w.bottom - w.top + 20,
                       SWP_NOMOVE | SWP_NOZORDER);
        RECT after{};
        ::GetWindowRect(self.Item(IDOK), &after);
        EXPECT_EQ(after.left - before.left, 40);
        EXPECT_EQ(after.top - before.top, 20);
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);
}

TEST_F(CustomDialogTest, StringResourcesFromTheProgramOrAModule) {
    EXPECT_EQ(CCustomDialog::GetStringResource(IDS_DIALOG_TEST_TEXT, nullptr), L"Text of the test program");
    EXPECT_EQ(CCustomDialog::GetStringResource(IDS_DIALOG_TEST_TEXT, ::GetModuleHandleW(nullptr)),
              L"Text of the test program");
    EXPECT_EQ(CCustomDialog::GetStringResource(4711, nullptr), L"");
}

TEST_F(CustomDialogTest, DriveListOffersNeitherSystemDriveAndStartsWithTheNetwork) {
    uc::SetLocalisedString("export.network", L"Network");
    TestDialog d;
    d.steps = [](TestDialog& self) {
        HWND combo = self.Item(uc::test::kDrivesId);
        ASSERT_NE(combo, nullptr);
        self.AddRemovableDrives(combo, "export.network");
        EXPECT_NE(::SendMessageW(combo, CBEM_GETIMAGELIST, 0, 0), 0) << "the system's small icons";
        const int count = static_cast<int>(::SendMessageW(combo, CB_GETCOUNT, 0, 0));
        ASSERT_GE(count, 1);
        wchar_t text[MAX_PATH] = {};
        COMBOBOXEXITEMW item{};
        item.mask = CBEIF_TEXT | CBEIF_LPARAM;
        item.pszText = text;
        item.cchTextMax = MAX_PATH;
        auto itemAt = [&](int i) {
            item.iItem = i;
            return ::SendMessageW(combo, CBEM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) != 0;
        };
        ASSERT_TRUE(itemAt(0));
        EXPECT_STREQ(text, L"Network");
        EXPECT_EQ(item.lParam, 0);
        for (int i = 1; i < count; ++i) {
            ASSERT_TRUE(itemAt(i));
            const auto* root = reinterpret_cast<const std::wstring*>(item.lParam);
            ASSERT_NE(root, nullptr);
            EXPECT_TRUE(*root != L"C:\\" && *root != L"D:\\" && root->size() == 3u) << *root;
        }
        // Wine maps Z: to the file system's root, a fixed drive: it is offered.
        if (::GetDriveTypeW(L"Z:\\") == DRIVE_FIXED) {
            EXPECT_GE(count, 2);
        }
        CCustomDialog::ReleaseDriveItems(combo);
        EXPECT_EQ(::SendMessageW(combo, CB_GETCOUNT, 0, 0), 0);

        self.AddRemovableDrives(combo, nullptr);
        if (itemAt(0)) {
            EXPECT_NE(item.lParam, 0) << "without a network key the first item is a drive";
        }
        CCustomDialog::ReleaseDriveItems(combo);
        self.EndDialog(IDOK);
    };
    EXPECT_EQ(d.DoModal(), IDOK);
}

}  // namespace
