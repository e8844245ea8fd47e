// CTabbedCustomDialog and CCustomTabPageDialog: pages as child dialogs behind a tab control.
#include "dialogs/win/tabbed_dialog.h"

#include <commctrl.h>

#include "platform/localisation.h"
#include "platform/logger.h"
#include "ui/geometry.h"
#include "ui/win/resources.h"

CCustomTabPageDialog::CCustomTabPageDialog(UINT templateId, HINSTANCE module, HWND parent)
    : CCustomDialog(templateId & 0xFFFF, parent), m_resourceModule(module), m_templateId(templateId) {}

BOOL CCustomTabPageDialog::Create(HWND parent) {
    uc::ui::ScopedResourceModule use(m_resourceModule ? m_resourceModule : uc::ui::ResourceModule());
    SetTemplateId(m_templateId & 0xFFFF);
    if (!CreateModeless(parent)) return FALSE;
    if (HWND p = ::GetParent(m_hWnd)) {
        ::SendMessageW(m_hWnd, WM_SETFONT, ::SendMessageW(p, WM_GETFONT, 0, 0), TRUE);
    }
    return TRUE;
}

CTabbedCustomDialog::CTabbedCustomDialog(UINT templateId, UINT tabId, HWND parent)
    : CCustomDialog(templateId, parent), m_tabId(tabId) {}

CTabbedCustomDialog::~CTabbedCustomDialog() { DeletePages(); }

void CTabbedCustomDialog::AddTab(const char* key, CCustomTabPageDialog* page) {
    if (!page) return;
    if (!page->Create(m_hWnd)) {
        UC_LOG(zelLogger::Failure)(L"tab '%S': its page could not be created", key ? key : "");
    }
    m_pages.push_back(page);  // owned from here on, created or not
    std::wstring text = key ? GetStr(key) : std::wstring();
    TCITEMW item{};
    item.mask = TCIF_TEXT | TCIF_PARAM;
    item.pszText = text.data();
    item.lParam = reinterpret_cast<LPARAM>(page);
    const int count = static_cast<int>(::SendMessageW(m_tab.GetHwnd(), TCM_GETITEMCOUNT, 0, 0));
    ::SendMessageW(m_tab.GetHwnd(), TCM_INSERTITEMW, count, reinterpret_cast<LPARAM>(&item));
}

BOOL CTabbedCustomDialog::OnInitDialog() {
    CCustomDialog::OnInitDialog();
    if (!m_tab.GetHwnd() && !m_tab.SubclassDlgItem(m_tabId, m_hWnd)) {
        UC_LOG(zelLogger::Failure)(L"tabbed dialog: no tab control %u", m_tabId);
        return TRUE;
    }
    CreateTabs();

    HWND tab = m_tab.GetHwnd();
    RECT client{}, first{};
    ::GetClientRect(tab, &client);
    ::SendMessageW(tab, TCM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&first));
    const uc::ui::Rect area =
        uc::ui::TabPageArea({client.left, client.top, client.right, client.bottom}, first.bottom - first.top);
    m_pageArea = {area.left, area.top, area.right, area.bottom};
    ::MapWindowPoints(tab, m_hWnd, reinterpret_cast<POINT*>(&m_pageArea), 2);
    for (CCustomTabPageDialog* page : m_pages) {
        if (!page->GetHwnd()) continue;
        ::MoveWindow(page->GetHwnd(), m_pageArea.left, m_pageArea.top, m_pageArea.right - m_pageArea.left,
                     m_pageArea.bottom - m_pageArea.top, FALSE);
    }
    OnTabSelChange();
    EnableToolTips(true);
    return TRUE;
}

void CTabbedCustomDialog::OnTabSelChange() {
    for (CCustomTabPageDialog* page : m_pages)
        if (page->GetHwnd()) ::ShowWindow(page->GetHwnd(), SW_HIDE);
    const int selected = static_cast<int>(::SendMessageW(m_tab.GetHwnd(), TCM_GETCURSEL, 0, 0));
    TCITEMW item{};
    item.mask = TCIF_PARAM;
    if (selected >= 0 && ::SendMessageW(m_tab.GetHwnd(), TCM_GETITEMW, selected, reinterpret_cast<LPARAM>(&item))) {
        auto* page = reinterpret_cast<CCustomTabPageDialog*>(item.lParam);
        if (page && page->GetHwnd()) ::ShowWindow(page->GetHwnd(), SW_SHOW);
    }
}

bool CTabbedCustomDialog::OnNotify(NMHDR* header, LRESULT& result) {
    if (header && header->idFrom == m_tabId && header->code == static_cast<UINT>(TCN_SELCHANGE)) {
        OnTabSelChange();
        result = 0;
        return true;
    }
    return CCustomDialog::OnNotify(header, result);
}

void CTabbedCustomDialog::OnOK() {
    // Every page that exists applies, in tab order, whether it was ever shown or not.
    for (CCustomTabPageDialog* page : m_pages)
        if (page->GetHwnd()) page->ApplyPage();
    CCustomDialog::OnOK();
}

void CTabbedCustomDialog::OnDestroy() {
    DeletePages();
    CCustomDialog::OnDestroy();
}

void CTabbedCustomDialog::DeletePages() {
    for (CCustomTabPageDialog* page : m_pages) {
        page->DestroyWindow();
        delete page;
    }
    m_pages.clear();
}
