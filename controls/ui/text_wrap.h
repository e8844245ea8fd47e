// Word wrapping of a text to a pixel width, with the text measurement supplied by the caller (a DC, or a test).
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/export.h"

namespace uc::ui {

// Width in pixels of one line of text.
using MeasureText = std::function<int(std::wstring_view line)>;

// Breaks `text` in place into lines no wider than `width`: at spaces where it can, inside a word that alone is
// too wide, keeping the line breaks already there ("\r\n" and "\n" both end a line; the result uses "\n").
// Spaces at a break are dropped. Returns the number of lines (at least 1; an empty text is one empty line).
UC_API int WrapText(std::wstring& text, int width, const MeasureText& measure);

}  // namespace uc::ui
