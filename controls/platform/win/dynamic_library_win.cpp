// DynamicLibrary over LoadLibraryW and GetProcAddress.
#include <windows.h>

#include "platform/dynamic_library.h"
#include "platform/text.h"

namespace uc {

bool DynamicLibrary::Load(const std::wstring& name) {
    Unload();
    m_name = name;
    m_error.clear();
    // No "insert the disk" boxes for a library on an empty drive: an absent vendor library is normal.
    const UINT oldMode = ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    HMODULE module = ::LoadLibraryW(name.c_str());
    const DWORD error = module ? 0 : ::GetLastError();
    ::SetErrorMode(oldMode);
    if (!module) {
        m_error = Format(L"LoadLibrary error %u", static_cast<unsigned>(error));
        return false;
    }
    m_module = module;
    return true;
}

void DynamicLibrary::Unload() {
    if (m_module) ::FreeLibrary(static_cast<HMODULE>(m_module));
    m_module = nullptr;
}

void* DynamicLibrary::ResolveAddress(const char* symbol) const {
    if (!m_module || !symbol) return nullptr;
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(m_module), symbol));
}

}  // namespace uc
