// OwnerDrawButton: style change on subclassing, and the reflected WM_DRAWITEM.
#include "ui/win/owner_draw_button.h"

namespace uc::ui {

bool OwnerDrawButton::CreateButton(const wchar_t* text, const RECT& rect, HWND parent, UINT id, DWORD extraStyle) {
    return Create(0, L"BUTTON", text, WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON | extraStyle, rect, parent, id);
}

void OwnerDrawButton::PreSubclassWindow() {
    const LONG_PTR style = ::GetWindowLongPtrW(m_hWnd, GWL_STYLE);
    ::SetWindowLongPtrW(m_hWnd, GWL_STYLE, (style & ~static_cast<LONG_PTR>(0x0F)) | BS_OWNERDRAW);
    ::SetWindowPos(m_hWnd, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    EnsureReflection(::GetParent(m_hWnd));
}

bool OwnerDrawButton::OnChildNotify(UINT msg, WPARAM, LPARAM lp, LRESULT& result) {
    if (msg != WM_DRAWITEM) return false;
    DrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lp));
    result = TRUE;
    return true;
}

}  // namespace uc::ui
