// Shared pieces of the dialog tests: a console-like dialog template and real input.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "ui/win/capture.h"

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

// Left click at the centre of `hwnd` through posted mouse messages (down, up).
void ClickWithMouseMessages(HWND hwnd);
// Left click at the centre of `hwnd` through SendInput (moves the real pointer).
void ClickWithSendInput(HWND hwnd);
// Alt+F4 through SendInput.
void PressAltF4();

// What a modal dialog under test returns when its watchdog ended it.
inline constexpr INT_PTR kWatchdogResult = -77;
// Ends the modal dialog (or property sheet) `hwnd` after 20 s if the test has not ended it: input that went to
// another program's window must fail the test, not hang it. A USER32 timer, so hand-driven timers do not hold it.
void ArmWatchdog(HWND hwnd);

}  // namespace uc::test
