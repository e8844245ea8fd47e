// Window timers behind a replaceable service: USER32's timers in the product, hand-driven ones in tests.
#pragma once

#include <windows.h>

#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/export.h"

namespace uc::ui {

class UC_API TimerService {
public:
    virtual ~TimerService() = default;
    // As SetTimer/KillTimer on a window: returns the id (0 on failure); setting an existing id restarts it.
    virtual UINT_PTR Set(HWND hwnd, UINT_PTR id, UINT periodMs) = 0;
    virtual bool Kill(HWND hwnd, UINT_PTR id) = 0;
};

// The service windows use now (USER32's unless replaced).
UC_API TimerService& Timers();
// Replaces the service for the whole process; null restores USER32's. Returns the previous one (null for USER32).
UC_API TimerService* SetTimerService(TimerService* service);

// Timers that fire only when a test advances them. Advance delivers every tick that falls due, in time order, by
// sending WM_TIMER (wParam id, lParam 0) to the window, so the handlers have run when it returns; a window on
// another thread is reached through that thread's message loop. Periods below 10 ms count as 10 ms, as USER32's.
class UC_API ManualTimers final : public TimerService {
public:
    UINT_PTR Set(HWND hwnd, UINT_PTR id, UINT periodMs) override;
    bool Kill(HWND hwnd, UINT_PTR id) override;

    // Moves time on by `ms`; returns the number of ticks delivered.
    int Advance(std::uint64_t ms);
    // Period of a running timer, 0 when none runs.
    UINT Period(HWND hwnd, UINT_PTR id) const;
    bool Running(HWND hwnd, UINT_PTR id) const { return Period(hwnd, id) != 0; }
    std::uint64_t Now() const;

private:
    struct Entry {
        HWND hwnd;
        UINT_PTR id;
        UINT period;
        std::uint64_t due;
    };
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
    std::uint64_t m_now = 0;
};

// Installs a service for a scope (a test) and puts the previous one back.
class ScopedTimerService {
public:
    explicit ScopedTimerService(TimerService& service) : m_previous(SetTimerService(&service)) {}
    ~ScopedTimerService() { SetTimerService(m_previous); }
    ScopedTimerService(const ScopedTimerService&) = delete;
    ScopedTimerService& operator=(const ScopedTimerService&) = delete;

private:
    TimerService* m_previous;
};

}  // namespace uc::ui
