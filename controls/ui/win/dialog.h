// uc::ui::Dialog: modal and modeless dialogs from a resource template (by id, in the thread's resource module)
// or from an in-memory template, bound to the object from WM_INITDIALOG on.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "platform/export.h"
#include "ui/win/window.h"

namespace uc::ui {

class UC_API Dialog : public Window {
public:
    // Template `templateId` of the resource module current when DoModal/Create runs (see resources.h).
    explicit Dialog(UINT templateId = 0, HWND parent = nullptr);

    void SetTemplateId(UINT templateId) { m_templateId = templateId; }
    UINT TemplateId() const { return m_templateId; }
    // Template from another module, looked up when the dialog is opened.
    void SetTemplateModule(HMODULE module) { m_module = module; }
    // An in-memory template (see DialogTemplate); copied, used instead of the id.
    void SetTemplate(const std::vector<WORD>& words) { m_memory = words; }
    void SetParent(HWND parent) { m_parent = parent; }
    HWND ParentWindow() const { return m_parent; }

    // Runs the dialog modally; returns what EndDialog was given, or -1 (logged) when the template is missing or
    // the dialog cannot be created.
    virtual INT_PTR DoModal();
    // Creates it modeless (visible when the template says WS_VISIBLE); false when it cannot be created.
    bool CreateModeless(HWND parent = nullptr);
    bool IsModal() const { return m_modal; }
    // Ends a modal dialog with `result`, or destroys a modeless one.
    void EndDialog(INT_PTR result);

protected:
    // After the controls exist; TRUE lets the dialog manager focus the first control.
    virtual BOOL OnInitDialog();
    // IDOK and IDCANCEL from the button of that id, Enter or Escape. Defaults end the dialog with that id.
    virtual void OnOK();
    virtual void OnCancel();

    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;
    // Binds `self` to the dialog window that is receiving WM_INITDIALOG and runs OnInitDialog; for dialog
    // procedures of windows made by others (property pages). Returns what WM_INITDIALOG should return.
    static INT_PTR BindAtInit(Dialog* self, HWND hwnd, WPARAM wp, LPARAM lp);
    // The template to open (memory, else the id in the template module or the thread's resource module) and the
    // module it belongs to; null (and a log line) when the module has no such template.
    const DLGTEMPLATE* ResolveTemplate(HMODULE& module) const;
    bool HasMemoryTemplate() const { return !m_memory.empty(); }

private:
    static INT_PTR CALLBACK DialogProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

    UINT m_templateId;
    HWND m_parent;
    HMODULE m_module = nullptr;
    std::vector<WORD> m_memory;
    bool m_modal = false;
};

// The font a dialog template asks for (DS_SETFONT or DS_SHELLFONT), classic or extended; false when it names none.
UC_API bool TemplateFont(const DLGTEMPLATE* tmpl, WORD& points, std::wstring& face);

// Builds an in-memory DLGTEMPLATE with its items (the classic format; sizes in dialog units).
class UC_API DialogTemplate {
public:
    // DS_SETFONT is added when `font` is given.
    DialogTemplate(DWORD style, DWORD exStyle, short x, short y, short cx, short cy, const wchar_t* title,
                   const wchar_t* font = L"MS Shell Dlg", WORD pointSize = 8);
    // `className` is a class name (L"BUTTON", L"EDIT", L"STATIC", any registered class).
    DialogTemplate& Add(const wchar_t* className, const wchar_t* text, WORD id, DWORD style, short x, short y, short cx,
                        short cy, DWORD exStyle = 0);
    const std::vector<WORD>& Words() const { return m_words; }

private:
    void AppendString(const wchar_t* s);
    void Align();
    std::vector<WORD> m_words;
    std::size_t m_countAt;  // index of the item count in the header
};

}  // namespace uc::ui
