// CCustomPropertySheet and CCustomPropertyPage: property sheets styled like console dialogs (translated texts,
// flat colours, centring in the dialog area, touch-panel messages, visible cursor), optionally with every page
// resized to fill the sheet.
#pragma once

#include <windows.h>

#include "platform/export.h"
#include "platform/win/handles.h"
#include "ui/win/property_sheet.h"
#include "ui/win/resizer.h"
#include "ui/win/tooltip_provider.h"

// Asks the sheet to move its active page into the page area (posted after tab changes and wizard steps).
inline constexpr UINT UWM_RESIZE_PAGE = WM_APP + 1;

class UC_API CCustomPropertyPage : public uc::ui::PropertyPage, public CToolTipProvider {
public:
    CCustomPropertyPage() = default;
    explicit CCustomPropertyPage(UINT templateId) : uc::ui::PropertyPage(templateId) {}

    // Flat background colour from now on.
    void SetBkColor(COLORREF colour);
    bool UsesBkColor() const { return m_useBkColor != FALSE; }
    COLORREF BkColor() const { return m_bkColor; }

protected:
    // The dialog's initialisation (not the property page's), then every child text translated.
    BOOL OnInitDialog() override;
    BOOL OnEraseBkgnd(HDC dc) override;
    void OnSize(UINT type, int cx, int cy) override;
    void OnPaint() override;
    void OnDestroy() override;

    CResizer m_resizer;
    BOOL m_useBkColor = FALSE;
    COLORREF m_bkColor = ::GetSysColor(COLOR_BTNFACE);
};

class UC_API CCustomPropertySheet : public uc::ui::PropertySheet, public CToolTipProvider {
public:
    // The caption from string `captionId` of the thread's resource module.
    CCustomPropertySheet(UINT captionId, HWND parent, UINT firstPage = 0);
    CCustomPropertySheet(const wchar_t* caption, HWND parent, UINT firstPage = 0);

    // The touch-panel window of sheets (separate from CCustomDialog's); may be null or stale.
    static HWND m_touch;

    void SetResizePages(bool resize) { m_resizePages = resize; }
    // Colour given to every CCustomPropertyPage added from now on.
    void SetCascadeBkColor(COLORREF colour);
    void AddPage(uc::ui::PropertyPage* page) override;
    // Passes every child window's text and every tab's text through TranslateStr.
    void TranslateControls();
    // The modal loop with the cursor forced visible and its clipping restored afterwards.
    INT_PTR DoModal() override;

    const RECT& PageRect() const { return m_pageRect; }
    HFONT SheetFont() const { return m_sheetFont.get(); }
    LRESULT TouchReply() const { return m_touchReply; }

    // Set before DoModal: the touch-panel notifications and whether the open one carries the sheet.
    BOOL m_touchNotify = FALSE;
    int m_touchPassSelf = 0;

protected:
    void OnSheetCreating(DLGTEMPLATE* tmpl) override;
    void BuildPropPageArray() override;
    BOOL OnInitDialog() override;
    bool OnNotify(NMHDR* header, LRESULT& result) override;
    bool OnCommand(UINT id, UINT code, HWND control) override;
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;
    LRESULT OnResizePage(WPARAM wp, LPARAM lp);
    void OnSize(UINT type, int cx, int cy) override;
    void OnDestroy() override;
    BOOL OnEraseBkgnd(HDC dc) override;
    HBRUSH OnCtlColor(HDC dc, HWND control, UINT type) override;

    bool m_resizePages = false;
    CResizer m_resizer;
    uc::ui::Window m_cancelButton, m_okButton, m_applyButton;
    RECT m_pageRect{};
    uc::UniqueHFont m_sheetFont;
    LRESULT m_touchReply = 0;
    BOOL m_useCascadeBkColor = FALSE;
    COLORREF m_cascadeBkColor = ::GetSysColor(COLOR_BTNFACE);

private:
    // The page area: the tab control's display area, or above the wizard's buttons.
    RECT ComputePageRect(RECT base);
};
