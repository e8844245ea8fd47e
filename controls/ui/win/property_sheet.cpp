// Property sheets: page descriptions, binding pages at WM_INITDIALOG and the sheet from its creation callback.
#include "ui/win/property_sheet.h"

#include "platform/logger.h"
#include "ui/win/resources.h"

namespace uc::ui {

namespace {
// The sheet whose PropertySheetW call runs on this thread (the creation callback carries no context).
thread_local PropertySheet* t_opening = nullptr;
// Posted when the sheet is bound; whichever comes first of it and the sheet's first showing runs OnInitDialog.
UINT SheetReadyMessage() {
    static const UINT msg = ::RegisterWindowMessageW(L"uc.ui.PropertySheet.ready");
    return msg;
}
}  // namespace

const DLGTEMPLATE* PropertyPage::Template() const {
    HMODULE module = nullptr;
    return ResolveTemplate(module);
}

PROPSHEETPAGEW PropertyPage::Describe() {
    PROPSHEETPAGEW page{};
    page.dwSize = sizeof page;  // also the stride the sheet walks the page array with
    page.pfnDlgProc = &PageProc;
    page.lParam = reinterpret_cast<LPARAM>(this);
    page.dwFlags = PSP_DEFAULT;
    HMODULE module = nullptr;
    const DLGTEMPLATE* tmpl = ResolveTemplate(module);
    if (HasMemoryTemplate()) {
        page.dwFlags |= PSP_DLGINDIRECT;
        page.pResource = tmpl;
    } else {
        page.hInstance = module;
        page.pszTemplate = MAKEINTRESOURCEW(TemplateId());
    }
    return page;
}

INT_PTR CALLBACK PropertyPage::PageProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg != WM_INITDIALOG || Window::FromHandle(hwnd)) return FALSE;
    auto* description = reinterpret_cast<const PROPSHEETPAGEW*>(lp);
    return BindAtInit(description ? reinterpret_cast<Dialog*>(description->lParam) : nullptr, hwnd, wp, lp);
}

PropertySheet::PropertySheet(const std::wstring& caption, HWND parent, UINT firstPage)
    : m_caption(caption), m_parent(parent), m_firstPage(firstPage) {}

void PropertySheet::AddPage(PropertyPage* page) {
    if (page) m_pages.push_back(page);
}

int PropertySheet::ActiveIndex() const {
    HWND page = ActivePage();
    return page ? static_cast<int>(::SendMessageW(m_hWnd, PSM_HWNDTOINDEX, reinterpret_cast<WPARAM>(page), 0)) : -1;
}

INT_PTR PropertySheet::DoModal() {
    if (m_hWnd || m_pages.empty()) return -1;
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_TAB_CLASSES};
    ::InitCommonControlsEx(&icc);
    std::vector<PROPSHEETPAGEW> pages;
    for (PropertyPage* page : m_pages) {
        if (!page->Template()) {
            UC_LOG(zelLogger::Failure)(L"property sheet '%s': page template %u is missing", m_caption.c_str(), page->TemplateId());
            return -1;
        }
        pages.push_back(page->Describe());
    }
    BuildPropPageArray();
    PROPSHEETHEADERW header{};
    header.dwSize = PROPSHEETHEADERW_V1_SIZE;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_USECALLBACK | m_flags;
    header.hwndParent = m_parent;
    header.hInstance = LibraryModule();
    header.pszCaption = m_caption.c_str();
    header.nPages = static_cast<UINT>(pages.size());
    header.nStartPage = m_firstPage < pages.size() ? m_firstPage : 0;
    header.ppsp = pages.data();
    header.pfnCallback = &SheetCallback;

    PropertySheet* outer = t_opening;
    t_opening = this;
    m_closedWith = IDCANCEL;
    const INT_PTR result = ::PropertySheetW(&header);
    t_opening = outer;
    if (result < 0) {
        UC_LOG(zelLogger::Failure)(L"property sheet '%s' could not be shown", m_caption.c_str());
        return -1;
    }
    return m_closedWith;
}

int CALLBACK PropertySheet::SheetCallback(HWND hwnd, UINT msg, LPARAM lp) {
    PropertySheet* self = t_opening;
    if (!self) return 0;
    try {
        if (msg == PSCB_PRECREATE && lp) self->OnSheetCreating(reinterpret_cast<DLGTEMPLATE*>(lp));
        // The first page does not exist yet when the sheet says it is initialised: the sheet's own initialisation
        // creates it after this callback, so OnInitDialog waits for the sheet to be shown (or the posted note).
        if (msg == PSCB_INITIALIZED && self->Subclass(hwnd)) {
            self->m_initPending = true;
            ::PostMessageW(hwnd, SheetReadyMessage(), 0, 0);
        }
    } catch (...) {
        UC_LOG(zelLogger::Failure)(L"property sheet '%s': exception while it was created", self->m_caption.c_str());
    }
    return 0;
}

void PropertySheet::RunInit() {
    if (!m_initPending) return;
    m_initPending = false;
    OnInitDialog();
}

LRESULT PropertySheet::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == SheetReadyMessage()) {
        RunInit();
        return 0;
    }
    if (msg == WM_SHOWWINDOW && wp) RunInit();
    if (msg == WM_WINDOWPOSCHANGING && (reinterpret_cast<WINDOWPOS*>(lp)->flags & SWP_SHOWWINDOW)) RunInit();
    if (msg == WM_COMMAND && HIWORD(wp) == BN_CLICKED) {
        const UINT id = LOWORD(wp);
        if (id == IDOK || id == 12325 /* Finish */) m_closedWith = IDOK;
        if (id == IDCANCEL) m_closedWith = IDCANCEL;
    }
    // A button pressed through the sheet (PSM_PRESSBUTTON) closes it without a WM_COMMAND reaching this window.
    if (msg == PSM_PRESSBUTTON) {
        if (wp == PSBTN_OK || wp == PSBTN_FINISH) m_closedWith = IDOK;
        if (wp == PSBTN_CANCEL) m_closedWith = IDCANCEL;
    }
    return Window::WindowProc(msg, wp, lp);
}

}  // namespace uc::ui
