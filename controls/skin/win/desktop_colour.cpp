// Default desktop colour from the Windows system palette.
#include <windows.h>

#include "skin/button_style.h"

namespace uc::skin {
std::uint32_t DesktopColour() {
    const COLORREF c = ::GetSysColor(COLOR_BACKGROUND);  // 0x00BBGGRR
    return (static_cast<std::uint32_t>(GetRValue(c)) << 16) | (static_cast<std::uint32_t>(GetGValue(c)) << 8) |
           GetBValue(c);
}
}  // namespace uc::skin
