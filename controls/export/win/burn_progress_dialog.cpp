// The burn's progress dialog, built from an in-memory template on the window framework.
#include "export/win/burn_progress_dialog.h"

#include <commctrl.h>

namespace uc::exporting {
namespace {
constexpr UINT kStepMessage = WM_APP + 0x60;      // lParam: a heap std::wstring the handler takes over
constexpr UINT kPercentMessage = WM_APP + 0x61;   // wParam: 0 to 100
constexpr UINT kMinimizeMessage = WM_APP + 0x62;  // wParam: show
constexpr UINT kCloseMessage = WM_APP + 0x63;
}  // namespace

BurnProgressDialog::BurnProgressDialog() {
    uc::ui::DialogTemplate t(DS_MODALFRAME | DS_CENTER | WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE, 0, 0, 0, 240,
                             56, L"");
    t.Add(L"STATIC", L"", StepTextId, WS_CHILD | WS_VISIBLE | SS_LEFTNOWORDWRAP, 8, 8, 224, 12)
        .Add(PROGRESS_CLASSW, L"", ProgressBarId, WS_CHILD | WS_VISIBLE, 8, 28, 224, 12);
    SetTemplate(t.Words());
}

bool BurnProgressDialog::Open(const std::wstring& title, HWND owner) {
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_PROGRESS_CLASS};
    ::InitCommonControlsEx(&icc);
    if (!CreateModeless(owner)) return false;
    SetText(title);
    return true;
}

BOOL BurnProgressDialog::OnInitDialog() {
    ::SendMessageW(Item(ProgressBarId), PBM_SETRANGE32, 0, 100);
    return FALSE;
}

void BurnProgressDialog::PostStep(const std::wstring& text) const {
    auto* copy = new std::wstring(text);
    if (!GetHwnd() || !Post(kStepMessage, 0, reinterpret_cast<LPARAM>(copy))) delete copy;
}

void BurnProgressDialog::PostPercent(int percent) const {
    if (GetHwnd()) Post(kPercentMessage, static_cast<WPARAM>(percent < 0 ? 0 : percent > 100 ? 100 : percent));
}

void BurnProgressDialog::PostMinimizeButton(bool show) const {
    if (GetHwnd()) Post(kMinimizeMessage, show ? 1 : 0);
}

void BurnProgressDialog::PostClose() const {
    if (GetHwnd()) Post(kCloseMessage);
}

LRESULT BurnProgressDialog::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case kStepMessage: {
        std::unique_ptr<std::wstring> text(reinterpret_cast<std::wstring*>(lp));
        ::SetDlgItemTextW(GetHwnd(), StepTextId, text->c_str());
        return 0;
    }
    case kPercentMessage:
        ::SendMessageW(Item(ProgressBarId), PBM_SETPOS, wp, 0);
        return 0;
    case kMinimizeMessage: {
        const LONG_PTR style = ::GetWindowLongPtrW(GetHwnd(), GWL_STYLE);
        ::SetWindowLongPtrW(GetHwnd(), GWL_STYLE, wp ? (style | WS_MINIMIZEBOX) : (style & ~LONG_PTR(WS_MINIMIZEBOX)));
        ::SetWindowPos(GetHwnd(), nullptr, 0, 0, 0, 0,
                       SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
        return 0;
    }
    case kCloseMessage:
        DestroyWindow();
        return 0;
    case WM_NCDESTROY: {
        // Steps posted after the close would leak their text; take them out of the queue.
        MSG pending;
        while (::PeekMessageW(&pending, GetHwnd(), kStepMessage, kStepMessage, PM_REMOVE))
            delete reinterpret_cast<std::wstring*>(pending.lParam);
        break;
    }
    default:
        break;
    }
    return Dialog::WindowProc(msg, wp, lp);
}

}  // namespace uc::exporting
