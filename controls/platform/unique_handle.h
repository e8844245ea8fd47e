// One RAII owner for every OS handle: a traits class names the invalid value and how to close it.
#pragma once

#include <utility>

namespace uc {

// Traits: `using Type = ...; static Type Invalid(); static void Close(Type);`
template <class Traits>
class UniqueHandle {
public:
    using Type = typename Traits::Type;

    UniqueHandle() noexcept : m_value(Traits::Invalid()) {}
    explicit UniqueHandle(Type value) noexcept : m_value(value) {}
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    UniqueHandle(UniqueHandle&& other) noexcept : m_value(other.release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    ~UniqueHandle() { reset(); }

    Type get() const noexcept { return m_value; }
    bool valid() const noexcept { return !(m_value == Traits::Invalid()); }
    explicit operator bool() const noexcept { return valid(); }

    Type release() noexcept { return std::exchange(m_value, Traits::Invalid()); }
    void reset(Type value = Traits::Invalid()) noexcept {
        Type old = std::exchange(m_value, value);
        if (!(old == Traits::Invalid())) Traits::Close(old);
    }
    // For APIs that fill a handle through an out pointer; closes what was held before.
    Type* put() noexcept {
        reset();
        return &m_value;
    }

private:
    Type m_value;
};

// Guard that runs a callable on scope exit unless dismissed (lock release, cursor restore, ...).
template <class F>
class ScopeExit {
public:
    explicit ScopeExit(F f) : m_f(std::move(f)) {}
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;
    ~ScopeExit() {
        if (m_active) m_f();
    }
    void dismiss() noexcept { m_active = false; }

private:
    F m_f;
    bool m_active = true;
};

}  // namespace uc
