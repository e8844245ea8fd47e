// Default desktop colour on builds without a Windows system palette.
#include "skin/button_style.h"

namespace uc::skin {
// The classic Windows desktop blue, RGB(58, 110, 165), so native builds start from the colour most consoles had.
std::uint32_t DesktopColour() { return 0x003A6EA5u; }
}  // namespace uc::skin
