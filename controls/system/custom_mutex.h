// Named mutexes shared by threads and processes, and the scope guards that take them: ordinary, priority, several at once.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/clock.h"
#include "platform/export.h"

struct _SECURITY_ATTRIBUTES;

// One mutex handle and the number of priority lockers waiting for it in this process. A named mutex is
// the same mutex for every process that creates or opens the name.
class UC_API CCustomMutex {
public:
    CCustomMutex();
    // Copies take the handle and a snapshot of the waiter count as they stand: the handle is shared, not
    // duplicated, and whichever copy is destroyed first closes it; the counts go separate ways.
    CCustomMutex(const CCustomMutex& other);
    CCustomMutex& operator=(const CCustomMutex& other);
    virtual ~CCustomMutex();

    // Creates the mutex, or opens it when it exists already (that counts as success). 0 when a handle is held
    // already (nothing changes), when the name is longer than 260 characters or the system refuses it; else 1.
    int Create(_SECURITY_ATTRIBUTES* attributes, int initialOwner, const wchar_t* name);

    void* GetHandle() const { return m_handle; }
    // Priority lockers of this object now waiting.
    std::int32_t PriorityWaiters() const { return m_priorityWaiters.load(); }

private:
    friend class CMutexLock;
    friend class CPriorityLock;
    friend class CMutexLockMultiple;

    void* m_handle;
    std::atomic<std::int32_t> m_priorityWaiters;
};

// Takes the mutex for its scope, after any priority lockers of the same object: while one waits, it looks
// again every 10 ms before it starts to wait itself. No time limit. Released at the end of the scope, whether
// or not the acquisition succeeded.
class UC_API CMutexLock {
public:
    explicit CMutexLock(CCustomMutex& mutex);
    // The 10 ms polling step measured on `clock` (tests drive it by hand).
    CMutexLock(CCustomMutex& mutex, uc::Clock& clock);
    CMutexLock(const CMutexLock&) = delete;
    CMutexLock& operator=(const CMutexLock&) = delete;
    virtual ~CMutexLock();
    // True when the mutex was acquired normally; false when the wait failed or the mutex was abandoned by a
    // holder that ended without releasing it (it is held all the same, and released by this guard).
    bool IsValid() const { return m_valid; }

private:
    bool m_valid;
    CCustomMutex& m_mutex;
};

// Takes the mutex ahead of ordinary lockers that have not started waiting yet.
class UC_API CPriorityLock {
public:
    explicit CPriorityLock(CCustomMutex& mutex);
    CPriorityLock(const CPriorityLock&) = delete;
    CPriorityLock& operator=(const CPriorityLock&) = delete;
    virtual ~CPriorityLock();
    bool IsValid() const { return m_valid; }

private:
    bool m_valid;
    CCustomMutex& m_mutex;
};

// Takes several mutexes at once, as a priority locker of each, holding none of them while any is busy, so no
// lock order has to be kept among them. With no mutexes it is valid and releases nothing.
class UC_API CMutexLockMultiple {
public:
    CMutexLockMultiple(unsigned long count, CCustomMutex* const* mutexes);
    CMutexLockMultiple(const CMutexLockMultiple&) = delete;
    CMutexLockMultiple& operator=(const CMutexLockMultiple&) = delete;
    virtual ~CMutexLockMultiple();
    bool IsValid() const { return m_valid; }

private:
    bool m_valid;
    std::uint32_t m_count;
    void** m_handles;  // copied at construction; null when the count is 0
};
