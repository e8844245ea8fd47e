// uc::ui::Dialog: templates, the dialog procedure that binds the object, and the in-memory template builder.
#include "ui/win/dialog.h"

#include "platform/logger.h"
#include "ui/win/resources.h"

namespace uc::ui {

Dialog::Dialog(UINT templateId, HWND parent) : m_templateId(templateId), m_parent(parent) {}

const DLGTEMPLATE* Dialog::ResolveTemplate(HMODULE& module) const {
    if (!m_memory.empty()) {
        module = LibraryModule();
        return reinterpret_cast<const DLGTEMPLATE*>(m_memory.data());
    }
    module = m_module ? m_module : ResourceModule();
    return FindDialogTemplate(module, m_templateId);
}

INT_PTR Dialog::DoModal() {
    if (m_hWnd) return -1;
    HMODULE module = nullptr;
    const DLGTEMPLATE* tmpl = ResolveTemplate(module);
    if (!tmpl) return -1;
    m_modal = true;
    const INT_PTR result =
        ::DialogBoxIndirectParamW(module, tmpl, m_parent, &DialogProc, reinterpret_cast<LPARAM>(this));
    m_modal = false;
    if (result == -1) UC_LOG(zelLogger::Failure)(L"dialog %u could not be created (error %lu)", m_templateId, ::GetLastError());
    return result;
}

bool Dialog::CreateModeless(HWND parent) {
    if (m_hWnd) return false;
    if (parent) m_parent = parent;
    HMODULE module = nullptr;
    const DLGTEMPLATE* tmpl = ResolveTemplate(module);
    if (!tmpl) return false;
    m_modal = false;
    HWND hwnd = ::CreateDialogIndirectParamW(module, tmpl, m_parent, &DialogProc, reinterpret_cast<LPARAM>(this));
    if (!hwnd) {
        UC_LOG(zelLogger::Failure)(L"dialog %u could not be created (error %lu)", m_templateId, ::GetLastError());
        return false;
    }
    return true;
}

void Dialog::EndDialog(INT_PTR result) {
    if (!m_hWnd) return;
    if (m_modal) {
        ::EndDialog(m_hWnd, result);
    } else {
        ::DestroyWindow(m_hWnd);
    }
}

// Binds the object at WM_INITDIALOG by subclassing the dialog window, so that from then on every message reaches
// the object first and Default() is the dialog manager's processing (which ends here, answering FALSE).
INT_PTR CALLBACK Dialog::DialogProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg != WM_INITDIALOG || Window::FromHandle(hwnd)) return FALSE;
    return BindAtInit(reinterpret_cast<Dialog*>(lp), hwnd, wp, lp);
}

INT_PTR Dialog::BindAtInit(Dialog* self, HWND hwnd, WPARAM wp, LPARAM lp) {
    if (!self || !self->Subclass(hwnd)) return TRUE;
    self->m_created = true;  // a modeless dialog dies with its object
    // WM_INITDIALOG goes to the object without a second pass through the dialog procedure.
    try {
        return self->Dispatch(WM_INITDIALOG, wp, lp);
    } catch (...) {
        return TRUE;
    }
}

LRESULT Dialog::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_INITDIALOG:
        return OnInitDialog();
    case WM_COMMAND: {
        const UINT id = LOWORD(wp);
        HWND control = reinterpret_cast<HWND>(lp);
        // Only the OK/Cancel buttons themselves (or Enter/Escape, which arrive without a control or from the
        // default button) end the dialog: controls that send WM_COMMAND with other meanings in wParam do not.
        const bool fromItself = !control || ::GetDlgCtrlID(control) == static_cast<int>(id);
        if ((id == IDOK || id == IDCANCEL) && HIWORD(wp) == BN_CLICKED && fromItself) {
            if (OnCommand(id, HIWORD(wp), control)) return 0;
            if (id == IDOK) {
                OnOK();
            } else {
                OnCancel();
            }
            return 0;
        }
        return Window::WindowProc(msg, wp, lp);
    }
    default:
        return Window::WindowProc(msg, wp, lp);
    }
}

BOOL Dialog::OnInitDialog() { return TRUE; }
void Dialog::OnOK() { EndDialog(IDOK); }
void Dialog::OnCancel() { EndDialog(IDCANCEL); }

namespace {

// Skips a sz_Or_Ord field (none, an ordinal, or a string).
const WORD* SkipNameOrOrdinal(const WORD* p) {
    if (*p == 0) return p + 1;
    if (*p == 0xFFFF) return p + 2;
    while (*p) ++p;
    return p + 1;
}

}  // namespace

bool TemplateFont(const DLGTEMPLATE* tmpl, WORD& points, std::wstring& face) {
    if (!tmpl) return false;
    auto* w = reinterpret_cast<const WORD*>(tmpl);
    const bool extended = w[0] == 1 && w[1] == 0xFFFF;
    DWORD style;
    const WORD* p;
    if (extended) {
        style = w[6] | (static_cast<DWORD>(w[7]) << 16);  // after version, signature, help id, ex-style
        p = w + 13;                                         // after the item count and x, y, cx, cy
    } else {
        style = w[0] | (static_cast<DWORD>(w[1]) << 16);
        p = w + 9;
    }
    if (!(style & (DS_SETFONT | DS_SHELLFONT))) return false;
    p = SkipNameOrOrdinal(p);  // menu
    p = SkipNameOrOrdinal(p);  // class
    while (*p) ++p;            // title
    ++p;
    points = *p++;
    if (extended) p += 2;      // weight, italic and character set
    face.clear();
    while (*p) face += static_cast<wchar_t>(*p++);
    return true;
}

DialogTemplate::DialogTemplate(DWORD style, DWORD exStyle, short x, short y, short cx, short cy, const wchar_t* title,
                               const wchar_t* font, WORD pointSize) {
    if (font) style |= DS_SETFONT;
    m_words.push_back(LOWORD(style));
    m_words.push_back(HIWORD(style));
    m_words.push_back(LOWORD(exStyle));
    m_words.push_back(HIWORD(exStyle));
    m_countAt = m_words.size();
    m_words.push_back(0);  // item count
    for (short v : {x, y, cx, cy}) m_words.push_back(static_cast<WORD>(v));
    m_words.push_back(0);  // no menu
    m_words.push_back(0);  // default class
    AppendString(title ? title : L"");
    if (font) {
        m_words.push_back(pointSize);
        AppendString(font);
    }
}

DialogTemplate& DialogTemplate::Add(const wchar_t* className, const wchar_t* text, WORD id, DWORD style, short x,
                                    short y, short cx, short cy, DWORD exStyle) {
    Align();  // items start on a DWORD boundary
    m_words.push_back(LOWORD(style));
    m_words.push_back(HIWORD(style));
    m_words.push_back(LOWORD(exStyle));
    m_words.push_back(HIWORD(exStyle));
    for (short v : {x, y, cx, cy}) m_words.push_back(static_cast<WORD>(v));
    m_words.push_back(id);
    AppendString(className);
    AppendString(text ? text : L"");
    m_words.push_back(0);  // no creation data
    ++m_words[m_countAt];
    return *this;
}

void DialogTemplate::AppendString(const wchar_t* s) {
    for (; *s; ++s) m_words.push_back(static_cast<WORD>(*s));
    m_words.push_back(0);
}

void DialogTemplate::Align() {
    if (m_words.size() % 2) m_words.push_back(0);
}

}  // namespace uc::ui
