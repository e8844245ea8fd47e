// Word wrapping measured in a device context's current font.
#pragma once

#include <windows.h>

#include <string>

#include "platform/export.h"

namespace uc::ui {

// Inserts line breaks into `text` so that no line is wider than `width` pixels in `dc`'s selected font; returns
// the number of lines (see WrapText).
UC_API int WrapStr(HDC dc, std::wstring& text, int width);

}  // namespace uc::ui
