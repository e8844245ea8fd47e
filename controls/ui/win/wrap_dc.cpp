// Word wrapping measured with GetTextExtentPoint32W.
#include "ui/win/wrap_dc.h"

#include "ui/text_wrap.h"

namespace uc::ui {

int WrapStr(HDC dc, std::wstring& text, int width) {
    return WrapText(text, width, [dc](std::wstring_view line) {
        SIZE size{};
        ::GetTextExtentPoint32W(dc, line.data(), static_cast<int>(line.size()), &size);
        return static_cast<int>(size.cx);
    });
}

}  // namespace uc::ui
