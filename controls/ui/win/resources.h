// Where this library's resources live (dialog templates, strings), and the module templates are loaded from.
#pragma once

#include <windows.h>

#include <string>

#include "platform/export.h"

namespace uc::ui {

// The module that holds this library's code and resources: utils_controls.dll, or the program that links the
// static library (its build links the compiled resources in as well).
UC_API HMODULE LibraryModule();

// The module dialog templates and string resources are taken from on this thread: LibraryModule() unless a caller
// switched it (a page whose template lives in another module).
UC_API HMODULE ResourceModule();
// Switches this thread's resource module; null restores LibraryModule(). Returns the previous one.
UC_API HMODULE SetResourceModule(HMODULE module);

// Switches this thread's resource module for a scope.
class ScopedResourceModule {
public:
    explicit ScopedResourceModule(HMODULE module) : m_previous(SetResourceModule(module)) {}
    ~ScopedResourceModule() { SetResourceModule(m_previous); }
    ScopedResourceModule(const ScopedResourceModule&) = delete;
    ScopedResourceModule& operator=(const ScopedResourceModule&) = delete;

private:
    HMODULE m_previous;
};

// String `id` of `module` (the process's main module when null); empty when there is none. At most 511
// characters, as the console's string loader reads them.
UC_API std::wstring LoadStringResource(UINT id, HMODULE module);

// The dialog template `id` of `module`, or null (and a log line) when the module has none.
UC_API const DLGTEMPLATE* FindDialogTemplate(HMODULE module, UINT id);

}  // namespace uc::ui
