// Shared pieces of the dialog tests: a console-like dialog template and real input.
#pragma once

#include <windows.h>

#include <vector>

namespace uc::test {

inline constexpr WORD kApplyId = 1002;
inline constexpr WORD kPlainId = 1003;
inline constexpr WORD kGroupId = 1004;
inline constexpr WORD kDrivesId = 1005;

// A captioned dialog with OK, Cancel, "Apply", a static "no translation", a static group and a drive combo.
std::vector<WORD> ConsoleTemplate();

// Left click at the centre of `hwnd` through posted mouse messages (down, up).
void ClickWithMouseMessages(HWND hwnd);
// Left click at the centre of `hwnd` through SendInput (moves the real pointer).
void ClickWithSendInput(HWND hwnd);
// Alt+F4 through SendInput.
void PressAltF4();

}  // namespace uc::test
