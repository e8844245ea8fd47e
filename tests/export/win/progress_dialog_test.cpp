// The burn's progress dialog: steps, percentages and the minimise button posted from the burn thread reach the
// window on its own thread, in order; the close posted from there destroys it.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <thread>

#include "export/burn_presenter.h"
#include "export/win/burn_progress_dialog.h"

namespace {
using uc::exporting::BurnProgressDialog;

// Dispatches this thread's messages until `done` holds (at most 5 s of real time: a window test needs a pump).
template <class F>
bool PumpUntil(F done) {
    for (int i = 0; i < 500 && !done(); ++i) {
        MSG m;
        while (::PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
            ::TranslateMessage(&m);
            ::DispatchMessageW(&m);
        }
        if (!done()) ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
    }
    return done();
}

std::wstring StepText(HWND dialog) {
    wchar_t text[256] = {};
    ::GetDlgItemTextW(dialog, BurnProgressDialog::StepTextId, text, 256);
    return text;
}

TEST(BurnProgress, UpdatesFromTheBurnThreadArriveInOrderAndTheCloseDestroysIt) {
    BurnProgressDialog dialog;
    ASSERT_TRUE(dialog.Open(L"CD-R", nullptr));
    const HWND hwnd = dialog.GetHwnd();
    wchar_t title[32] = {};
    ::GetWindowTextW(hwnd, title, 32);
    EXPECT_STREQ(title, L"CD-R");
    EXPECT_EQ(::GetWindowLongPtrW(hwnd, GWL_STYLE) & WS_MINIMIZEBOX, 0);

    std::thread burn([&] {
        for (int i = 0; i <= 100; i += 10) {
            dialog.PostStep(L"step " + std::to_wstring(i));
            dialog.PostPercent(i);
        }
        dialog.PostMinimizeButton(true);
    });
    burn.join();
    ASSERT_TRUE(PumpUntil([&] { return StepText(hwnd) == L"step 100"; }));
    EXPECT_EQ(::SendMessageW(::GetDlgItem(hwnd, BurnProgressDialog::ProgressBarId), PBM_GETPOS, 0, 0), 100);
    EXPECT_TRUE(PumpUntil([&] { return (::GetWindowLongPtrW(hwnd, GWL_STYLE) & WS_MINIMIZEBOX) != 0; }));

    std::thread([&] {
        dialog.PostClose();
        dialog.PostStep(L"too late");  // dropped with the window, not leaked into a dead one
    }).join();
    EXPECT_TRUE(PumpUntil([&] { return !::IsWindow(hwnd); }));
}

TEST(BurnProgress, ThePresenterOpensUpdatesAndClosesTheDialog) {
    auto presenter = uc::exporting::PlatformBurnPresenter();
    presenter->CreateProgress(L"CD-R");
    HWND hwnd = nullptr;
    ASSERT_TRUE(PumpUntil([&] { return (hwnd = ::FindWindowW(nullptr, L"CD-R")) != nullptr; }));
    std::thread([&] { presenter->ShowStep(L"writing"); }).join();
    EXPECT_TRUE(PumpUntil([&] { return StepText(hwnd) == L"writing"; }));
    std::thread([&] { presenter->DestroyProgress(); }).join();
    EXPECT_TRUE(PumpUntil([&] { return !::IsWindow(hwnd); }));
    presenter->CreateProgress(L"CD-R");  // a second burn gets a new dialog
    EXPECT_TRUE(PumpUntil([&] { return ::FindWindowW(nullptr, L"CD-R") != nullptr; }));
    presenter->DestroyProgress();
    EXPECT_TRUE(PumpUntil([&] { return ::FindWindowW(nullptr, L"CD-R") == nullptr; }));
}

}  // namespace
