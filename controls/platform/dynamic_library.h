// A library loaded at run time by name (vendor SDKs, simulated devices), with its functions resolved by name.
#pragma once

#include <string>

#include "platform/export.h"

namespace uc {

// Owns one loaded module; unloads it when destroyed. A library that is absent leaves the object empty
// (`IsLoaded` false) and every `Resolve` null: callers degrade, they never fail at load time.
class UC_API DynamicLibrary {
public:
    DynamicLibrary() = default;
    // Loads `name` with the platform's search rules (LoadLibraryW on Windows, dlopen elsewhere).
    explicit DynamicLibrary(const std::wstring& name);
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;
    DynamicLibrary(DynamicLibrary&& other) noexcept;
    DynamicLibrary& operator=(DynamicLibrary&& other) noexcept;
    ~DynamicLibrary();

    // Unloads what was held, then loads `name`; true when it loaded.
    bool Load(const std::wstring& name);
    void Unload();
    bool IsLoaded() const { return m_module != nullptr; }
    // The name given to the last Load, and the system's reason when it failed (empty after success).
    const std::wstring& Name() const { return m_name; }
    const std::wstring& LastError() const { return m_error; }

    // Address of an exported symbol, or null when unloaded or absent.
    void* ResolveAddress(const char* symbol) const;
    template <class Fn>
    Fn Resolve(const char* symbol) const {
        return reinterpret_cast<Fn>(ResolveAddress(symbol));
    }
    template <class Fn>
    bool Resolve(const char* symbol, Fn& out) const {
        out = Resolve<Fn>(symbol);
        return out != nullptr;
    }

private:
    void* m_module = nullptr;  // HMODULE on Windows, dlopen handle elsewhere
    std::wstring m_name;
    std::wstring m_error;
};

}  // namespace uc
