// Shared pieces of the dialog tests.
#include "dialog_test_support.h"

#include <commctrl.h>

#include "platform/win/handles.h"
#include "ui/win/dialog.h"

namespace uc::test {

std::vector<WORD> ConsoleTemplate() {
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_USEREX_CLASSES | ICC_TAB_CLASSES};
    ::InitCommonControlsEx(&icc);
    uc::ui::DialogTemplate t(WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, 0, 0, 0, 260, 160, L"console");
    t.Add(L"BUTTON", L"OK", IDOK, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 150, 140, 50, 14)
        .Add(L"BUTTON", L"Cancel", IDCANCEL, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 205, 140, 50, 14)
        .Add(L"BUTTON", L"Apply", kApplyId, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 95, 140, 50, 14)
        .Add(L"STATIC", L"no translation", kPlainId, WS_CHILD | WS_VISIBLE, 10, 60, 100, 10)
        .Add(L"STATIC", L"", kGroupId, WS_CHILD | WS_VISIBLE, 10, 75, 100, 20)
        .Add(L"ComboBoxEx32", L"", kDrivesId, WS_CHILD | WS_VISIBLE | CBS_DROPDOWNLIST, 120, 60, 130, 80);
    return t.Words();
}

int BkModeAfterCtlColor(HWND dialog, HWND control) {
    uc::UniqueHdc dc(::CreateCompatibleDC(nullptr));
    ::SetBkMode(dc.get(), OPAQUE);
    ::SendMessageW(dialog, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc.get()), reinterpret_cast<LPARAM>(control));
    return ::GetBkMode(dc.get());
}

std::uint32_t ClientPixel(HWND hwnd, POINT at) {
    const uc::ui::Pixels px = uc::ui::ReadPixels(uc::ui::CaptureWindow(hwnd).get());
    RECT w{};
    ::GetWindowRect(hwnd, &w);
    ::ClientToScreen(hwnd, &at);
    return px.width ? px.At(at.x - w.left, at.y - w.top) : 0xFFFFFFFFu;
}

int DarkPixels(const uc::ui::Pixels& px, const RECT& r) {
    int dark = 0;
    for (int y = r.top; y < r.bottom; ++y)
        for (int x = r.left; x < r.right; ++x) dark += (px.At(x, y) & 0xFF) < 0x60 ? 1 : 0;
    return dark;
}

LRESULT TouchPanel::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    if (msg != UWM_TOUCH_DIALOG_OPEN && msg != UWM_TOUCH_DIALOG_CLOSE) return Window::WindowProc(msg, wp, lp);
    received.push_back({msg, wp, lp});
    return msg == UWM_TOUCH_DIALOG_OPEN ? kReply : 0;
}

void ClickWithMouseMessages(HWND hwnd) {
    RECT r{};
    ::GetClientRect(hwnd, &r);
    const LPARAM at = MAKELPARAM(r.right / 2, r.bottom / 2);
    // Sent, not posted: between two posted messages another program's window taking the focus cancels the
    // button's capture, and the click is lost.
    ::SendMessageW(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(hwnd, WM_LBUTTONUP, 0, at);
}

namespace {
void CALLBACK Watchdog(HWND hwnd, UINT, UINT_PTR id, DWORD) {
    ::KillTimer(hwnd, id);
    if (::SendMessageW(hwnd, PSM_GETTABCONTROL, 0, 0)) {
        ::PostMessageW(hwnd, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);  // a property sheet
    } else {
        ::EndDialog(hwnd, kWatchdogResult);
    }
}
}  // namespace

void ArmWatchdog(HWND hwnd) { ::SetTimer(hwnd, 0x7E57, 20000, &Watchdog); }

}  // namespace uc::test
