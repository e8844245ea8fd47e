// uc::ui::OwnerDrawButton: a BUTTON control turned owner-drawn, painting itself through DrawItem.
#pragma once

#include <windows.h>

#include "platform/export.h"
#include "ui/win/window.h"

namespace uc::ui {

// Subclass a button of a dialog (SubclassDlgItem) or Create one; PreSubclassWindow replaces the button-type
// bits of its style with BS_OWNERDRAW. The button control then asks its parent to paint it (WM_DRAWITEM) on every
// paint, press, enable and WM_PRINTCLIENT; the parent reflects that to DrawItem: framework windows always do, and
// any other parent gets a small reflecting subclass (EnsureReflection), so the button paints in any window.
class UC_API OwnerDrawButton : public Window {
public:
    // Creates a visible child button with `text` at `rect`.
    bool CreateButton(const wchar_t* text, const RECT& rect, HWND parent, UINT id, DWORD extraStyle = 0);

    // Paints the button: item.hDC, item.rcItem, item.itemState (ODS_SELECTED while pushed, ODS_DISABLED, ODS_FOCUS).
    virtual void DrawItem(const DRAWITEMSTRUCT& item) = 0;

protected:
    void PreSubclassWindow() override;
    bool OnChildNotify(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
};

}  // namespace uc::ui
