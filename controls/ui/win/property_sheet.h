// uc::ui::PropertySheet and PropertyPage: the common controls' property sheet with both sides bound to objects.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <vector>

#include "platform/export.h"
#include "ui/win/dialog.h"

namespace uc::ui {

// A page: a child dialog the sheet creates when the page is first shown (or activated). Its template comes from
// the resource module current when the sheet opens, or from memory (Dialog::SetTemplate).
class UC_API PropertyPage : public Dialog {
public:
    explicit PropertyPage(UINT templateId = 0) : Dialog(templateId) {}
    // The description the sheet is built from; valid while the object lives.
    PROPSHEETPAGEW Describe();
    // The page's template (to read its font before the sheet exists); null when missing.
    const DLGTEMPLATE* Template() const;

private:
    static INT_PTR CALLBACK PageProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);
    HMODULE m_describedModule = nullptr;
};

// A modal sheet. Subclasses extend OnSheetCreating (the sheet's template before its window exists) and
// OnInitDialog (the sheet is bound, its first page exists).
class UC_API PropertySheet : public Window {
public:
    explicit PropertySheet(const std::wstring& caption = L"", HWND parent = nullptr, UINT firstPage = 0);

    // The caller keeps the page objects alive while the sheet runs.
    virtual void AddPage(PropertyPage* page);
    std::size_t PageCount() const { return m_pages.size(); }
    PropertyPage* Page(std::size_t i) const { return m_pages[i]; }
    void SetCaption(const std::wstring& caption) { m_caption = caption; }
    // Extra PSH_* flags (PSH_WIZARD, PSH_NOAPPLYNOW, ...).
    void SetFlags(DWORD flags) { m_flags = flags; }
    DWORD Flags() const { return m_flags; }

    // IDOK when the sheet was closed by OK (or Finish), IDCANCEL otherwise, -1 when it could not be shown.
    virtual INT_PTR DoModal();

    HWND TabControl() const { return m_hWnd ? reinterpret_cast<HWND>(::SendMessageW(m_hWnd, PSM_GETTABCONTROL, 0, 0)) : nullptr; }
    HWND ActivePage() const { return m_hWnd ? reinterpret_cast<HWND>(::SendMessageW(m_hWnd, PSM_GETCURRENTPAGEHWND, 0, 0)) : nullptr; }
    int ActiveIndex() const;
    bool SetActive(int index) const { return m_hWnd && ::SendMessageW(m_hWnd, PSM_SETCURSEL, index, 0); }

protected:
    // Before the sheet window is created: `tmpl` is its template, whose style may still be changed.
    virtual void OnSheetCreating(DLGTEMPLATE* tmpl) {}
    // The sheet is bound, its first page exists, and it has not been shown yet.
    virtual BOOL OnInitDialog() { return TRUE; }
    // Fills the PROPSHEETHEADER just before the sheet is created (after the page array is built).
    virtual void BuildPropPageArray() {}

    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;

    std::wstring m_caption;
    HWND m_parent;
    UINT m_firstPage;
    std::vector<PropertyPage*> m_pages;

private:
    static int CALLBACK SheetCallback(HWND hwnd, UINT msg, LPARAM lp);
    void RunInit();
    DWORD m_flags = 0;
    INT_PTR m_closedWith = IDCANCEL;
    bool m_initPending = false;
};

}  // namespace uc::ui
