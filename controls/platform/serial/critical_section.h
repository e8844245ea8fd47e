// CriticalSection and its scope lock CriticalSectionLock: a recursive in-process lock, as Win32 critical sections are.
#pragma once

#include <mutex>

#include "platform/export.h"

class UC_API CriticalSection {
public:
    CriticalSection() = default;
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;
    void Enter() { m_mutex.lock(); }
    void Leave() { m_mutex.unlock(); }
    bool TryEnter() { return m_mutex.try_lock(); }

private:
    std::recursive_mutex m_mutex;
};

// Holds the section from construction to destruction; Unlock/Lock let a loop release it around a wait.
class CriticalSectionLock {
public:
    explicit CriticalSectionLock(CriticalSection& section) : m_section(section) { m_section.Enter(); }
    ~CriticalSectionLock() {
        if (m_held) m_section.Leave();
    }
    CriticalSectionLock(const CriticalSectionLock&) = delete;
    CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;
    void Unlock() {
        if (m_held) {
            m_held = false;
            m_section.Leave();
        }
    }
    void Lock() {
        if (!m_held) {
            m_section.Enter();
            m_held = true;
        }
    }

private:
    CriticalSection& m_section;
    bool m_held = true;
};
