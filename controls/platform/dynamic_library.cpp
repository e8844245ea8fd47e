// The platform-independent half of DynamicLibrary: construction and moves.
#include "platform/dynamic_library.h"

#include <utility>

namespace uc {

DynamicLibrary::DynamicLibrary(const std::wstring& name) { Load(name); }

DynamicLibrary::DynamicLibrary(DynamicLibrary&& other) noexcept
    : m_module(std::exchange(other.m_module, nullptr)), m_name(std::move(other.m_name)), m_error(std::move(other.m_error)) {}

DynamicLibrary& DynamicLibrary::operator=(DynamicLibrary&& other) noexcept {
    if (this != &other) {
        Unload();
        m_module = std::exchange(other.m_module, nullptr);
        m_name = std::move(other.m_name);
        m_error = std::move(other.m_error);
    }
    return *this;
}

DynamicLibrary::~DynamicLibrary() { Unload(); }

}  // namespace uc
