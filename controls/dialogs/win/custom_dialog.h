// CCustomDialog: the base of every console dialog: texts translated on open, title label, centring in the
// console's dialog area, touch-panel notifications, flat background, visible cursor while modal, no system close.
#pragma once

#include <windows.h>

#include <string>

#include "platform/export.h"
#include "ui/win/dialog.h"
#include "ui/win/gdi.h"
#include "ui/win/label.h"
#include "ui/win/resizer.h"
#include "ui/win/tooltip_provider.h"

// The application's shared collections, defined by other modules of the console.
class CModeVariableCollection;
class CSystemVariableCollection;
class CZoneCollection;
class CDisplayCollection;
class CProbeCollection;

// Private messages to the console's touch-panel window.
inline constexpr UINT UWM_TOUCH_DIALOG_OPEN = WM_APP + 0x48;   // wParam: the dialog when asked to pass itself, else 0
inline constexpr UINT UWM_TOUCH_DIALOG_CLOSE = WM_APP + 0x4E;  // wParam, lParam: 0

class UC_API CCustomDialog : public uc::ui::Dialog, public CToolTipProvider {
public:
    CCustomDialog();
    CCustomDialog(UINT templateId, HWND parent);
    ~CCustomDialog() override;

    // Set by the application at start-up, read by dialogs; never owned or freed here.
    static CModeVariableCollection* m_modevariables;
    static CSystemVariableCollection* m_systemvariables;
    static CZoneCollection* m_zones;
    static CDisplayCollection* m_displays;
    static CProbeCollection* m_probes;
    // The touch-panel window; may be null or stale (every use checks it).
    static HWND m_touch;

    // Flat background colour from now on (there is no way back to the system colour).
    void SetBkColor(COLORREF colour);
    // Passes the text of every child and grandchild window through TranslateStr. Always true.
    bool TranslateControls();
    // Centres the dialog in the console's dialog area (utilsExam::CalculateDialogRect) without sizing, activating
    // or changing the Z-order. Returns FALSE (nothing else should centre it again); does nothing without a window.
    BOOL CheckAutoCenter();
    // The modal loop with the cursor forced visible for its whole run.
    INT_PTR DoModal() override;

    // String `id` of `module` (the program's main module when null); empty when missing.
    static std::wstring GetStringResource(UINT id, HINSTANCE module);
    // Frees the root-path strings AddRemovableDrives attached to the combo's items and empties the combo.
    static void ReleaseDriveItems(HWND comboEx);

    LRESULT TouchReply() const { return m_touchReply; }
    const CLabel& TitleLabel() const { return m_titleLabel; }

protected:
    // Base initialisation and centring; touch-panel notification; title label; translation of all texts.
    BOOL OnInitDialog() override;
    void OnOK() override;
    // Paints the dialog's content; called from WM_PAINT with the paint DC. Empty here.
    virtual void OnDraw(uc::ui::PaintDC& dc);
    // Puts `text` into the title label unless the label already shows a text (a title is never overwritten).
    void SetTitle(const wchar_t* text);
    // Fills an extended combo box (ComboBoxEx32) with the network entry (when `networkKey` is given) and the
    // drives the console offers for export; each drive item's data is a `std::wstring*` with its root path, owned
    // by the combo's owner (ReleaseDriveItems frees them).
    void AddRemovableDrives(HWND comboEx, const char* networkKey);
    // Moves the mouse pointer to the centre of the client area.
    void CenterCursor();

    void OnPaint() override;
    void OnClose() override;
    HBRUSH OnCtlColor(HDC dc, HWND control, UINT type) override;
    void OnSize(UINT type, int cx, int cy) override;
    void OnDestroy() override;
    BOOL OnEraseBkgnd(HDC dc) override;

    BOOL m_showTitle = TRUE;
    std::wstring m_title;
    CLabel m_titleLabel;
    CResizer m_resizer;
    BOOL m_touchPassSelf = FALSE;
    BOOL m_touchNotify = FALSE;
    LRESULT m_touchReply = 0;
    BOOL m_useBkColor = FALSE;
    COLORREF m_bkColor;
};

namespace uc::ui {
// Control id of the title label.
inline constexpr UINT kTitleLabelId = 0xFFFF;
// Translates the text of every descendant of `parent` through TranslateStr (texts of up to 999 characters).
UC_API void TranslateChildTexts(HWND parent);
// Background handling shared by console dialogs, pages and sheets: fills the client area with `colour`.
UC_API void FillClient(HWND hwnd, HDC dc, COLORREF colour);
}  // namespace uc::ui
