// DynamicLibrary over dlopen and dlsym.
#include <dlfcn.h>

#include "platform/dynamic_library.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace uc {

bool DynamicLibrary::Load(const std::wstring& name) {
    Unload();
    m_name = name;
    m_error.clear();
    // A bare name is looked for beside the program first, as Windows does. The program's own search path
    // ($ORIGIN) cannot be relied on: it applies only to dlopen calls made from the program itself, and a
    // sanitizer's dlopen interceptor is another library.
    void* module = nullptr;
    if (name.find(L'/') == std::wstring::npos) {
        const std::wstring beside = JoinPath(ExecutableFolder(), name);
        module = ::dlopen(ToUtf8(beside).c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    if (!module) module = ::dlopen(ToUtf8(name).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        const char* why = ::dlerror();
        m_error = FromUtf8(why ? why : "dlopen failed");
        return false;
    }
    m_module = module;
    return true;
}

void DynamicLibrary::Unload() {
    if (m_module) ::dlclose(m_module);
    m_module = nullptr;
}

void* DynamicLibrary::ResolveAddress(const char* symbol) const {
    if (!m_module || !symbol) return nullptr;
    return ::dlsym(m_module, symbol);
}

}  // namespace uc
