// This library's module, the per-thread resource module and resource lookups.
#include "ui/win/resources.h"

#include "platform/logger.h"

namespace uc::ui {

namespace {
thread_local HMODULE t_resourceModule = nullptr;
}  // namespace

HMODULE LibraryModule() {
    static const HMODULE module = [] {
        HMODULE m = nullptr;
        ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                             reinterpret_cast<LPCWSTR>(&LibraryModule), &m);
        return m;
    }();
    return module;
}

HMODULE ResourceModule() { return t_resourceModule ? t_resourceModule : LibraryModule(); }

HMODULE SetResourceModule(HMODULE module) {
    HMODULE previous = t_resourceModule;
    t_resourceModule = module;
    return previous;
}

std::wstring LoadStringResource(UINT id, HMODULE module) {
    wchar_t buffer[512] = {};
    const int n = ::LoadStringW(module ? module : ::GetModuleHandleW(nullptr), id, buffer, 511);
    return std::wstring(buffer, n > 0 ? static_cast<std::size_t>(n) : 0);
}

const DLGTEMPLATE* FindDialogTemplate(HMODULE module, UINT id) {
    HRSRC info = ::FindResourceW(module, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(5) /* RT_DIALOG */);
    HGLOBAL data = info ? ::LoadResource(module, info) : nullptr;
    const void* bytes = data ? ::LockResource(data) : nullptr;
    if (!bytes) UC_LOG(zelLogger::Failure)(L"dialog template %u not found in module %p", id, module);
    return static_cast<const DLGTEMPLATE*>(bytes);
}

}  // namespace uc::ui
