// The lock classes: the priority scheme over the waiter counter, and acquisition and release through the mutex back-end.
#include "system/custom_mutex.h"

#include <cwchar>

#include "system/mutex_backend.h"

using uc::sync::WaitResult;

namespace {
constexpr uc::Millis kPriorityPoll{10};
}

CCustomMutex::CCustomMutex() : m_handle(nullptr), m_priorityWaiters(0) {}

CCustomMutex::CCustomMutex(const CCustomMutex& other) : m_handle(other.m_handle), m_priorityWaiters(other.m_priorityWaiters.load()) {}

CCustomMutex& CCustomMutex::operator=(const CCustomMutex& other) {
    m_handle = other.m_handle;
    m_priorityWaiters.store(other.m_priorityWaiters.load());
    return *this;
}

CCustomMutex::~CCustomMutex() {
    if (m_handle) {
        uc::sync::CloseMutexObject(m_handle);
        m_handle = nullptr;
    }
}

int CCustomMutex::Create(_SECURITY_ATTRIBUTES* attributes, int initialOwner, const wchar_t* name) {
    if (m_handle) return 0;
    // Windows documents MAX_PATH for mutex names; refused the same way on every platform.
    if (name && std::wcslen(name) > uc::sync::kMaxNameLength) return 0;
    m_handle = uc::sync::CreateMutexObject(attributes, initialOwner != 0, name);
    return m_handle ? 1 : 0;
}

CMutexLock::CMutexLock(CCustomMutex& mutex) : CMutexLock(mutex, uc::Clock::System()) {}

CMutexLock::CMutexLock(CCustomMutex& mutex, uc::Clock& clock) : m_valid(false), m_mutex(mutex) {
    while (m_mutex.m_priorityWaiters.load() > 0) clock.SleepFor(kPriorityPoll);
    m_valid = uc::sync::WaitMutex(m_mutex.m_handle) == WaitResult::Acquired;
}

CMutexLock::~CMutexLock() { uc::sync::ReleaseMutexObject(m_mutex.m_handle); }

CPriorityLock::CPriorityLock(CCustomMutex& mutex) : m_valid(false), m_mutex(mutex) {
    ++m_mutex.m_priorityWaiters;
    m_valid = uc::sync::WaitMutex(m_mutex.m_handle) == WaitResult::Acquired;
    --m_mutex.m_priorityWaiters;
}

CPriorityLock::~CPriorityLock() { uc::sync::ReleaseMutexObject(m_mutex.m_handle); }

CMutexLockMultiple::CMutexLockMultiple(unsigned long count, CCustomMutex* const* mutexes)
    : m_valid(false), m_count(0), m_handles(nullptr) {
    if (count == 0) {
        m_valid = true;
        return;
    }
    if (!mutexes) return;
    m_count = static_cast<std::uint32_t>(count);
    m_handles = new void*[count];
    for (unsigned long i = 0; i < count; ++i) {
        if (mutexes[i]) ++mutexes[i]->m_priorityWaiters;
        m_handles[i] = mutexes[i] ? mutexes[i]->m_handle : nullptr;
    }
    m_valid = uc::sync::WaitAllMutexes(m_handles, count) == WaitResult::Acquired;
    for (unsigned long i = 0; i < count; ++i)
        if (mutexes[i]) --mutexes[i]->m_priorityWaiters;
}

CMutexLockMultiple::~CMutexLockMultiple() {
    for (std::uint32_t i = 0; i < m_count; ++i) uc::sync::ReleaseMutexObject(m_handles[i]);
    delete[] m_handles;
}
