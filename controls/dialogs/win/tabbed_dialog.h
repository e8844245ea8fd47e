// CTabbedCustomDialog and CCustomTabPageDialog: a console dialog with a tab control whose tabs show child
// dialogs (pages) it owns; OK applies every page in tab order.
#pragma once

#include <windows.h>

#include <vector>

#include "dialogs/win/custom_dialog.h"
#include "platform/export.h"

class UC_API CCustomTabPageDialog : public CCustomDialog {
public:
    // Template `templateId` (its low 16 bits) of `module` (the thread's resource module when null).
    CCustomTabPageDialog(UINT templateId, HINSTANCE module, HWND parent);

    // Creates the page as a child of `parent` with the parent's font; false when the template is missing.
    BOOL Create(HWND parent);
    // Takes the page's values over; called by the tabbed dialog on OK.
    virtual void ApplyPage() = 0;

protected:
    HINSTANCE m_resourceModule;
    UINT m_templateId;
};

class UC_API CTabbedCustomDialog : public CCustomDialog {
public:
    CTabbedCustomDialog(UINT templateId, UINT tabId, HWND parent);
    ~CTabbedCustomDialog() override;

    // The pages in tab order (owned by the dialog).
    std::size_t PageCount() const { return m_pages.size(); }
    CCustomTabPageDialog* Page(std::size_t i) const { return m_pages[i]; }
    HWND TabControl() const { return m_tab.GetHwnd(); }
    // The area pages are placed in, in the dialog's client co-ordinates.
    const RECT& PageArea() const { return m_pageArea; }

protected:
    // Adds the tabs: call AddTab for each page.
    virtual void CreateTabs() = 0;
    // Creates `page` as a child and appends a tab titled GetStr(key) for it; the dialog owns the page from then
    // on. A null page is not added.
    void AddTab(const char* key, CCustomTabPageDialog* page);
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnTabSelChange();
    bool OnNotify(NMHDR* header, LRESULT& result) override;
    void OnDestroy() override;

    uc::ui::Window m_tab;
    UINT m_tabId;

private:
    void DeletePages();
    std::vector<CCustomTabPageDialog*> m_pages;
    RECT m_pageArea{};
};
