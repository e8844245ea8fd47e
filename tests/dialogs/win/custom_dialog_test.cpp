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
using uc::test::TextOf;

namespace {

// A console dialog whose test steps run inside its modal loop (posted after WM_INITDIALOG).
class TestDialog : public uc::test::Stepped<TestDialog, CCustomDialog> {
public:
    TestDialog() { SetTemplate(ConsoleTemplate()); }
    std::function<void(TestDialog&)> beforeInit;  // before the base initialisation (derived dialogs set fields here)
    std::function<void(uc::ui::PaintDC&)> draw;
    int cancels = 0;

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
    // Runs `d` with `steps`, which must end it with OK.
    static void Run(TestDialog& d, std::function<void(TestDialog&)> steps) {
        d.steps = std::move(steps);
        EXPECT_EQ(d.DoModal(), IDOK);
    }
};

TEST_F(CustomDialogTest, OpensTranslatedTitledCentredWithCursorAndResizer) {
    uc::SetLocalisedString("Apply", L"Anwenden");
    uc::SetLocalisedString("dialog.title", L"Image settings");
    uc::SetLocalisedString("inner", L"innen");
    while (::ShowCursor(FALSE) >= 0) {
    }
    const int hidden = ::ShowCursor(TRUE) - 1;
    ::ShowCursor(FALSE);
    TestDialog d;
    d.m_title = L"dialog.title";
    d.beforeInit = [](TestDialog& self) {
        // A grandchild (a control inside a group's own child window) is translated too.
        ::CreateWindowExW(0, L"STATIC", L"inner", WS_CHILD | WS_VISIBLE, 2, 2, 40, 12, self.Item(uc::test::kGroupId),
                          reinterpret_cast<HMENU>(77), nullptr, nullptr);
    };
    Run(d, [](TestDialog& self) {
        EXPECT_EQ(TextOf(self.Item(uc::test::kApplyId)), L"Anwenden");
        EXPECT_EQ(TextOf(self.Item(uc::test::kPlainId)), L"no translation") << "unknown texts unchanged";
        EXPECT_EQ(TextOf(::GetDlgItem(self.Item(uc::test::kGroupId), 77)), L"innen");
        HWND title = self.Item(uc::ui::kTitleLabelId);
        EXPECT_EQ(TextOf(title), L"Image settings") << "the title is translated with the rest";
        self.SetTitle(L"Second");
        EXPECT_EQ(TextOf(title), L"Image settings") << "a title shown is never overwritten";
        ::SetWindowTextW(title, L"");
        self.SetTitle(L"Third");
        EXPECT_EQ(TextOf(title), L"Third") << "a cleared label takes a new title";

        // Centred on the middle of the dialog area, each half truncated.
        const RECT w = self.WindowRect();
        EXPECT_EQ(w.left, 500 - (w.right - w.left) / 2);
        EXPECT_EQ(w.top, 380 - (w.bottom - w.top) / 2);
        EXPECT_GE(::ShowCursor(TRUE) - 1, 0) << "the cursor shows while the dialog is modal";
        ::ShowCursor(FALSE);
        EXPECT_EQ(uc::test::BkModeAfterCtlColor(self.GetHwnd(), self.Item(uc::test::kPlainId)), OPAQUE)
            << "without a colour the controls keep their background";

        // Registered controls follow a resize.
        self.m_resizer.Init(self.GetHwnd());
        ASSERT_TRUE(self.m_resizer.Add(IDOK, uc::ui::kAnchorBottomRight));
        RECT before{}, after{};
        ::GetWindowRect(self.Item(IDOK), &before);
        ::SetWindowPos(self.GetHwnd(), nullptr, 0, 0, w.right - w.left + 40, w.bottom - w.top + 20, SWP_NOMOVE | SWP_NOZORDER);
        ::GetWindowRect(self.Item(IDOK), &after);
        EXPECT_EQ(after.left - before.left, 40);
        EXPECT_EQ(after.top - before.top, 20);
        self.EndDialog(IDOK);
    });
    EXPECT_EQ(::ShowCursor(TRUE) - 1, hidden) << "hidden again after";
    while (::ShowCursor(TRUE) < 0) {
    }
}

TEST_F(CustomDialogTest, UntitledFlatDialogTranslatesPaintsAndHasTransparentControlText) {
    uc::SetLocalisedString("Apply", L"Anwenden");
    TestDialog d;
    d.SetBkColor(RGB(10, 40, 90));
    d.m_showTitle = FALSE;
    d.draw = [](uc::ui::PaintDC& dc) {
        RECT r{2, 2, 8, 8};
        uc::UniqueHBrush red(::CreateSolidBrush(RGB(255, 0, 0)));
        ::FillRect(dc, &r, red.get());
    };
    Run(d, [](TestDialog& self) {
        EXPECT_EQ(self.Item(uc::ui::kTitleLabelId), nullptr);
        EXPECT_EQ(TextOf(self.Item(uc::test::kApplyId)), L"Anwenden");
        ::ShowWindow(self.GetHwnd(), SW_SHOW);
        const RECT c = self.ClientRect();
        EXPECT_EQ(uc::test::ClientPixel(self.GetHwnd(), {c.right - 3, c.bottom - 3}), 0x0A285Au) << "the dialog's colour";
        EXPECT_EQ(uc::test::ClientPixel(self.GetHwnd(), {5, 5}), 0xFF0000u) << "what OnDraw painted";
        EXPECT_EQ(uc::test::BkModeAfterCtlColor(self.GetHwnd(), self.Item(uc::test::kPlainId)), TRANSPARENT);
        self.EndDialog(IDOK);
    });
}

TEST_F(CustomDialogTest, TouchPanelHearsOpenAndDestroyOnlyWhenAskedAndPresent) {
    uc::test::TouchPanel touch;
    ASSERT_TRUE(touch.Create(0, nullptr, L"touch", WS_POPUP, {0, 0, 10, 10}, nullptr, 0));
    HWND stale = nullptr;
    {
        uc::test::ForeignWindow gone;
        stale = gone.hwnd;
    }
    const struct {
        HWND panel;
        BOOL notify, passSelf;
        bool heard;
    } cases[] = {{touch.GetHwnd(), TRUE, TRUE, true},   {touch.GetHwnd(), TRUE, FALSE, true},
                 {touch.GetHwnd(), FALSE, TRUE, false}, {stale, TRUE, TRUE, false},
                 {nullptr, TRUE, TRUE, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "notify " << c.notify << " self " << c.passSelf << " panel " << c.panel);
        touch.received.clear();
        CCustomDialog::m_touch = c.panel;
        TestDialog d;
        d.m_touchNotify = c.notify;
        d.m_touchPassSelf = c.passSelf;
        WPARAM self = 0;
        Run(d, [&](TestDialog& dialog) {
            self = reinterpret_cast<WPARAM>(static_cast<CCustomDialog*>(&dialog));
            EXPECT_EQ(touch.received.size(), c.heard ? 1u : 0u) << "the open notification comes with the dialog";
            EXPECT_EQ(dialog.TouchReply(), c.heard ? uc::test::TouchPanel::kReply : 0);
            dialog.EndDialog(IDOK);
        });
        if (!c.heard) {
            EXPECT_TRUE(touch.received.empty());
            continue;
        }
        ASSERT_EQ(touch.received.size(), 2u);
        EXPECT_EQ(touch.received[0].msg, 0x8048u);
        EXPECT_EQ(touch.received[0].wp, c.passSelf ? self : 0u);
        EXPECT_EQ(touch.received[0].lp, 0);
        EXPECT_EQ(touch.received[1].msg, 0x804Eu);
        EXPECT_EQ(touch.received[1].wp, 0u);
        EXPECT_EQ(touch.received[1].lp, 0);
    }
}

TEST_F(CustomDialogTest, SystemCloseIsIgnoredButTheButtonsStillWork) {
    TestDialog d;
    Run(d, [](TestDialog& self) {
        ::SendMessageW(self.GetHwnd(), WM_SYSCOMMAND, SC_CLOSE, 0);  // title-bar close and Alt+F4
        ::SendMessageW(self.GetHwnd(), WM_CLOSE, 0, 0);
        // The default close posts a Cancel: dispatch what was posted before looking.
        MSG posted{};
        while (::PeekMessageW(&posted, self.GetHwnd(), 0, 0, PM_REMOVE)) ::DispatchMessageW(&posted);
        EXPECT_EQ(self.cancels, 0) << "the dialog stays open";
        uc::test::ClickWithMouseMessages(self.Item(IDOK));
    });
}

TEST_F(CustomDialogTest, DialogLargerThanTheAreaIsPlacedPartlyOutside) {
    utilsExam::SetDialogRect({0, 0, 200, 100});
    TestDialog d;
    Run(d, [](TestDialog& self) {
        const RECT w = self.WindowRect();
        ASSERT_GT(w.right - w.left, 200);
        EXPECT_EQ(w.left, 100 - (w.right - w.left) / 2) << "no clamping";
        self.EndDialog(IDOK);
    });
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
    Run(d, [](TestDialog& self) {
        HWND combo = self.Item(uc::test::kDrivesId);
        wchar_t text[MAX_PATH] = {};
        COMBOBOXEXITEMW item{};
        item.mask = CBEIF_TEXT | CBEIF_LPARAM;
        item.pszText = text;
        item.cchTextMax = MAX_PATH;
        auto itemAt = [&](int i) {
            item.iItem = i;
            return ::SendMessageW(combo, CBEM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) != 0;
        };
        self.AddRemovableDrives(combo, "export.network");
        EXPECT_NE(::SendMessageW(combo, CBEM_GETIMAGELIST, 0, 0), 0) << "the system's small icons";
        const int count = static_cast<int>(::SendMessageW(combo, CB_GETCOUNT, 0, 0));
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
    });
}

}  // namespace
