// Shared pieces of the dialog tests: a console-like dialog template and real input.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "dialogs/win/custom_dialog.h"
#include "ui/win/capture.h"
#include "ui/win/window.h"

namespace uc::test {

inline constexpr WORD kApplyId = 1002;
inline constexpr WORD kPlainId = 1003;
inline constexpr WORD kGroupId = 1004;
inline constexpr WORD kDrivesId = 1005;

// A captioned dialog with OK, Cancel, "Apply", a static "no translation", a static group and a drive combo.
std::vector<WORD> ConsoleTemplate();

// The background mode `dialog` leaves in a DC it colours for `control` (WM_CTLCOLORSTATIC on an opaque DC).
int BkModeAfterCtlColor(HWND dialog, HWND control);
// Colour (0xRRGGBB) of client point `at` of `hwnd` in a picture of the window.
std::uint32_t ClientPixel(HWND hwnd, POINT at);
// Pixels darker than 0x60 in blue (text) in the box `r` of a picture.
int DarkPixels(const uc::ui::Pixels& px, const RECT& r);
// A COLORREF as 0xRRGGBB, the form pictures give.
inline std::uint32_t Rgb(COLORREF c) { return (static_cast<std::uint32_t>(GetRValue(c)) << 16) | (GetGValue(c) << 8) | GetBValue(c); }

// Left click at the centre of `hwnd` through mouse messages (down, up) sent one after the other.
void ClickWithMouseMessages(HWND hwnd);

// What a modal dialog under test returns when its watchdog ended it.
inline constexpr INT_PTR kWatchdogResult = -77;
// Ends the modal dialog (or property sheet) `hwnd` after 20 s if the test has not ended it: input that went to
// another program's window must fail the test, not hang it. A USER32 timer, so hand-driven timers do not hold it.
void ArmWatchdog(HWND hwnd);

// The console's touch-panel window: records the open and destroy notifications and answers the open one.
class TouchPanel : public uc::ui::Window {
public:
    struct Received {
        UINT msg;
        WPARAM wp;
        LPARAM lp;
    };
    static constexpr LRESULT kReply = 0x1234;
    std::vector<Received> received;

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;
};

// A dialog or sheet (Base) that runs the test's `steps` inside its modal loop, posted once its initialisation is
// done, under the watchdog. Without steps it is closed with its OK button. Self is the test's class.
inline constexpr UINT kRunSteps = WM_APP + 300;
template <class Self, class Base>
class Stepped : public Base {
public:
    using Base::Base;
    std::function<void(Self&)> steps;

protected:
    BOOL OnInitDialog() override {
        const BOOL r = Base::OnInitDialog();
        ArmWatchdog(this->GetHwnd());
        this->Post(kRunSteps);
        return r;
    }
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg != kRunSteps) return Base::WindowProc(msg, wp, lp);
        if (steps) {
            steps(static_cast<Self&>(*this));
        } else {
            this->Post(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), reinterpret_cast<LPARAM>(this->Item(IDOK)));
        }
        return 0;
    }
};

}  // namespace uc::test
